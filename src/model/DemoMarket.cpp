#include "model/DemoMarket.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "core/Market.h"
#include "core/Text.h"
#include "model/Watchlist.h"

namespace tidemark {
namespace {

double seedOf(const std::string& id) {
  double seed = 0;
  for (unsigned char c : id) seed += c;
  return seed;
}

// Prices below 10 (funds, penny shares) keep three decimals, like the feeds.
double roundPrice(double value) {
  const double scale = std::abs(value) < 10 ? 1000 : 100;
  return std::round(value * scale) / scale;
}

// The opening values of a symbol outside the demonstration set; an index is in points, in the
// thousands.
DemoSecurity generated(const std::string& id, std::string& name) {
  const uint64_t hash = stableHash(id);
  const Market market = watchlistMarket(id);
  const bool index = isIndex(market);
  const double prevClose = index ? roundPrice(1000 + static_cast<double>(hash % 900000) / 100)
                                 : roundPrice(5 + static_cast<double>(hash % 29500) / 100);
  const double price =
      roundPrice(prevClose * (1 + (static_cast<double>(hash / 29500 % 61) - 30) / 1000));
  name = (index ? "演示指数 " : "演示标的 ") + id;
  return DemoSecurity{nullptr,
                      market,
                      nullptr,
                      price,
                      prevClose,
                      roundPrice(std::max(price, prevClose) * 1.008),
                      roundPrice(std::min(price, prevClose) * 0.992),
                      static_cast<int64_t>(20000 + hash % 4000000)};
}

QuoteSnapshot moved(const std::string& id, Market market, const std::string& name,
                    const DemoSecurity& base, int tick, Date at) {
  double price = base.price;
  if (tick > 0) {
    // Two slow waves around the opening price, at most about ±0.5%.
    const double s = seedOf(id);
    const auto wave = [s](double t) {
      return 0.0035 * std::sin(0.83 * t + s) + 0.0015 * std::sin(2.11 * t + 0.7 * s);
    };
    price = roundPrice(base.price * (1 + wave(tick) - wave(0)));
  }
  return QuoteSnapshot{id,
                       std::string(marketLabel(market)),
                       name,
                       price,
                       base.prevClose,
                       std::max(base.high, price),
                       std::min(base.low, price),
                       base.volume + static_cast<int64_t>(tick) * (base.volume / 400 + 1),
                       at,
                       "mock"};
}

}  // namespace

const std::vector<DemoSecurity>& demoSecurities() {
  static const std::vector<DemoSecurity> securities{
      {"600519", Market::aShare, "贵州茅台", 1468.80, 1452.00, 1475.00, 1448.10, 32165},
      {"00700", Market::hkShare, "腾讯控股", 485.20, 478.60, 487.40, 476.80, 18273455},
      {"NVDA", Market::usShare, "英伟达", 186.25, 182.40, 187.90, 181.75, 168420310},
      {"03033", Market::hkFund, "南方恒生科技", 5.340, 5.285, 5.365, 5.270, 392810400},
      {"000858", Market::aShare, "五粮液", 127.05, 128.40, 129.12, 126.55, 184332},
      {"601318", Market::aShare, "中国平安", 57.42, 56.80, 57.66, 56.71, 612908},
      {"600036", Market::aShare, "招商银行", 42.88, 43.10, 43.25, 42.70, 455871},
      {"300750", Market::aShare, "宁德时代", 272.30, 268.50, 274.10, 267.20, 226514},
      {"000001", Market::aShare, "平安银行", 11.61, 11.52, 11.66, 11.49, 1038277},
      {"510300", Market::aFund, "沪深300ETF", 4.035, 4.012, 4.041, 4.006, 7415286},
      {"159915", Market::aFund, "创业板ETF", 2.342, 2.318, 2.350, 2.311, 9932104},
      {"09988", Market::hkShare, "阿里巴巴-W", 126.90, 128.30, 129.00, 126.10, 40218833},
      {"03690", Market::hkShare, "美团-W", 99.80, 98.45, 100.60, 97.90, 25511902},
      {"02800", Market::hkFund, "盈富基金", 26.02, 25.86, 26.08, 25.80, 61240571},
      {"AAPL", Market::usShare, "苹果", 229.95, 231.60, 232.48, 228.71, 51377620},
      {"MSFT", Market::usShare, "微软", 515.10, 512.30, 517.25, 510.64, 18734209},
      {"TSLA", Market::usShare, "特斯拉", 405.36, 412.70, 415.80, 401.22, 97163518},
      {"QQQ", Market::usFund, "纳指100ETF", 601.45, 598.20, 602.87, 597.31, 38510244},
      {"SPY", Market::usFund, "标普500ETF", 670.12, 668.90, 671.40, 667.35, 62977105},
  };
  return securities;
}

const std::vector<DemoSecurity>& demoIndices() {
  static const std::vector<DemoSecurity> indices{
      {"sh000001", Market::aIndex, "上证指数", 3882.78, 3870.60, 3890.12, 3862.45, 485327116},
      {"sh000300", Market::aIndex, "沪深300", 4598.12, 4581.33, 4605.90, 4570.26, 201846530},
      {"sh000688", Market::aIndex, "科创50", 1362.45, 1375.80, 1381.02, 1355.17, 18420733},
      {"sz399001", Market::aIndex, "深证成指", 12920.36, 12874.10, 12966.80, 12840.22, 612450981},
      {"sz399006", Market::aIndex, "创业板指", 3046.71, 3021.95, 3058.33, 3015.40, 198337412},
      {"bj899050", Market::aIndex, "北证50", 1498.62, 1510.37, 1516.80, 1490.05, 5120448},
      {"hkHSI", Market::hkIndex, "恒生指数", 25930.03, 25828.95, 26012.47, 25790.12, 0},
      {"hkHSCEI", Market::hkIndex, "国企指数", 9186.40, 9150.62, 9215.33, 9131.08, 0},
      {"hkHSTECH", Market::hkIndex, "恒生科技指数", 5812.77, 5846.19, 5870.45, 5790.36, 0},
      {"usDJI", Market::usIndex, "道琼斯", 46512.80, 46390.25, 46601.33, 46288.70, 0},
      {"usIXIC", Market::usIndex, "纳斯达克", 22870.35, 22941.67, 23010.50, 22812.40, 0},
      {"usINX", Market::usIndex, "标普500", 6688.46, 6672.10, 6701.94, 6660.38, 0},
  };
  return indices;
}

Date embeddedSnapshotDate() {
  static const Date date = *parseISO8601("2026-10-16T09:30:00+08:00");
  return date;
}

std::vector<QuoteSnapshot> embeddedQuotes(Date at, const std::string& source) {
  std::vector<QuoteSnapshot> quotes;
  for (const DemoSecurity& s : demoSecurities())
    quotes.push_back(QuoteSnapshot{s.id, std::string(marketLabel(s.market)), s.name, s.price,
                                   s.prevClose, s.high, s.low, s.volume, at, source});
  return quotes;
}

std::vector<QuoteSnapshot> MockMarket::quotes(const std::vector<std::string>& watchlist,
                                              Date at) const {
  const auto& set = demoSecurities();
  std::vector<QuoteSnapshot> quotes;
  quotes.reserve(set.size() + watchlist.size());
  std::unordered_set<std::string> served;
  served.reserve(set.size() + watchlist.size());
  for (const DemoSecurity& s : set) {
    quotes.push_back(moved(s.id, s.market, s.name, s, tick_, at));
    served.insert(s.id);
  }
  for (const std::string& id : watchlist) {
    if (!isRecognizedSymbol(id) || !served.insert(id).second) continue;
    const auto& indices = demoIndices();
    const auto known = std::find_if(indices.begin(), indices.end(),
                                    [&](const DemoSecurity& s) { return id == s.id; });
    if (known != indices.end()) {
      quotes.push_back(moved(id, known->market, known->name, *known, tick_, at));
      continue;
    }
    std::string name;
    DemoSecurity base = generated(id, name);
    quotes.push_back(moved(id, base.market, name, base, tick_, at));
  }
  return quotes;
}

}  // namespace tidemark

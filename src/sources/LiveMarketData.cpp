#include "sources/LiveMarketData.h"

#include <memory>

#include "core/Market.h"
#include "core/Text.h"
#include "core/Url.h"
#include "sources/ExtraFeeds.h"
#include "sources/KlineFeed.h"
#include "sources/QuoteFeeds.h"
#include "sources/TextDecoding.h"

namespace tidemark {
namespace {

bool isSuccess(const HttpResponse& response) {
  return !response.error && response.body && response.status && *response.status >= 200 &&
         *response.status <= 299;
}

std::vector<QuoteSnapshot> parse(SourceMode source, std::string_view body,
                                 const std::vector<std::string>& symbols, Date at) {
  const std::string text = decodeLiveText(body);
  return source == SourceMode::sina ? parseSina(text, symbols, at)
                                    : parseTencent(text, symbols, at);
}

}  // namespace

std::vector<std::pair<std::string, std::string>> feedHeaders(SourceMode source) {
  return {{"Referer",
           source == SourceMode::sina ? "https://finance.sina.com.cn/" : "https://finance.qq.com/"},
          {"User-Agent", "Mozilla/5.0"}};
}

void LiveMarketData::fetchQuotes(SourceMode source, const DataSourceEndpoints& endpoints,
                                 const std::vector<std::string>& symbols, const QuoteMap&,
                                 QuotesCompletion completion) {
  if (source == SourceMode::stockSDK) return bridge_.fetchQuotes(endpoints, symbols, completion);

  std::vector<std::string> kept;
  std::string codes;
  for (const std::string& symbol : symbols) {
    if (isFundStyleSymbol(symbol)) continue;
    kept.push_back(symbol);
    if (auto code = marketCode(symbol, source)) codes += (codes.empty() ? "" : ",") + *code;
  }
  if (codes.empty()) return completion({}, std::nullopt);
  HttpRequest request;
  request.url = (source == SourceMode::sina ? endpoints.sinaQuote : endpoints.tencentQuote) + codes;
  if (!parseUrl(request.url)) return completion({}, "行情源地址无效");
  request.headers = feedHeaders(source);
  request.timeout = 8;
  http_.get(request, [this, source, kept = std::move(kept),
                      completion = std::move(completion)](HttpResponse response) {
    if (isSuccess(response)) {
      auto quotes = parse(source, *response.body, kept, clock_.now());
      if (quotes.empty()) return completion({}, "行情源未返回有效报价");
      return completion(std::move(quotes), std::nullopt);
    }
    if (response.error) return completion({}, *response.error);
    completion({}, "行情源请求失败");
  });
}

void LiveMarketData::probeQuoteEndpoint(SourceMode source, const DataSourceEndpoints& endpoints,
                                        std::function<void(bool)> completion) {
  HttpRequest request;
  request.url =
      (source == SourceMode::sina ? endpoints.sinaQuote : endpoints.tencentQuote) + "sh600519";
  request.headers = feedHeaders(source);
  request.timeout = 3;
  request.maxBytes = 64 << 10;  // one symbol's line is a few hundred bytes
  http_.get(request, [this, source, completion = std::move(completion)](HttpResponse response) {
    completion(isSuccess(response) &&
               !parse(source, *response.body, {"600519"}, clock_.now()).empty());
  });
}

void LiveMarketData::probeQuoteEndpoints(const DataSourceEndpoints& endpoints,
                                         std::function<void(bool)> completion) {
  // Every completion arrives on the main thread, so the slots need no lock: the last probe to
  // answer reads them.
  struct Join {
    std::optional<bool> tencent, sina, bridge;
    int pending = 3;
    std::function<void(bool)> completion;
    void done() {
      if (--pending > 0) return;
      completion(tencent == true && sina == true && bridge != false);
    }
  };
  auto join = std::make_shared<Join>();
  join->completion = std::move(completion);
  probeQuoteEndpoint(SourceMode::tencent, endpoints, [join](bool ok) {
    join->tencent = ok;
    join->done();
  });
  probeQuoteEndpoint(SourceMode::sina, endpoints, [join](bool ok) {
    join->sina = ok;
    join->done();
  });
  bridge_.probeHealth(endpoints, [join](std::optional<bool> verdict) {
    join->bridge = verdict;
    join->done();
  });
}

void LiveMarketData::fetchManifest(const std::string& url,
                                   std::function<void(std::optional<std::string>)> completion) {
  HttpRequest request{url, {{"Accept", "application/json"}}, 5, manifestMaxBytes};
  http_.get(request, [completion = std::move(completion)](const HttpResponse& response) {
    completion(isSuccess(response) ? response.body : std::nullopt);
  });
}

void LiveMarketData::fetchIntraday(const DataSourceEndpoints& endpoints, const std::string& id,
                                   const std::string& market,
                                   std::function<void(Intraday)> completion) {
  bridge_.fetchTimeline(endpoints, id, market, std::move(completion));
}

void LiveMarketData::fetchKline(SourceMode source, const DataSourceEndpoints& endpoints,
                                const std::string& symbol, KlinePeriod period,
                                KlineCompletion completion) {
  if (isOffExchangeFundSymbol(symbol)) return completion({{}, "场外基金没有K线"});
  if (source == SourceMode::stockSDK)
    return bridge_.fetchKline(endpoints, symbol, period, std::move(completion));
  // Tencent's answer first; the bridge, when it is installed, if that fails. Both failing, the
  // first reason is told.
  auto done = std::make_shared<KlineCompletion>(std::move(completion));
  auto fallback = [this, endpoints, symbol, period, done](std::string error) {
    if (!bridge_.isAvailable()) return (*done)({{}, std::move(error)});
    bridge_.fetchKline(endpoints, symbol, period,
                       [error = std::move(error), done](KlineAnswer answer) {
                         if (answer.bars.empty()) answer.error = error;
                         (*done)(std::move(answer));
                       });
  };
  const auto url = tencentKlineURL(endpoints, symbol, period);
  const auto code = marketCode(symbol, SourceMode::tencent);
  if (!url || !code || !parseUrl(*url)) return fallback("K线地址无效");
  HttpRequest request{*url, feedHeaders(SourceMode::tencent), 8, klineMaxBytes};
  http_.get(request, [code = *code, period, fallback, done](const HttpResponse& response) {
    if (!isSuccess(response)) return fallback(response.error ? *response.error : "K线请求失败");
    auto bars = parseTencentKline(*response.body, code, period);
    if (!bars || bars->empty()) return fallback("K线数据无法读取");
    (*done)({std::move(*bars), std::nullopt});
  });
}

void LiveMarketData::searchSecurities(const DataSourceEndpoints& endpoints, const std::string& text,
                                      QuotesCompletion completion) {
  bridge_.search(endpoints, text, std::move(completion));
}

void LiveMarketData::fetchRates(const DataSourceEndpoints& endpoints, RatesCompletion completion) {
  HttpRequest request{endpoints.tencentQuote + "whUSDCNY,whHKDCNY",
                      feedHeaders(SourceMode::tencent), 8, 64 << 10};
  if (!parseUrl(request.url)) return completion({}, "汇率地址无效");
  http_.get(request, [completion = std::move(completion)](const HttpResponse& response) {
    if (!isSuccess(response)) return completion({}, response.error.value_or("汇率请求失败"));
    RateMap rates = parseTencentRates(decodeLiveText(*response.body));
    if (rates.empty()) return completion({}, "汇率数据无法读取");
    completion(std::move(rates), std::nullopt);
  });
}

void LiveMarketData::fetchExtendedHours(const DataSourceEndpoints& endpoints,
                                        const std::vector<std::string>& symbols,
                                        ExtendedCompletion completion) {
  std::string codes;
  for (const std::string& symbol : symbols)
    codes += (codes.empty() ? "gb_" : ",gb_") + toLowerAscii(symbol);
  if (codes.empty()) return completion({}, std::nullopt);
  HttpRequest request{endpoints.sinaQuote + codes, feedHeaders(SourceMode::sina), 8, 1 << 20};
  if (!parseUrl(request.url)) return completion({}, "行情源地址无效");
  http_.get(request,
            [this, symbols, completion = std::move(completion)](const HttpResponse& response) {
              if (!isSuccess(response))
                return completion({}, response.error.value_or("盘前盘后请求失败"));
              completion(parseSinaExtended(decodeLiveText(*response.body), symbols, clock_.now()),
                         std::nullopt);
            });
}

}  // namespace tidemark

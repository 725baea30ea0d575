// Costs of decoding and parsing feed bodies against the number of symbols in one batch.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <regex>

#include "core/FileIO.h"
#include "core/Market.h"
#include "sources/KlineFeed.h"
#include "sources/QuoteFeeds.h"
#include "sources/TextDecoding.h"
#include "views/KlineGeometry.h"

namespace tidemark {
namespace {

// GBK names, as the feeds send them.
const char* const names[] = {"\xb9\xf3\xd6\xdd\xc3\xa9\xcc\xa8", "\xce\xe5\xc1\xb8\xd2\xba",
                             "\xd6\xd0\xb9\xfa\xc6\xbd\xb0\xb2",
                             "\xd5\xd0\xc9\xcc\xd2\xf8\xd0\xd0"};

std::string symbolAt(size_t i) {
  char symbol[24];
  std::snprintf(symbol, sizeof symbol, "%c%05zu", i % 2 ? '0' : '6', i);
  return symbol;
}

// A Tencent answer for `count` A-shares: full 88-field rows, about 460 bytes each.
std::pair<std::string, std::vector<std::string>> tencentBody(size_t count) {
  std::string body;
  std::vector<std::string> symbols;
  for (size_t i = 0; i < count; ++i) {
    const std::string symbol = symbolAt(i);
    symbols.push_back(symbol);
    body += "v_" + *marketCode(symbol, SourceMode::tencent) + "=\"1~" + names[i % 4] + "~" +
            symbol + "~1468.80~1452.00~1455.00~32165~16082~16083";
    for (int f = 9; f < 29; ++f) body += f % 2 ? "~1468.71" : "~166";
    body +=
        "~~20261016150003~16.80~1.16~1475.00~1448.10~1468.80/32165/4724395200~32165~472439"
        "~0.26~21.42~~1475.00~1448.10~1.85~18452.06~18452.06~7.93~1597.20~1306.80~1.02";
    for (int f = 50; f < 88; ++f) body += "~" + std::to_string(f * 13 % 97) + ".5";
    body += "\";\n";
  }
  return {body, symbols};
}

std::pair<std::string, std::vector<std::string>> sinaBody(size_t count) {
  std::string body;
  std::vector<std::string> symbols;
  for (size_t i = 0; i < count; ++i) {
    const std::string symbol = symbolAt(i);
    symbols.push_back(symbol);
    body += "var hq_str_" + *marketCode(symbol, SourceMode::sina) + "=\"" + names[i % 4] +
            ",1455.000,1452.000,1468.800,1475.000,1448.100,1468.790,1468.800,3216500,"
            "4720000000.000";
    for (int f = 0; f < 10; ++f) body += ",100,1468.79";
    body += ",2026-10-16,15:00:03,00,\";\n";
  }
  return {body, symbols};
}

void DecodeLiveText(benchmark::State& state) {
  const auto [body, symbols] = tencentBody(static_cast<size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(decodeLiveText(body));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * body.size()));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(DecodeLiveText)->Arg(5)->Arg(50)->Arg(500)->Arg(5000)->Complexity();

void ParseTencent(benchmark::State& state) {
  const auto [body, symbols] = tencentBody(static_cast<size_t>(state.range(0)));
  const std::string text = decodeLiveText(body);
  for (auto _ : state) benchmark::DoNotOptimize(parseTencent(text, symbols, {}));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(ParseTencent)->Arg(5)->Arg(50)->Arg(500)->Arg(5000)->Complexity();

void ParseSina(benchmark::State& state) {
  const auto [body, symbols] = sinaBody(static_cast<size_t>(state.range(0)));
  const std::string text = decodeLiveText(body);
  for (auto _ : state) benchmark::DoNotOptimize(parseSina(text, symbols, {}));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(ParseSina)->Arg(5)->Arg(50)->Arg(500)->Arg(5000)->Complexity();

// The recorded 500-symbol answer (about 240 KB of GB 18030), decoded and parsed: the figure the
// comparison with stock-sdk uses.
void Recorded500(benchmark::State& state) {
  std::error_code error;
  const std::string body =
      readFile(std::filesystem::path(TIDEMARK_DATA_DIR) / "tencent-500.gbk", error).value_or("");
  std::vector<std::string> symbols;
  const std::regex key("v_(?:sh|sz)([0-9]{6})=");
  for (auto it = std::sregex_iterator(body.begin(), body.end(), key); it != std::sregex_iterator();
       ++it)
    symbols.push_back((*it)[1]);
  if (symbols.size() != 500) state.SkipWithError("tests/data/tencent-500.gbk is not as recorded");
  for (auto _ : state) {
    auto quotes = parseTencent(decodeLiveText(body), symbols, {});
    if (quotes.size() != 500) state.SkipWithError("not every symbol parsed");
    benchmark::DoNotOptimize(quotes);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * body.size()));
}
BENCHMARK(Recorded500);

// A Tencent K-line answer of 640 day periods, parsed; and the layout of the 120 the chart shows
// with their three averages.
std::string klineBody(size_t periods) {
  std::string rows;
  for (size_t i = 0; i < periods; ++i) {
    const double close = 1400 + double(i % 97);
    char row[160];
    std::snprintf(row, sizeof row,
                  R"(%s["20%02zu-%02zu-%02zu","%.2f","%.2f","%.2f","%.2f","%zu.000"])",
                  i ? "," : "", 20 + i / 240, 1 + i / 20 % 12, 1 + i % 20, close - 3, close,
                  close + 5, close - 6, 30000 + i);
    rows += row;
  }
  return R"({"code":0,"msg":"","data":{"sh600519":{"qfqday":[)" + rows + "]}}}";
}

void ParseKline640(benchmark::State& state) {
  const std::string body = klineBody(640);
  for (auto _ : state) {
    auto bars = parseTencentKline(body, "sh600519", KlinePeriod::day);
    if (!bars || bars->size() != 640) state.SkipWithError("not every period parsed");
    benchmark::DoNotOptimize(bars);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * body.size()));
}
BENCHMARK(ParseKline640);

void LayOutKline120(benchmark::State& state) {
  const auto bars = *parseTencentKline(klineBody(140), "sh600519", KlinePeriod::day);
  const std::vector<KlineBar> shown(bars.end() - 120, bars.end());
  for (auto _ : state) {
    std::array<std::vector<std::optional<double>>, 3> averages;
    for (size_t k = 0; k < 3; ++k) averages[k] = movingAverage(bars, movingAverageSpans[k]);
    const KlineFrame frame = klineFrame(shown, {0, 22, 214, 130}, 1500.5);
    double sum = 0;
    for (size_t i = 0; i < shown.size(); ++i)
      sum += candleX(frame, i) + priceY(frame, shown[i].high) + priceY(frame, shown[i].low) +
             volumeBar(frame, i, shown[i].volume).height;
    benchmark::DoNotOptimize(sum);
    benchmark::DoNotOptimize(averages);
  }
}
BENCHMARK(LayOutKline120);

}  // namespace
}  // namespace tidemark

BENCHMARK_MAIN();

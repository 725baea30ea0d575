// The endpoint set at start-up, the remote manifest, and intraday series.

#include "core/Market.h"
#include "model/AppModel.h"
#include "model/StoreKeys.h"

namespace tidemark {
void AppModel::startFirstLoad() {
  if (!canRequestNotifications_ || !isLive(prefs_.sourceMode)) {
    loadSource(true);
    return;
  }
  if (sources_.bootstrapInFlight) return;  // the bootstrap under way loads when it ends
  sources_.bootstrapInFlight = true;
  setPhase(QuotePhase::loading);
  savePreferences();
  bootstrapDataSourcesAndLoad();
}

void AppModel::bootstrapDataSourcesAndLoad() {
  const auto end = [this](std::string status) {
    assign(sources_.status, std::move(status));
    sources_.bootstrapInFlight = false;
    loadSource(true);
  };
  deps_.dataSource.probeQuoteEndpoints(
      sources_.endpoints, lifeline_.guard(std::function<void(bool)>([this, end](bool usable) {
        if (usable) return end("行情地址可用 · r" + std::to_string(sources_.revision));
        assign(sources_.status, std::string("检测到行情地址异常，正在获取更新…"));
        fetchRemoteSourceManifest([this, end](bool adopted) {
          if (!adopted) return end("远程更新不可用 · 使用缓存地址");
          deps_.dataSource.probeQuoteEndpoints(
              sources_.endpoints, lifeline_.guard(std::function<void(bool)>([this, end](bool ok) {
                end(ok ? "远程地址已更新并验证 · r" + std::to_string(sources_.revision)
                       : "已更新地址 · 部分源仍不可用");
              })));
        });
      })));
}

void AppModel::fetchRemoteSourceManifest(const std::function<void(bool)>& completion) {
  const auto url = bundle_.infoValue("StockDataSourceConfigURL");
  if (!url || !isTrustedManifestURL(*url)) {
    deps_.scheduler.post(lifeline_.guard([completion] { completion(false); }));
    return;
  }
  deps_.dataSource.fetchManifest(*url,
                                 lifeline_.guard(std::function<void(std::optional<std::string>)>(
                                     [this, completion](const std::optional<std::string>& body) {
                                       completion(sources_.adopt(body, deps_.defaults));
                                     })));
}

void AppModel::fetchIntraday(const QuoteSnapshot& quote) {
  if (!isLive(prefs_.sourceMode) || marketOfLabel(quote.market) == Market::aFund) return;
  const Date now = deps_.clock.now();
  if (!intraday_.mayAsk(quote.id, now) || !deps_.dataSource.canFetchIntraday()) return;
  intraday_.asked(quote.id, now);
  // Copies: an answer given at once may replace the quotes `quote` lives in.
  const std::string id = quote.id, market = quote.market;
  deps_.dataSource.fetchIntraday(
      sources_.endpoints, id, market,
      lifeline_.guard(std::function<void(MarketDataSource::Intraday)>(
          [this, id, now](MarketDataSource::Intraday answer) {
            if (answer.skipped) return intraday_.skipped(id, now);
            if (answer.values && intraday_.keep(id, std::move(*answer.values))) changed_.notify();
          })));
}

}  // namespace tidemark

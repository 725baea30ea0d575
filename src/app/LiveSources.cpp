#include "app/LiveSources.h"

namespace tidemark {

std::optional<std::filesystem::path> bridgeScript(const Bundle& bundle) {
  if (bundle.resourceDirectory.empty()) return std::nullopt;
  const auto script = bundle.resourceDirectory / "bridge" / "stock-sdk-bridge.mjs";
  std::error_code error;
  if (!std::filesystem::is_regular_file(script, error)) return std::nullopt;
  return script;
}

LiveSources::LiveSources(const Bundle& bundle, const Clock& clock)
    : processes(StockSDKBridge::childMemoryLimit),
      bridge(processes, clock,
             [&] {
               BridgeSetup setup;
               setup.script = bridgeScript(bundle);
               setup.environment = currentEnvironment();
               return setup;
             }()),
      data(http, bridge, clock) {}

}  // namespace tidemark

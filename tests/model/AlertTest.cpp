#include <gtest/gtest.h>

#include <limits>

#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;

// A model in tencent mode whose feed serves the given prices for 600519 and 00700.
struct AlertHarness : ModelHarness {
  std::unique_ptr<AppModel> model;
  explicit AlertHarness(bool authorized = true, bool startTimers = true) {
    notifier.authorized = authorized;
    source.probeAnswers = {true};  // the start-up bootstrap loads at once
    reload(1500, 480);
    model = make(startTimers);
    model->setRefreshInterval(0);
    model->setSourceMode(SourceMode::tencent);
  }
  void reload(double moutai, double tencent) {
    source.answers[SourceMode::tencent] = {
        {{"600519", "A股", "贵州茅台", moutai, 1450, moutai, moutai, 1, {}, "tencent"},
         {"00700", "港股", "腾讯控股", tencent, 470, tencent, tencent, 1, {}, "tencent"}},
        std::nullopt};
    if (model) model->loadSource(false);
  }
};

// That an alert follows its own symbol, not the one shown, is checked by the self-test.
TEST(Alert, FiresAndDeliversOnceUntilSetAnewIgnoresInvalidThresholdsAndIsWithdrawnWhenCleared) {
  const double inf = std::numeric_limits<double>::infinity();
  AlertHarness h;
  h.model->setAlert("600519", 1600, true);
  h.reload(1600.5, 480);
  h.reload(1500, 480);
  h.reload(1700, 480);
  ASSERT_EQ(h.notifier.added.size(), 1u);
  EXPECT_EQ(h.notifier.added[0].identifier, "tidemark.price-alert.600519");
  EXPECT_EQ(h.notifier.added[0].title, "贵州茅台 价格提醒");
  EXPECT_EQ(h.notifier.added[0].body, "CNY 1,600.50，目标 CNY 1,600.00 已达到提醒条件。");
  h.model->setAlert("600519", 1700, true);  // re-armed: fires again, at an equal price too
  EXPECT_EQ(h.notifier.added.size(), 2u);
  EXPECT_TRUE(h.make()->alertTriggered());  // remembered across restarts

  h.model->setAlert("00700", 500, true);
  const std::pair<const char*, double> cases[] = {{"600519", 0}, {"600519", inf}, {"601999", 100}};
  for (auto [symbol, price] : cases) {
    h.model->setAlert(symbol, price, false);
    EXPECT_EQ(h.model->alertSymbolID(), "00700") << symbol << " " << price;
  }
  for (double bad : {0.0, inf, std::numeric_limits<double>::quiet_NaN()}) {
    h.model->setAlertPrice(500);  // a threshold set on its own is dropped as well
    h.model->setAlertPrice(bad);
    EXPECT_EQ(h.model->alertPrice(), std::nullopt) << bad;
  }
  h.model->setAlert("00700", 480, false);  // at the threshold
  EXPECT_TRUE(h.model->alertTriggered());
  h.model->clearAlert();
  EXPECT_EQ(h.notifier.removed, std::vector<std::string>{"tidemark.price-alert.00700"});
  EXPECT_EQ(std::tuple(h.model->alertPrice(), h.model->alertSymbolID(), h.model->alertTriggered()),
            std::tuple(std::nullopt, std::nullopt, false));
}

TEST(Alert, DeliveryWaitsForPermissionAndHappensOnce) {
  AlertHarness quiet(true, false);  // without timers nothing is asked, so nothing is posted
  quiet.model->setAlert("00700", 400, true);
  EXPECT_EQ(quiet.notifier.authorizationRequests, 0);
  EXPECT_TRUE(quiet.notifier.added.empty());
  AlertHarness h(false);
  h.model->setAlert("00700", 400, true);
  EXPECT_TRUE(h.notifier.added.empty());
  EXPECT_TRUE(h.model->alertNotificationNeedsDelivery());
  EXPECT_EQ(h.notifier.authorizationRequests, 1);
  // Granted later: the fired alert is delivered then, once, even while the first post is
  // still on its way and permission is confirmed again.
  h.notifier.authorized = true;
  h.notifier.holdCompletions = true;
  h.model->requestPriceAlertNotifications();
  h.model->requestPriceAlertNotifications();
  ASSERT_EQ(h.notifier.added.size(), 1u);
  EXPECT_EQ(h.notifier.added[0].body, "HKD 480.00，目标 HKD 400.00 已达到提醒条件。");
  h.notifier.heldCompletions[0]();
  EXPECT_FALSE(h.model->alertNotificationNeedsDelivery());
  h.model->requestPriceAlertNotifications();
  EXPECT_EQ(h.notifier.added.size(), 1u);
}

}  // namespace
}  // namespace tidemark

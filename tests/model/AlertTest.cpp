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

TEST(Alert, EqualityFiresInBothDirections) {
  for (bool above : {true, false}) {
    AlertHarness h;
    h.model->setAlert("600519", 1500, above);
    EXPECT_TRUE(h.model->alertTriggered()) << above;
  }
}

TEST(Alert, StaysBoundToItsOwnSymbol) {
  AlertHarness h;
  h.model->setAlert("600519", 1000, false);  // 00700 at 480 would be "at or below"
  h.model->select("00700");
  h.reload(1500, 300);
  EXPECT_FALSE(h.model->alertTriggered());
  h.reload(999, 300);
  EXPECT_TRUE(h.model->alertTriggered());
  EXPECT_EQ(h.model->alertQuote()->id, "600519");
}

TEST(Alert, FiresOnceAndDeliversOnceUntilSetAnew) {
  AlertHarness h;
  h.model->setAlert("600519", 1600, true);
  EXPECT_FALSE(h.model->alertTriggered());
  h.reload(1600.5, 480);
  h.reload(1500, 480);
  h.reload(1700, 480);
  EXPECT_TRUE(h.model->alertTriggered());
  ASSERT_EQ(h.notifier.added.size(), 1u);
  EXPECT_EQ(h.notifier.added[0].identifier, "tidemark.price-alert.600519");
  EXPECT_EQ(h.notifier.added[0].title, "贵州茅台 价格提醒");
  EXPECT_EQ(h.notifier.added[0].body, "CNY 1,600.50，目标 CNY 1,600.00 已达到提醒条件。");
  EXPECT_FALSE(h.model->alertNotificationNeedsDelivery());

  h.model->setAlert("600519", 1650, true);  // re-armed: fires again on the next crossing
  EXPECT_EQ(h.notifier.added.size(), 2u);
  EXPECT_TRUE(h.make()->alertTriggered());  // remembered across restarts
}

TEST(Alert, InvalidThresholdsAndUnquotedSymbolsChangeNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const std::pair<const char*, double> cases[] = {
      {"600519", 0}, {"600519", -5}, {"600519", nan}, {"600519", inf}, {"601999", 100},
  };
  for (auto [symbol, price] : cases) {
    AlertHarness h;
    h.model->setAlert("00700", 500, true);
    h.model->setAlert(symbol, price, false);
    EXPECT_EQ(h.model->alertSymbolID(), "00700") << symbol << " " << price;
    EXPECT_EQ(h.model->alertPrice(), 500);
  }
  AlertHarness h;
  h.model->setAlertPrice(-1);  // a stored threshold is never invalid
  EXPECT_EQ(h.model->alertPrice(), std::nullopt);
}

TEST(Alert, DeliveryWaitsForPermissionAndHappensOnce) {
  AlertHarness h(false);
  h.model->setAlert("00700", 400, true);
  EXPECT_TRUE(h.model->alertTriggered());
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

TEST(Alert, WithoutTimersNothingIsRequestedAndClearingWithdraws) {
  AlertHarness quiet(true, false);
  quiet.model->setAlert("00700", 400, true);
  EXPECT_EQ(quiet.notifier.authorizationRequests, 0);
  EXPECT_TRUE(quiet.notifier.added.empty());  // never authorised without the query

  AlertHarness h;
  h.model->setAlert("00700", 400, true);
  h.model->clearAlert();
  EXPECT_EQ(h.notifier.removed, std::vector<std::string>{"tidemark.price-alert.00700"});
  EXPECT_EQ(h.model->alertPrice(), std::nullopt);
  EXPECT_EQ(h.model->alertSymbolID(), std::nullopt);
  EXPECT_FALSE(h.model->alertTriggered());
}

}  // namespace
}  // namespace tidemark

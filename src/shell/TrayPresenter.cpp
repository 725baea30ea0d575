#include "shell/TrayPresenter.h"

#include <QActionGroup>

#include "views/StatusTitle.h"

namespace tidemark {

StatusItem& TrayPresenter::item(const std::function<void()>& made) {
  if (!item_) {
    item_ = std::make_unique<StatusItem>([this](QMenu& menu) { buildMenu(menu); }, host_.toggleOrb,
                                         host_.notifier ? host_.notifier() : nullptr,
                                         [this] { host_.model.cycleActive(); });
    made();
  }
  return *item_;
}

void TrayPresenter::update() {
  if (!item_) return;
  const AppModel& m = host_.model;
  item_->setTitle(trayTitleText(m));
  const qreal ratio = host_.pixelRatio();
  const bool bare = m.masked() || m.menuDensity() == MenuDensity::percent;
  const MiniOrbFace face = miniOrbFace(m.activeQuote(), bare, m.quoteStyle().colors);
  // Drawn again only when what it shows changes, not on every price.
  if (const auto icon = std::tuple(face, m.theme(), ratio, item_->exportsItem()); icon_ != icon) {
    icon_ = icon;
    const OrbPalette palette{m.theme()};
    // The system tray icon's image is wanted only where no host shows our own item.
    auto image = [face, palette, ratio] { return miniOrb(face, palette, ratio); };
    if (item_->exportsItem()) {
      item_->setImage(image, miniOrb(face, palette, 1, 22), miniOrb(face, palette, 1, 44));
    } else {
      item_->setImage(image);
    }
  }
  item_->setToolTip(host_.tooltip());
  if (std::string menu = menuState(); menu != menuState_) {
    menuState_ = std::move(menu);
    item_->menuChanged();
  }
}

std::string TrayPresenter::menuState() const {
  const AppModel& m = host_.model;
  return m.sourceLabel() + "|" + std::to_string(host_.orbShown()) + std::to_string(m.masked()) +
         std::to_string(host_.observing()) + "|" + std::to_string(m.orbSize()) + "|" +
         std::string(rawValue(m.phase()));
}

void TrayPresenter::buildMenu(QMenu& menu) {
  AppModel& m = host_.model;
  // No key hints: the orb's keys (R, M, Q, ",", 1–3) work on the orb, not in this menu.
  const auto add = [&menu](const char* title, std::function<void()> action,
                           std::optional<bool> checked = std::nullopt) {
    QAction* item = menu.addAction(QString::fromUtf8(title));
    if (checked) {
      item->setCheckable(true);
      item->setChecked(*checked);
    }
    QObject::connect(item, &QAction::triggered, &menu, std::move(action));
    return item;
  };

  menu.addAction(QString::fromStdString(m.sourceLabel()))->setEnabled(false);
  menu.addSeparator();
  add(host_.orbShown() ? "隐藏灵球" : "显示灵球", host_.toggleOrb);
  add("设置…", host_.openSettings);
  menu.addSeparator();
  add("立即刷新", host_.refresh);
  add("价格预警…", host_.openAlert);
  add("屏幕共享遮蔽", host_.toggleMask, m.masked());
  add("鼠标穿透（仅托盘菜单可恢复）", host_.toggleObserve, host_.observing());
  add("重新居中 / 解除贴边", host_.centerOrb);
  menu.addSeparator();

  QMenu* sizes = menu.addMenu(QStringLiteral("灵球尺寸"));
  for (const double size : orbSizes) {
    QAction* item = sizes->addAction(QString::number(size) + QStringLiteral(" pt"));
    item->setCheckable(true);
    item->setChecked(m.orbSize() == size);
    QObject::connect(item, &QAction::triggered, sizes,
                     [this, size] { host_.model.setOrbSize(size); });
  }
  QMenu* phases = menu.addMenu(QStringLiteral("演示数据状态"));
  const char* phaseTitles[] = {"加载", "正常", "过期", "降级", "离线"};
  size_t index = 0;
  for (QuotePhase phase : allCases<QuotePhase>()) {
    QAction* item = phases->addAction(QString::fromUtf8(phaseTitles[index++]));
    item->setCheckable(true);
    item->setChecked(m.phase() == phase);
    QObject::connect(item, &QAction::triggered, phases,
                     [this, phase] { host_.model.simulatePhase(phase); });
  }
  add("使用引导", host_.openGuide);
  add("退出潮汐栏", host_.quit);
}

}  // namespace tidemark

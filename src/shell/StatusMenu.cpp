// The tray's menu, built afresh every time it opens so titles and check marks are current.

#include <QActionGroup>
#include <QMenu>

#include "shell/AppDelegate.h"

namespace tidemark {

std::string AppDelegate::menuState() const {
  const AppModel& m = deps_.model;
  return m.sourceLabel() + "|" + std::to_string(shown_) + std::to_string(m.masked()) +
         std::to_string(windowModel_.forcedObserve()) + "|" + std::to_string(m.orbSize()) + "|" +
         std::string(rawValue(m.phase()));
}

void AppDelegate::buildStatusMenu(QMenu& menu) {
  AppModel& m = deps_.model;
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
  add(shown_ ? "隐藏灵球" : "显示灵球", [this] { toggleOrb(); });
  add("设置…", [this] { openSettings(SettingsSection::appearance); });
  menu.addSeparator();
  add("立即刷新", [this] { refresh(); });
  add("价格预警…", [this] { openWindow(AuxWindow::alert); });
  add(
      "屏幕共享遮蔽", [this] { toggleMask(); }, m.masked());
  add(
      "鼠标穿透（仅托盘菜单可恢复）", [this] { toggleObserve(); }, windowModel_.forcedObserve());
  add("重新居中 / 解除贴边", [this] { centerOrb(); });
  menu.addSeparator();

  QMenu* sizes = menu.addMenu(QStringLiteral("灵球尺寸"));
  for (const double size : orbSizes) {
    QAction* item = sizes->addAction(QString::number(size) + QStringLiteral(" pt"));
    item->setCheckable(true);
    item->setChecked(m.orbSize() == size);
    QObject::connect(item, &QAction::triggered, sizes,
                     [this, size] { deps_.model.setOrbSize(size); });
  }
  QMenu* phases = menu.addMenu(QStringLiteral("演示数据状态"));
  const char* phaseTitles[] = {"加载", "正常", "过期", "降级", "离线"};
  size_t index = 0;
  for (QuotePhase phase : allCases<QuotePhase>()) {
    QAction* item = phases->addAction(QString::fromUtf8(phaseTitles[index++]));
    item->setCheckable(true);
    item->setChecked(m.phase() == phase);
    QObject::connect(item, &QAction::triggered, phases,
                     [this, phase] { deps_.model.simulatePhase(phase); });
  }
  add("使用引导", [this] { openWindow(AuxWindow::guide); });
  add("退出潮汐栏", [this] {
    if (onQuit) onQuit();
  });
}

}  // namespace tidemark

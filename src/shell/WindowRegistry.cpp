#include "shell/WindowRegistry.h"

#include <cmath>

#include <QLabel>
#include <QShortcut>
#include <QVBoxLayout>

#include "shell/WindowPlacement.h"
#include "views/Theme.h"

namespace tidemark {
namespace {

struct WindowSpec {
  AuxWindow key;
  const char* title;
  QSize size, minimum;
  bool resizable;
};
constexpr WindowSpec windowSpecs[] = {
    {AuxWindow::settings, "设置 · 使用偏好", {960, 740}, {840, 560}, true},
    {AuxWindow::guide, "欢迎来到岚舟", {480, 600}, {480, 560}, false},
    {AuxWindow::alert, "价格预警", {420, 540}, {420, 540}, false},
};

}  // namespace

QWidget* WindowRegistry::window(AuxWindow key) const {
  auto it = windows_.find(key);
  return it == windows_.end() ? nullptr : it->second.window.data();
}

void WindowRegistry::close(AuxWindow key) {
  if (QWidget* w = window(key)) w->close();
}

bool WindowRegistry::owns(const QWidget* top) const {
  for (; top; top = top->parentWidget() ? top->parentWidget()->window() : nullptr)
    for (const auto& [key, open] : windows_)
      if (open.window.data() == top) return true;
  return false;
}

void WindowRegistry::tellSettings() {
  for (auto& [key, open] : windows_)
    if (open.settings) host_.tellSettings(*open.settings);
}

void WindowRegistry::setExcludedFromCapture(bool exclude) {
  for (auto& [key, open] : windows_)
    if (open.window) host_.windowSystem.setExcludedFromCapture(*open.window, exclude);
}

void WindowRegistry::closeAll() {
  for (auto& [key, open] : windows_) delete open.window.data();
  windows_.clear();
}

void WindowRegistry::place(QWidget& window, QSize size) {
  const auto orb = host_.orbPlace();
  if (!orb) {
    window.resize(size);
    return;
  }
  const WindowRequest request{double(size.width()), double(size.height())};
  // Beside the orb where the screen has room, so neither hides the other; else in the middle,
  // where the orb stands aside while the window has the focus.
  const Rect r = windowBesideOrb(orb->visibleFrame, orb->center, orb->orbSize, request);
  window.resize(static_cast<int>(r.width), static_cast<int>(r.height));
  window.move(static_cast<int>(std::lround(r.x)), static_cast<int>(std::lround(r.y)));
}

void WindowRegistry::open(AuxWindow key, std::optional<SettingsSection> section) {
  if (key == AuxWindow::alert) {
    // The editor always starts from the current alert.
    if (QWidget* old = window(AuxWindow::alert)) old->deleteLater();
    windows_.erase(AuxWindow::alert);
  }
  if (QWidget* existing = window(key)) {
    if (SettingsView* settings = windows_[key].settings; settings && section)
      settings->showSection(*section);
    existing->show();
    existing->raise();
    existing->activateWindow();
    return;
  }
  const WindowSpec* spec = nullptr;
  for (const WindowSpec& candidate : windowSpecs)
    if (key == candidate.key) spec = &candidate;
  if (!spec) return;

  auto* window = new QWidget(nullptr, host_.dialogs && spec->resizable ? Qt::Dialog : Qt::Window);
  window->setAttribute(Qt::WA_QuitOnClose, false);
  window->setWindowTitle(QString::fromUtf8(spec->title));
  place(*window, spec->size);
  const QSize size = window->size();
  window->setMinimumSize(spec->minimum.boundedTo(size));
  if (!spec->resizable) window->setFixedSize(size);
  applyTheme(host_.model.theme());
  window->setAutoFillBackground(true);
  // Masked windows are kept out of capture from their first frame.
  host_.windowSystem.setExcludedFromCapture(*window, host_.model.masked());
  auto* layout = new QVBoxLayout(window);
  layout->setContentsMargins(0, 0, 0, 0);
  WindowContent content = host_.content ? host_.content(key, section) : WindowContent{};
  QWidget* root = content.root ? content.root : new QLabel(QString::fromUtf8(spec->title));
  // On a screen smaller than the window, the window shrinks and its content scrolls.
  layout->addWidget(scrollingArea(root, window, true));
  if (content.settings) host_.tellSettings(*content.settings);
  // Esc closes every window of ours, as a dialog closes; an open popup takes it first.
  auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), window);
  QObject::connect(escape, &QShortcut::activated, window, [this, key] { close(key); });
  windows_[key] = {window, content.settings};
  window->show();
  window->raise();
  window->activateWindow();
}

}  // namespace tidemark

#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QImage>
#include <QMenu>
#include <QSystemTrayIcon>
#include <QTimer>

#include "seams/DesktopSeams.h"

namespace tidemark {

// The tray item: the mini orb, its tooltip and the status menu, which is built afresh every time
// it opens. Where the desktop hosts StatusNotifierItems the item is our own, with the title as a
// label beside the icon; otherwise the system tray icon. A desktop whose tray starts after us is
// asked again every few seconds for a minute; meanwhile, and without any tray, the orb and the
// global keys do everything.
class StatusItem {
 public:
  StatusItem(std::function<void(QMenu&)> buildMenu, std::function<void()> onActivate,
             std::unique_ptr<StatusNotifier> notifier = nullptr,
             std::function<void()> onScroll = {});
  ~StatusItem();

  // The tray's image, drawn only when the system tray icon shows it or it is asked for, and the
  // exported item's at 22 and 44 pixels.
  void setImage(std::function<QImage()> draw, const QImage& small = {}, const QImage& large = {});
  void setToolTip(const std::string& text);
  // The text beside the icon where the desktop can show one.
  void setTitle(const std::string& text);
  // The menu's labels or check marks changed.
  void menuChanged() {
    if (notifier_) notifier_->menuChanged();
  }
  const std::string& title() const { return title_; }
  const QImage& image() const;
  std::string toolTip() const;
  bool isShown() const { return (icon_ && icon_->isVisible()) || usesNotifier(); }
  bool usesNotifier() const { return notifier_ && notifier_->isAvailable(); }
  // Whether the exported item's icon sizes are wanted at all.
  bool exportsItem() const { return notifier_ != nullptr; }
  QMenu& menu() { return menu_; }

 private:
  void tryToShow();

  std::function<void(QMenu&)> buildMenu_;
  std::function<void()> onActivate_;
  std::unique_ptr<StatusNotifier> notifier_;
  std::unique_ptr<QSystemTrayIcon> icon_;
  QMenu menu_;
  QTimer retry_;
  int retriesLeft_ = 12;
  std::function<QImage()> drawImage_;
  mutable QImage image_;
  std::string title_, toolTip_;
};

}  // namespace tidemark

#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QImage>
#include <QMenu>
#include <QSystemTrayIcon>
#include <QTimer>

namespace tidemark {

// The tray item: the mini orb, its tooltip and the status menu, which is built afresh every time
// it opens. A desktop whose tray starts after us is asked again every few seconds for a minute;
// meanwhile, and without any tray, the orb and the global keys do everything.
class StatusItem {
 public:
  StatusItem(std::function<void(QMenu&)> buildMenu, std::function<void()> onActivate);

  void setImage(const QImage& image);
  void setToolTip(const std::string& text);
  // The text beside the icon where the desktop can show one.
  void setTitle(const std::string& text) { title_ = text; }
  const std::string& title() const { return title_; }
  const QImage& image() const { return image_; }
  std::string toolTip() const;
  bool isShown() const { return icon_ && icon_->isVisible(); }
  QMenu& menu() { return menu_; }

 private:
  void tryToShow();

  std::function<void(QMenu&)> buildMenu_;
  std::function<void()> onActivate_;
  std::unique_ptr<QSystemTrayIcon> icon_;
  QMenu menu_;
  QTimer retry_;
  int retriesLeft_ = 12;
  QImage image_;
  std::string title_, toolTip_;
};

}  // namespace tidemark

#include "shell/StatusItem.h"

#include <utility>

#include <QPixmap>

#include "views/Theme.h"

namespace tidemark {

StatusItem::StatusItem(std::function<void(QMenu&)> buildMenu, std::function<void()> onActivate,
                       std::unique_ptr<StatusNotifier> notifier, std::function<void()> onScroll)
    : buildMenu_(std::move(buildMenu)),
      onActivate_(std::move(onActivate)),
      notifier_(std::move(notifier)) {
  QObject::connect(&menu_, &QMenu::aboutToShow, &menu_, [this] {
    menu_.clear();
    buildMenu_(menu_);
  });
  retry_.setInterval(5000);
  QObject::connect(&retry_, &QTimer::timeout, &retry_, [this] { tryToShow(); });
  if (notifier_) {
    notifier_->start({.activate =
                          [this] {
                            if (onActivate_) onActivate_();
                          },
                      .contextMenu = [this](QPoint at) { menu_.popup(at); },
                      .scroll = std::move(onScroll),
                      .buildMenu =
                          [this](QMenu& menu) {
                            buildMenu_(menu);
                            // Read over D-Bus by the tray host and never drawn: no style sheet
                            // is parsed for it or its submenus.
                            menu.setProperty(plainStyle, true);
                            for (QMenu* sub : menu.findChildren<QMenu*>())
                              sub->setProperty(plainStyle, true);
                          },
                      .availabilityChanged =
                          [this] {
                            retriesLeft_ = 12;
                            tryToShow();
                          }});
  }
  tryToShow();
}

StatusItem::~StatusItem() = default;

void StatusItem::setTitle(const std::string& text) {
  title_ = text;
  if (notifier_) notifier_->setLabel(text);
}

void StatusItem::tryToShow() {
  if (usesNotifier() || (notifier_ && notifier_->isPending())) {
    // Our own item is shown, or will be once the watcher answers: an icon through the system
    // tray would be a second one.
    icon_.reset();
    retry_.stop();
    return;
  }
  if (icon_) return;
  if (!QSystemTrayIcon::isSystemTrayAvailable()) {
    if (retriesLeft_-- > 0) {
      retry_.start();
    } else {
      retry_.stop();
    }
    return;
  }
  retry_.stop();
  icon_ = std::make_unique<QSystemTrayIcon>();
  icon_->setContextMenu(&menu_);
  QObject::connect(icon_.get(), &QSystemTrayIcon::activated, icon_.get(),
                   [this](QSystemTrayIcon::ActivationReason reason) {
                     // A right click opens the menu through Qt; every other click toggles the orb.
                     if (reason != QSystemTrayIcon::Context && onActivate_) onActivate_();
                   });
  icon_->setToolTip(QString::fromStdString(toolTip_));
  // Shown once it has an image; an empty icon would leave a hole in the tray.
  if (!image().isNull()) {
    icon_->setIcon(QIcon(QPixmap::fromImage(image_)));
    icon_->show();
  }
}

void StatusItem::setImage(std::function<QImage()> draw, const QImage& small, const QImage& large) {
  if (notifier_ && !small.isNull()) notifier_->setIcon(small, large);
  drawImage_ = std::move(draw);
  // Without Qt's tray icon the image waits until it is asked for.
  const QImage before = std::exchange(image_, QImage());
  if (!icon_ || image() == before) return;
  icon_->setIcon(QIcon(QPixmap::fromImage(image_)));
  if (!icon_->isVisible()) icon_->show();
}

const QImage& StatusItem::image() const {
  if (image_.isNull() && drawImage_) image_ = drawImage_();
  return image_;
}

void StatusItem::setToolTip(const std::string& text) {
  if (text == toolTip_) return;
  toolTip_ = text;
  if (notifier_) notifier_->setToolTip(text);
  if (icon_) icon_->setToolTip(QString::fromStdString(text));
}

std::string StatusItem::toolTip() const {
  return toolTip_;
}

}  // namespace tidemark

#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QPointer>

#include "platform/StatusNotifierTypes.h"
#include "seams/DesktopSeams.h"

class QAction;

namespace tidemark {

// The tray item exported over D-Bus: org.kde.StatusNotifierItem at /StatusNotifierItem with the
// Ayatana label beside the icon, and its menu as com.canonical.dbusmenu at /MenuBar. It registers
// with org.kde.StatusNotifierWatcher, again whenever a watcher appears or a host registers.
//
// It registers under the connection's own unique name rather than a well-known one: hosts match
// every NewIcon and NewToolTip to an item by the sender's name, and under a well-known name some
// (gtk-sni-tray) ask the bus for its owner and read the item's Id again for each signal.
//
// The icon goes out as pixmaps, and, for the hosts that draw only named icons (the Ayatana
// indicator hosts), as a PNG file in a folder of the app's own under the runtime folder, named
// anew for every new image and published as IconThemePath and IconName. The files go with the
// item.
class StatusNotifierItem final : public StatusNotifier {
 public:
  static constexpr const char* itemPath = "/StatusNotifierItem";
  static constexpr const char* menuPath = "/MenuBar";

  // Without `labels` the item publishes no text beside its icon: MATE's notification area shows
  // an item's label in place of its icon, and for an empty label nothing at all.
  explicit StatusNotifierItem(QDBusConnection bus, bool labels = true);
  ~StatusNotifierItem() override;

  void start(Handlers handlers) override;
  bool isAvailable() const override { return available_; }
  bool isPending() const override { return pending_; }
  void setIcon(const QImage& small, const QImage& large) override;
  void setToolTip(const std::string& text) override;
  void setLabel(const std::string& text) override;
  void menuChanged() override { rebuildMenu(); }
  // The revision of the exported menu's layout; a new one is announced with LayoutUpdated.
  uint menuRevision() const { return revision_; }
  // The name the item is registered under: the connection's unique name.
  const QString& serviceName() const { return serviceName_; }
  // The folder of the icon files: "tidemark-tray" in the runtime folder.
  static QString iconFolder();

  // The longest text the label is likely to show in its present form, so the panel keeps its
  // width while the price moves: every digit as the widest one, and a two-digit percentage.
  static QString labelGuide(const QString& label);

 private:
  class ItemObject;
  class MenuObject;
  class Listener;
  friend class ItemObject;
  friend class MenuObject;
  friend class Listener;

  void registerWithWatcher();
  // The registration's outcome: shown by a host or not.
  void settle(bool available);
  void rebuildMenu();
  QVariantMap itemProperties() const;
  // Hands the item's present properties to the object that answers the hosts' reads.
  void publish();
  void emitSignal(const char* path, const char* interface, const char* name,
                  const QVariantList& arguments = {});

  QDBusConnection bus_;
  bool labels_ = true;
  QString serviceName_;
  // Looked up once: hosts read the properties, the folder's path among them, on every change.
  QString iconFolder_ = iconFolder();
  Handlers handlers_;
  bool available_ = false;
  bool pending_ = false;
  int retriesLeft_ = 5;
  uint64_t attempts_ = 0;  // only the newest registration's answers count
  std::unique_ptr<ItemObject> item_;
  std::unique_ptr<MenuObject> menu_;
  std::unique_ptr<Listener> listener_;
  QDBusServiceWatcher watcher_;

  void writeIconFile(const QImage& image);
  static bool writePng(const QImage& image, const QString& path);
  void removeIconFiles(bool othersToo);

  sni::IconPixmapList icon_;
  QString iconName_;
  // The icon files written, by a hash of their pixels, the newest last: a face shown before is
  // named again instead of written again (a price going to and fro moves the arc between the
  // same few steps). The oldest go beyond iconFilesKept.
  static constexpr size_t iconFilesKept = 32;
  std::vector<std::pair<size_t, QString>> iconFiles_;
  bool folderMade_ = false;
  QString toolTip_, label_, guide_;

  std::unique_ptr<QMenu> exported_;
  std::map<int, QPointer<QAction>> actions_;
  sni::MenuLayoutItem layout_;
  uint revision_ = 0;
};

}  // namespace tidemark

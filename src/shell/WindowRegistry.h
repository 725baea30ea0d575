#pragma once

#include <functional>
#include <map>
#include <optional>

#include <QPointer>
#include <QSize>
#include <QWidget>

#include "model/AppModel.h"
#include "seams/DesktopSeams.h"
#include "shell/DockGeometry.h"
#include "views/SettingsView.h"

namespace tidemark {

// The windows besides the orb; at most one of each is open.
enum class AuxWindow { settings, guide, alert };

// The root widget of an auxiliary window, and its settings view when it shows the settings.
struct WindowContent {
  QWidget* root = nullptr;
  SettingsView* settings = nullptr;
};

// Where the orb stands when a window opens: the visible frame of its screen, its centre and size.
struct OrbPlace {
  Rect visibleFrame;
  Point center;
  double orbSize = 0;
};

// The auxiliary windows: each opened once with its title and size, beside the orb, themed and
// kept out of capture while masked; opened again, the open one comes to the front.
class WindowRegistry {
 public:
  struct Host {
    const AppModel& model;  // the theme and the mask
    WindowSystem& windowSystem;
    // What a window shows (the settings with their section).
    std::function<WindowContent(AuxWindow, std::optional<SettingsSection>)> content;
    // Where the orb stands; none before it is on a screen.
    std::function<std::optional<OrbPlace>()> orbPlace;
    // What a settings view learns of the desktop when it opens and when that changes.
    std::function<void(SettingsView&)> tellSettings;
    // The resizable windows are dialogs (a tiling desktop floats those at their own size).
    bool dialogs = false;
  };

  explicit WindowRegistry(Host host) : host_(std::move(host)) {}

  void open(AuxWindow key, std::optional<SettingsSection> section = std::nullopt);
  void close(AuxWindow key);
  QWidget* window(AuxWindow key) const;
  // Whether a top-level window is one of these or a dialog one of them opened.
  bool owns(const QWidget* top) const;
  // The open settings view learns of the desktop again.
  void tellSettings();
  void setExcludedFromCapture(bool exclude);
  // Closes and deletes every window: their views read the model.
  void closeAll();

 private:
  void place(QWidget& window, QSize size);

  struct OpenWindow {
    QPointer<QWidget> window;
    QPointer<SettingsView> settings;  // in the settings window
  };
  Host host_;
  std::map<AuxWindow, OpenWindow> windows_;
};

}  // namespace tidemark

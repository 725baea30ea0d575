#include "views/SettingsView.h"

#include <system_error>

#include <QButtonGroup>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

#include "core/GlobalCommands.h"
#include "core/NumberText.h"
#include "views/AlertsView.h"
#include "views/DetailView.h"
#include "views/HoldingsView.h"
#include "views/Metrics.h"
#include "views/OrbView.h"
#include "views/StatusTitle.h"
#include "views/TextStyle.h"
#include "views/WatchlistView.h"

namespace tidemark {
namespace {

QString q(std::string_view s) {
  return QString::fromUtf8(s.data(), qsizetype(s.size()));
}

// One theme as a small orb over its own backdrop, with its name; the chosen one is ringed.
class ThemeSwatch final : public QPushButton {
 public:
  ThemeSwatch(AppTheme theme, QWidget* parent) : QPushButton(parent), theme_(theme) {
    setCheckable(true);
    setFixedSize(78, 96);
    setCursor(Qt::PointingHandCursor);
    setToolTip(q(label(theme)));
    setAccessibleName(q(label(theme)));
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const OrbPalette own{theme_};
    const QRectF tile = QRectF(rect()).adjusted(2, 2, -2, -24);
    painter.setPen(isChecked() ? QPen(qt(own.auroraB()), 2.5) : QPen(qt(own.line()), 1));
    painter.setBrush(qt(own.background()));
    painter.drawRoundedRect(tile, 14, 14);
    if (hasFocus()) {
      // In the window's own accent, for the swatch's colours are another theme's.
      painter.setBrush(Qt::NoBrush);
      painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5, Qt::DashLine));
      painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), 15, 15);
    }
    paintOrbSphere(painter, tile.center(), 38, own, own.auroraA(), false);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.setFont(uiFont(12, isChecked() ? QFont::DemiBold : QFont::Normal));
    painter.drawText(QRectF(0, height() - 22, width(), 22), Qt::AlignCenter, q(label(theme_)));
  }

 private:
  AppTheme theme_;
};

// What each data source is, in a line a newcomer can tell them apart by.
QString modeDescription(SourceMode mode) {
  switch (mode) {
    case SourceMode::mock:
      return QStringLiteral("演示用的模拟价格，会自己跳动，不是真实行情。");
    case SourceMode::staticJSON:
      return QStringLiteral("读取一份固定的行情快照文件，价格不会变化。");
    case SourceMode::automatic:
      return QStringLiteral(
          "实时行情，依次尝试 stock-sdk、腾讯和新浪，一个失败就换下一个（推荐）。");
    case SourceMode::tencent:
      return QStringLiteral(
          "腾讯的实时行情为先，失败时换 stock-sdk 和新浪；港股请用自动容错或 stock-sdk。");
    case SourceMode::sina:
      return QStringLiteral("新浪的实时行情为先，失败时换 stock-sdk 和腾讯。");
    case SourceMode::stockSDK:
      return QStringLiteral("通过 Node.js 运行 stock-sdk 取实时行情，本机需要装有 Node.js。");
  }
  return {};
}

// The list of sections and the sections themselves. Their wrapped texts must not make their
// height depend on their width: the window would then ask for the tallest section's whole height
// and scroll as a whole, this list included, instead of the section alone.
class SideBar final : public QFrame {
 public:
  using QFrame::QFrame;
  bool hasHeightForWidth() const override { return false; }
};

class SectionPage final : public QWidget {
 public:
  explicit SectionPage(QWidget* content) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
  }
  bool hasHeightForWidth() const override { return false; }
};

// A row of pills, one per choice; the checked one follows `current`.
struct PillRow {
  QHBoxLayout* layout;
  std::vector<ProductPill*> pills;
};

}  // namespace

std::string_view sectionTitle(SettingsSection section) {
  static constexpr std::array<std::string_view, 7> titles{
      "外观", "圆形详情", "自选管理", "持仓盈亏", "价格提醒", "数据源", "预警与隐私"};
  return titles[static_cast<size_t>(section)];
}

const std::array<SettingsSection, 7>& SettingsView::sections() {
  static constexpr std::array all{SettingsSection::appearance,      SettingsSection::detail,
                                  SettingsSection::watchlist,       SettingsSection::holdings,
                                  SettingsSection::alerts,          SettingsSection::source,
                                  SettingsSection::alertsAndPrivacy};
  return all;
}

QWidget* SettingsView::sideBar() {
  auto* side = new SideBar(this);
  side->setProperty("card", true);
  side->setFixedWidth(168);
  auto* sideLayout = new QVBoxLayout(side);
  sideLayout->setContentsMargins(12, 20, 12, 16);
  sideLayout->setSpacing(6);
  sideLayout->addWidget(
      themedLabel(QStringLiteral("使用偏好"), TextRole::plain, 18, QFont::Bold, side));
  sideLayout->addWidget(
      themedLabel(QStringLiteral("潮汐栏 · 岚舟"), TextRole::muted, 11.5, QFont::Normal, side));
  sideLayout->addSpacing(8);
  list_ = new QListWidget(side);
  list_->setFont(uiFont(14));
  for (SettingsSection section : sections()) list_->addItem(q(sectionTitle(section)));
  sideLayout->addWidget(list_, 1);
  auto* guide = new QPushButton(QStringLiteral("重新查看引导"), side);
  QObject::connect(guide, &QPushButton::clicked, this, [this] {
    if (actions_.openGuide) actions_.openGuide();
  });
  auto* reset = new QPushButton(QStringLiteral("恢复默认设置"), side);
  QObject::connect(reset, &QPushButton::clicked, this, [this] { resetPreferences(); });
  sideLayout->addWidget(guide);
  sideLayout->addWidget(reset);
  return side;
}

SettingsView::SettingsView(AppModel& model, const Clock& clock, Actions actions,
                           SettingsSection initialSection, QWidget* parent)
    : QWidget(parent), model_(model), actions_(std::move(actions)), clock_(clock) {
  if (!actions_.confirmReset)
    actions_.confirmReset = [this] {
      return QMessageBox::question(this, QStringLiteral("恢复默认设置"),
                                   QStringLiteral("恢复所有使用偏好的默认值？自选股不受影响。")) ==
             QMessageBox::Yes;
    };
  if (!actions_.chooseFile)
    actions_.chooseFile = [this](bool save) {
      const QString filter = QStringLiteral("自选文件 (*.json)");
      const QString lists = QStringLiteral("自选文件或代码列表 (*.json *.txt *.csv);;所有文件 (*)");
      return save ? QFileDialog::getSaveFileName(this, QStringLiteral("导出自选"),
                                                 fileDialogStart(true), filter)
                  : QFileDialog::getOpenFileName(this, QStringLiteral("导入自选"),
                                                 fileDialogStart(false), lists);
    };

  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);

  layout->addWidget(sideBar());

  // Each section is built when it is first shown: a window opened on one section does not pay
  // for the others (a long watchlist's rows, thousands of holdings).
  stack_ = new QStackedWidget(this);
  builders_ = {
      [this] { return scrollingArea(appearancePage()); },
      [this] {
        detail_ = new DetailView(model_, actions_.close, actions_.openAlert);
        return scrollingArea(detail_);
      },
      [this] {
        watchlist_ = new WatchlistView(model_, clock_);
        return new SectionPage(watchlist_);
      },
      [this] {
        holdings_ = new HoldingsView(model_);
        return scrollingArea(holdings_);
      },
      [this] {
        alerts_ = new AlertsView(model_, clock_);
        return scrollingArea(alerts_);
      },
      [this] { return scrollingArea(sourcePage()); },
      [this] { return scrollingArea(alertPage()); },
  };
  for (size_t k = 0; k < builders_.size(); ++k) stack_->addWidget(new QWidget);
  layout->addWidget(stack_, 1);
  QObject::connect(list_, &QListWidget::currentRowChanged, stack_, [this](int row) {
    if (row < 0) return;
    ensurePage(row);
    stack_->setCurrentIndex(row);
  });

  showSection(initialSection);
  subscription_ = model.subscribe([this] {
    if (syncPending_) return;
    syncPending_ = true;
    QTimer::singleShot(0, this, [this] {
      syncPending_ = false;
      sync();
    });
  });
  sync();
}

void SettingsView::showSection(SettingsSection section) {
  list_->setCurrentRow(static_cast<int>(section));
}

SettingsSection SettingsView::currentSection() const {
  return sections()[size_t(std::max(0, list_->currentRow()))];
}

QWidget* SettingsView::page(SettingsSection section) {
  return ensurePage(static_cast<int>(section));
}

QWidget* SettingsView::ensurePage(int index) {
  auto& build = builders_[size_t(index)];
  if (!build) return stack_->widget(index);
  QWidget* page = std::exchange(build, nullptr)();
  QWidget* placeholder = stack_->widget(index);
  stack_->insertWidget(index, page);
  stack_->removeWidget(placeholder);
  delete placeholder;
  if (list_->currentRow() == index) stack_->setCurrentIndex(index);
  // What was said before the page existed, and the model's state, shown on it now.
  setTransfer(transferText_);
  setShortcutNotice(shortcutText_);
  sync();
  if (detail_) detail_->orb().setSystemReduceMotion(systemCalm_);
  return page;
}

void SettingsView::setSystemCalm(bool calm) {
  systemCalm_ = calm;
  if (detail_) detail_->orb().setSystemReduceMotion(calm);
}

DetailView& SettingsView::detail() {
  ensurePage(1);
  return *detail_;
}

WatchlistView& SettingsView::watchlist() {
  ensurePage(2);
  return *watchlist_;
}

HoldingsView& SettingsView::holdings() {
  ensurePage(3);
  return *holdings_;
}

AlertsView& SettingsView::alerts() {
  ensurePage(4);
  return *alerts_;
}

void SettingsView::setTransfer(const QString& text) {
  transferText_ = text;
  if (transfer_) transfer_->setText(text);
}

void SettingsView::sync() {
  for (const auto& syncer : syncers_) syncer();
}

QWidget* SettingsView::appearancePage() {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(metrics::pageMargins);
  layout->setSpacing(metrics::pageSpacing);
  layout->addWidget(
      new ProductHeading(QStringLiteral("外观"),
                         QStringLiteral("主题、灵球、托盘文字和行情显示，改动立即生效。"), page));
  layout->addWidget(themeCard(page));
  layout->addWidget(orbCard(page));
  layout->addWidget(trayCard(page));
  layout->addWidget(quotesCard(page));
  layout->addWidget(keysCard(page));
  if (actions_.autostartEnabled && actions_.setAutostart) layout->addWidget(startCard(page));
  layout->addStretch();
  return page;
}

QWidget* SettingsView::themeCard(QWidget* page) {
  auto* themes = new ProductCard(QStringLiteral("主题"), page);
  auto* swatches = new QHBoxLayout;
  swatches->setSpacing(10);
  std::vector<std::pair<AppTheme, ThemeSwatch*>> all;
  for (AppTheme theme : allCases<AppTheme>()) {
    auto* swatch = new ThemeSwatch(theme, themes);
    QObject::connect(swatch, &QPushButton::clicked, this,
                     [this, theme] { model_.setTheme(theme); });
    swatches->addWidget(swatch);
    all.emplace_back(theme, swatch);
  }
  swatches->addStretch();
  themes->content().addLayout(swatches);
  syncers_.push_back([this, all] {
    for (auto [theme, swatch] : all) swatch->setChecked(model_.theme() == theme);
  });
  return themes;
}

std::vector<ProductPill*> SettingsView::addPills(ProductCard* card, const QString& title,
                                                 const std::vector<Choice>& choices,
                                                 const std::function<int()>& current) {
  auto* row = new QHBoxLayout;
  row->setSpacing(8);
  auto* name = themedLabel(title, TextRole::secondary, 13, QFont::Normal, card);
  name->setFixedWidth(96);
  row->addWidget(name);
  std::vector<ProductPill*> made;
  for (const auto& [text, action] : choices) {
    auto* pill = new ProductPill(text, card);
    QObject::connect(pill, &QPushButton::clicked, this, action);
    row->addWidget(pill);
    made.push_back(pill);
  }
  row->addStretch();
  card->content().addLayout(row);
  syncers_.push_back([made, current] {
    for (size_t i = 0; i < made.size(); ++i) made[i]->setSelected(int(i) == current());
  });
  return made;
}

void SettingsView::addSwitch(ProductCard* card, const QString& text,
                             const std::function<bool()>& get,
                             const std::function<void(bool)>& set) {
  auto* box = new ProductSwitch(text, card);
  QObject::connect(box, &QCheckBox::toggled, this, [set](bool on) { set(on); });
  card->content().addWidget(box);
  syncers_.push_back([box, get] {
    const QSignalBlocker quiet(box);
    box->setChecked(get());
  });
}

QWidget* SettingsView::orbCard(QWidget* page) {
  auto* orb = new ProductCard(QStringLiteral("灵球"), page);
  std::vector<Choice> sizes;
  for (const auto& [word, points] :
       {std::pair{"小 ", orbSizes[0]}, {"中 ", orbSizes[1]}, {"大 ", orbSizes[2]}})
    sizes.emplace_back(QString::fromUtf8(word) + QString::number(points),
                       [this, size = points] { model_.setOrbSize(size); });
  addPills(orb, QStringLiteral("尺寸"), sizes, [this] {
    return int(std::find(orbSizes.begin(), orbSizes.end(), model_.orbSize()) - orbSizes.begin());
  });
  addPills(orb, QStringLiteral("球面显示"),
           {{QStringLiteral("代码"), [this] { model_.setOrbShowsName(false); }},
            {QStringLiteral("名称"), [this] { model_.setOrbShowsName(true); }}},
           [this] { return model_.orbShowsName() ? 1 : 0; });
  addSwitch(
      orb, QStringLiteral("减少动态效果"), [this] { return model_.reduceMotion(); },
      [this](bool on) { model_.setReduceMotion(on); });
  addSwitch(
      orb, QStringLiteral("自动轮播自选标的"), [this] { return model_.autoRotate(); },
      [this](bool on) { model_.setAutoRotate(on); });
  return orb;
}

QWidget* SettingsView::trayCard(QWidget* page) {
  auto* tray = new ProductCard(QStringLiteral("托盘文字"), page);
  const auto example = [this](MenuDensity density) {
    const std::string title = statusTitleText(model_, density);
    return title.empty() ? QStringLiteral("仅图标") : QString::fromStdString(title).trimmed();
  };
  std::vector<Choice> densities;
  densities.reserve(menuDensities.size());
  for (MenuDensity density : menuDensities)
    densities.emplace_back(QString(), [this, density] { model_.setMenuDensity(density); });
  const auto made = addPills(tray, QStringLiteral("显示密度"), densities, [this] {
    return int(std::find(menuDensities.begin(), menuDensities.end(), model_.menuDensity()) -
               menuDensities.begin());
  });
  syncers_.push_back([made, example] {
    for (size_t i = 0; i < made.size(); ++i) made[i]->setText(example(menuDensities[i]));
  });
  tray->content().addWidget(
      themedLabel(QStringLiteral("托盘面板能显示文字时，价格出现在图标旁；遮蔽时只显示图标。"),
                  TextRole::muted, 12));
  return tray;
}

QWidget* SettingsView::startCard(QWidget* page) {
  auto* start = new ProductCard(QStringLiteral("启动"), page);
  auto* login = new ProductSwitch(QStringLiteral("登录时启动"), start);
  auto* problem = themedLabel(QString(), TextRole::error, 12, QFont::Normal, start);
  problem->hide();
  start->content().addWidget(login);
  start->content().addWidget(problem);
  QObject::connect(login, &QCheckBox::toggled, this, [this, login, problem](bool on) {
    const auto failure = actions_.setAutostart(on);
    problem->setText(failure ? QString::fromStdString(*failure) : QString());
    problem->setVisible(failure.has_value());
    const QSignalBlocker quiet(login);
    login->setChecked(actions_.autostartEnabled());
  });
  // The entry is the user's file: what it says when the window opens is what the switch shows.
  readAutostart_ = [this, login] {
    const QSignalBlocker quiet(login);
    login->setChecked(actions_.autostartEnabled());
  };
  readAutostart_();
  return start;
}

QWidget* SettingsView::keysCard(QWidget* page) {
  auto* keys = new ProductCard(QStringLiteral("快捷键"), page);
  const DesktopKeys& desktop = actions_.keys;
  const auto line = [keys](const QString& text, TextRole role = TextRole::plain, double size = 13) {
    auto* label = themedLabel(text, role, size, QFont::Normal, keys);
    label->setWordWrap(true);
    keys->content().addWidget(label);
    return label;
  };
  if (!desktop.wayland) {
    for (const GlobalCommandSpec& command : globalCommands)
      line(q(command.keys) + QStringLiteral("  ") + q(command.description));
  } else {
    line(QStringLiteral("Wayland 会话中，其他程序的窗口有焦点时收不到 ") +
             QString::fromStdString(bothKeys(" 和 ")) +
             QStringLiteral("。请在桌面的键盘设置里为这两条命令绑定按键："),
         TextRole::muted, 12);
    for (const GlobalCommandSpec& spec : globalCommands) {
      auto* command = line(desktop.program + QStringLiteral(" --") + q(spec.option) +
                           QStringLiteral("  ") + q(spec.description));
      command->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    line(QStringLiteral("灵球有焦点时，它自己的按键照常可用：R 刷新、1/2/3 尺寸、M 遮蔽、←/→ "
                        "切换、回车展开。"),
         TextRole::muted, 12);
    if (desktop.gnomeInstalled && desktop.addGnome) {
      auto* add = new QPushButton(QStringLiteral("添加 GNOME 快捷键"), keys);
      auto* outcome = line(QString(), TextRole::muted, 12);
      const auto tell = [outcome](const QString& text, TextRole role) {
        outcome->setText(text);
        setTextRole(outcome, role);
      };
      if (desktop.gnomeInstalled())
        tell(QStringLiteral("GNOME 快捷键已添加：") + QString::fromStdString(bothKeys("、")),
             TextRole::muted);
      QObject::connect(add, &QPushButton::clicked, this, [this, tell] {
        if (const auto failure = actions_.keys.addGnome()) {
          tell(QString::fromStdString(*failure), TextRole::error);
          return;
        }
        tell(QStringLiteral("GNOME 快捷键已添加：") + QString::fromStdString(bothKeys("、")),
             TextRole::muted);
        if (actions_.keys.changed) actions_.keys.changed();
      });
      auto* row = new QHBoxLayout;
      row->addWidget(add);
      row->addStretch();
      keys->content().addLayout(row);
    }
  }
  shortcutNotice_ = themedLabel(QString(), TextRole::warning, 12, QFont::Normal, keys);
  shortcutNotice_->hide();
  keys->content().addWidget(shortcutNotice_);
  return keys;
}

void SettingsView::showEvent(QShowEvent*) {
  if (readAutostart_) readAutostart_();
}

QWidget* SettingsView::transferCard(QWidget* page) {
  auto* files = new ProductCard(QStringLiteral("导入与导出"), page);
  auto* buttons = new QHBoxLayout;
  auto* exportButton = new QPushButton(QStringLiteral("导出自选…"), files);
  auto* importButton = new QPushButton(QStringLiteral("导入自选…"), files);
  QObject::connect(exportButton, &QPushButton::clicked, this, [this] { exportWatchlist(); });
  QObject::connect(importButton, &QPushButton::clicked, this, [this] { importWatchlist(); });
  buttons->addWidget(exportButton);
  buttons->addWidget(importButton);
  buttons->addStretch();
  files->content().addLayout(buttons);
  transfer_ = themedLabel(QString(), TextRole::muted, 12, QFont::Normal, files);
  files->content().addWidget(transfer_);
  return files;
}

QWidget* SettingsView::sourcePage() {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(metrics::pageMargins);
  layout->setSpacing(metrics::pageSpacing);
  layout->addWidget(new ProductHeading(QStringLiteral("数据源"),
                                       QStringLiteral("行情从哪里来、多久刷新一次。"), page));

  auto* card = new ProductCard(QStringLiteral("行情来源"), page);
  auto* mode = new QComboBox(card);
  for (SourceMode m : allCases<SourceMode>()) mode->addItem(q(label(m)), int(m));
  QObject::connect(mode, &QComboBox::activated, this, [this, mode](int index) {
    model_.setSourceMode(SourceMode(mode->itemData(index).toInt()));
  });
  card->content().addWidget(mode);
  auto* hint = themedLabel(QString(), TextRole::muted, 12, QFont::Normal, card);
  hint->setWordWrap(true);
  card->content().addWidget(hint);
  auto* interval = new QHBoxLayout;
  interval->addWidget(themedLabel(QStringLiteral("自动刷新"), TextRole::secondary, 13));
  std::vector<std::pair<double, ProductPill*>> intervals;
  for (auto [seconds, text] : {std::pair{0.0, "关闭"}, {2.6, "2.6 秒"}, {5.0, "5 秒"}}) {
    auto* pill = new ProductPill(QString::fromUtf8(text), card);
    QObject::connect(pill, &QPushButton::clicked, this,
                     [this, chosen = seconds] { model_.setRefreshInterval(chosen); });
    interval->addWidget(pill);
    intervals.emplace_back(seconds, pill);
  }
  interval->addStretch();
  card->content().addLayout(interval);
  layout->addWidget(card);

  auto* status = new ProductCard(QStringLiteral("状态"), page);
  auto* lines = themedLabel(QString(), TextRole::plain, 13, QFont::Normal, status);
  lines->setTextInteractionFlags(Qt::TextSelectableByMouse);
  status->content().addWidget(lines);
  auto* refresh = new QPushButton(QStringLiteral("立即刷新"), status);
  refresh->setProperty("primary", true);
  QObject::connect(refresh, &QPushButton::clicked, this, [this] { model_.refresh(); });
  auto* row = new QHBoxLayout;
  row->addWidget(refresh);
  row->addStretch();
  status->content().addLayout(row);
  layout->addWidget(status);

  layout->addWidget(transferCard(page));
  layout->addStretch();

  syncers_.push_back([this, mode, hint, intervals, lines] {
    {
      const QSignalBlocker quiet(mode);
      mode->setCurrentIndex(mode->findData(int(model_.sourceMode())));
    }
    hint->setText(modeDescription(model_.sourceMode()) + QStringLiteral("\n当前来源：") +
                  QString::fromStdString(model_.sourceLabel()) +
                  (model_.quietRefresh()
                       ? QStringLiteral("\n自选的市场都未开市，每 5 分钟刷新一次。")
                       : QString()));
    for (auto [seconds, pill] : intervals) pill->setSelected(model_.refreshInterval() == seconds);
    const Date updated = model_.updatedAt();
    const QString when = updated.sinceReference == 0
                             ? QStringLiteral("—")
                             : QDateTime::fromMSecsSinceEpoch(qint64(updated.unixSeconds() * 1000))
                                   .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    lines->setText(QStringLiteral("地址：%1\n状态：%2\n错误：%3\n延迟：%4 ms\n更新：%5")
                       .arg(QString::fromStdString(model_.sources().status),
                            q(label(model_.phase())),
                            model_.lastError() ? QString::fromStdString(*model_.lastError())
                                               : QStringLiteral("无"),
                            QString::number(model_.latencyMS()), when));
  });
  return page;
}

QWidget* SettingsView::alertPage() {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(metrics::pageMargins);
  layout->setSpacing(metrics::pageSpacing);
  layout->addWidget(new ProductHeading(QStringLiteral("预警与隐私"),
                                       QStringLiteral("价格提醒和共享屏幕时的遮蔽。"), page));

  auto* alert = new ProductCard(QStringLiteral("价格预警"), page);
  auto* current = themedLabel(QString(), TextRole::plain, 14, QFont::Medium, alert);
  alert->content().addWidget(current);
  auto* edit = new QPushButton(QStringLiteral("编辑预警…"), alert);
  QObject::connect(edit, &QPushButton::clicked, this, [this] {
    if (actions_.openAlert) actions_.openAlert();
  });
  auto* row = new QHBoxLayout;
  row->addWidget(edit);
  row->addStretch();
  alert->content().addLayout(row);
  layout->addWidget(alert);

  auto* privacy = new ProductCard(QStringLiteral("隐私"), page);
  auto* mask = new ProductSwitch(QStringLiteral("遮蔽所有行情数字"), privacy);
  QObject::connect(mask, &QCheckBox::toggled, this, [this](bool on) { model_.setMasked(on); });
  privacy->content().addWidget(mask);
  privacy->content().addWidget(themedLabel(
      QStringLiteral(
          "在 Linux 桌面上，遮蔽会隐藏窗口里的数字，但无法阻止窗口被录屏或屏幕共享捕获。"),
      TextRole::muted, 12));
  privacy->content().addWidget(themedLabel(QStringLiteral("快捷键 ") +
                                               q(specOf(GlobalCommand::toggleMask).keys) +
                                               QStringLiteral(" 随时切换遮蔽。"),
                                           TextRole::muted, 12));
  layout->addWidget(privacy);
  layout->addStretch();

  syncers_.push_back([this, current, mask] {
    {
      const QSignalBlocker quiet(mask);
      mask->setChecked(model_.masked());
    }
    const auto price = model_.alertRule().price;
    if (!price) {
      current->setText(QStringLiteral("尚未设置价格预警"));
      return;
    }
    const QuoteSnapshot* quote = model_.alertQuote();
    const std::string who =
        model_.alertRule().symbolID.value_or("") + (quote ? "  " + quote->name : std::string());
    const QString direction = model_.alertRule().above ? QStringLiteral("价格达到或高于")
                                                       : QStringLiteral("价格达到或低于");
    current->setText(QString::fromStdString(who) + QStringLiteral("\n") + direction +
                     QStringLiteral(" ") +
                     (model_.masked() ? QStringLiteral("目标价格已遮蔽")
                                      : QString::fromStdString(model_.quoteStyle().typed(
                                            model_.alertRule().symbolID.value_or(""), *price))) +
                     (model_.alertRule().triggered ? QStringLiteral(" · 已触发") : QString()));
  });
  return page;
}

void SettingsView::setShortcutNotice(const QString& text) {
  shortcutText_ = text;
  if (!shortcutNotice_) return;
  shortcutNotice_->setText(text);
  shortcutNotice_->setVisible(!text.isEmpty());
}

void SettingsView::resetPreferences() {
  if (actions_.confirmReset && actions_.confirmReset()) model_.resetPreferences();
}

QString SettingsView::fileDialogStart(bool save) const {
  return save ? lastFolder_ + QStringLiteral("/tidemark-watchlist.json") : lastFolder_;
}

void SettingsView::exportWatchlist() {
  const QString path = actions_.chooseFile(true);
  if (path.isEmpty()) return;
  lastFolder_ = QFileInfo(path).absolutePath();
  try {
    model_.exportWatchlist(path.toStdString());
    setTransfer(QStringLiteral("已导出到 ") + path);
  } catch (const std::system_error&) {
    setTransfer(QStringLiteral("导出失败：无法写入 ") + path);
  } catch (const std::exception& error) {
    setTransfer(QStringLiteral("导出失败：") + QString::fromUtf8(error.what()));
  }
}

void SettingsView::importWatchlist() {
  const QString path = actions_.chooseFile(false);
  if (path.isEmpty()) return;
  lastFolder_ = QFileInfo(path).absolutePath();
  try {
    const auto result = model_.importWatchlist(path.toStdString());
    QString text = QStringLiteral("已导入 %1 个标的").arg(result.symbols);
    if (result.skippedLines > 0)
      text += QStringLiteral("（跳过 %1 行非代码内容）").arg(result.skippedLines);
    if (result.holdings) text += QStringLiteral("、%1 项持仓").arg(*result.holdings);
    if (result.skippedHoldings > 0)
      text += QStringLiteral("（跳过 %1 项无效持仓）").arg(result.skippedHoldings);
    if (result.alerts) text += QStringLiteral("、%1 条提醒").arg(*result.alerts);
    if (result.skippedAlerts > 0)
      text += QStringLiteral("（跳过 %1 条无效提醒）").arg(result.skippedAlerts);
    setTransfer(text);
  } catch (const std::system_error&) {
    setTransfer(QStringLiteral("导入失败：无法读取 ") + path);
  } catch (const std::exception& error) {
    setTransfer(QStringLiteral("导入失败：") + QString::fromUtf8(error.what()));
  }
}

}  // namespace tidemark

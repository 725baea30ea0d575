#include "views/Theme.h"

#include <optional>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPainter>
#include <QStyle>

#include "views/TextStyle.h"

namespace tidemark {
namespace {

QString css(const Color& c) {
  return QStringLiteral("rgba(%1, %2, %3, %4)")
      .arg(qRound(c.red * 255))
      .arg(qRound(c.green * 255))
      .arg(qRound(c.blue * 255))
      .arg(c.opacity, 0, 'f', 3);
}

}  // namespace

ThemeColors themeColors(const OrbPalette& p) {
  const bool dark = isDark(p.theme);
  return {p.background(),
          p.surface(),
          p.elevated(),
          p.ink(),
          p.secondary(),
          p.muted(),
          p.line(),
          p.auroraA(),
          p.auroraB(),
          withOpacity(p.auroraB(), 0.24),
          dark ? Color::hex(0xFFFFFF, 0.05) : Color::hex(0x14183C, 0.04),
          colorFromHex(dark ? 0xFFB35C : 0xB25E00),
          quoteColor(1),
          colorFromHex(0x10131F)};
}

QPalette themePalette(const OrbPalette& p) {
  const ThemeColors t = themeColors(p);
  QPalette palette;
  const QColor background = qt(t.window), raised = qt(t.raised), ink = qt(t.ink);
  for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
    palette.setColor(group, QPalette::Window, background);
    palette.setColor(group, QPalette::WindowText, ink);
    palette.setColor(group, QPalette::Base, raised);
    palette.setColor(group, QPalette::AlternateBase, background);
    palette.setColor(group, QPalette::Text, ink);
    palette.setColor(group, QPalette::Button, raised);
    palette.setColor(group, QPalette::ButtonText, ink);
    palette.setColor(group, QPalette::BrightText, qt(p.auroraA()));
    palette.setColor(group, QPalette::Highlight, qt(p.auroraB()));
    palette.setColor(group, QPalette::HighlightedText, QColor(Qt::white));
    palette.setColor(group, QPalette::PlaceholderText, qt(p.muted()));
    palette.setColor(group, QPalette::ToolTipBase, raised);
    palette.setColor(group, QPalette::ToolTipText, ink);
    palette.setColor(group, QPalette::Link, qt(p.auroraB()));
    palette.setColor(group, QPalette::Light, qt(p.line()));
    palette.setColor(group, QPalette::Mid, qt(p.line()));
    palette.setColor(group, QPalette::Dark, background);
  }
  palette.setColor(QPalette::Disabled, QPalette::WindowText, qt(p.muted()));
  palette.setColor(QPalette::Disabled, QPalette::Text, qt(p.muted()));
  palette.setColor(QPalette::Disabled, QPalette::ButtonText, qt(p.muted()));
  palette.setColor(QPalette::Disabled, QPalette::Window, background);
  palette.setColor(QPalette::Disabled, QPalette::Base, background);
  palette.setColor(QPalette::Disabled, QPalette::Button, background);
  return palette;
}

QString themeStyleSheet(const OrbPalette& p) {
  const ThemeColors t = themeColors(p);
  QString sheet = QStringLiteral(R"(
QLabel[role="secondary"] { color: %2; }
QLabel[role="muted"] { color: %3; }
QLabel[role="accent"] { color: %6; }
QLabel[role="warning"] { color: %11; }
QLabel[role="error"] { color: %12; }
QFrame[card="true"] { background: %4; border: 1px solid %5; border-radius: 14px; }
QFrame[card="true"] QLabel { background: transparent; }
QFrame[rowcard="true"] { background: %13; border: 1px solid %5; border-radius: 10px; }
QPushButton { background: %13; color: %1; border: 1px solid %5; border-radius: 8px;
  padding: 6px 14px; }
QPushButton:hover { border-color: %7; }
QPushButton:pressed { background: %9; }
QPushButton:disabled { color: %3; }
QPushButton:focus { border: 2px solid %7; padding: 5px 13px; }
QPushButton[primary="true"] { background: qlineargradient(x1:0, y1:0, x2:1, y2:1,
  stop:0 %6, stop:1 %7); color: %10; border: none; font-weight: 600; }
QPushButton[pill="true"] { border-radius: 13px; padding: 4px 14px; }
QPushButton[pill="true"][selected="true"] { background: %8; border: 2px solid %7; padding: 3px 13px; }
QPushButton[pill="true"]:focus { border: 2px dashed %1; padding: 3px 13px; }
QPushButton[pill="true"][compact="true"] { border-radius: 11px; padding: 2px 8px; min-width: 0;
  font-size: 12px; }
QPushButton[pill="true"][compact="true"][selected="true"] { padding: 1px 7px; }
QPushButton[pill="true"][compact="true"]:focus { padding: 1px 7px; }
QPushButton[primary="true"]:focus { border: 2px solid %1; }
QPushButton[flat="true"] { background: transparent; border: none; padding: 3px 7px;
  font-size: 13px; }
QPushButton[flat="true"]:hover { background: %9; }
QPushButton[flat="true"]:focus { border: 1px solid %7; padding: 2px 6px; }
QLineEdit { background: %13; color: %1; border: 1px solid %5;
  border-radius: 8px; padding: 5px 8px; selection-background-color: %7; }
QLineEdit:focus { border-color: %7; }
QComboBox { background: %13; color: %1; border: 1px solid %5; border-radius: 8px;
  padding: 3px 10px; min-height: 22px; }
QComboBox:hover, QComboBox:focus { border-color: %7; }
QComboBox QAbstractItemView { background: %4; color: %1; border: 1px solid %5;
  selection-background-color: %8; selection-color: %1; outline: none; }
QListWidget { background: transparent; border: none; outline: none; }
QListWidget::item { color: %2; padding: 8px 12px; border-radius: 9px; }
QListWidget::item:selected { background: %8; color: %1; }
QListWidget::item:hover:!selected { background: %9; }
QScrollArea { background: transparent; border: none; }
QScrollBar:vertical { background: transparent; width: 8px; margin: 2px; }
QScrollBar:horizontal { background: transparent; height: 8px; margin: 2px; }
QScrollBar::handle { background: %5; border-radius: 3px; min-height: 24px; min-width: 24px; }
QScrollBar::handle:hover { background: %3; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QScrollArea > QWidget > QWidget { background: transparent; }
QCheckBox, QRadioButton { color: %1; spacing: 8px; }
QToolTip { background: %4; color: %1; border: 1px solid %5; padding: 4px; }
QProgressBar { background: %9; border: none; border-radius: 3px; max-height: 6px; }
QProgressBar::chunk { background: %7; border-radius: 3px; }
)");
  return sheet
      .arg(css(t.ink), css(t.secondary), css(t.muted), css(t.card), css(t.line), css(t.accentA),
           css(t.accentB), css(t.selection), css(t.wash), css(t.onAccent), css(t.warning),
           css(t.error))
      .arg(css(t.raised));
}

namespace {

// Windows take the theme's style sheet as they are first polished, before they show; the orb's
// panel draws itself and keeps the plain style. An application-wide sheet would wrap every widget
// of the orb in the style-sheet style as well.
class WindowStyler final : public QObject {
 public:
  QString sheet;

  void restyle() const {
    for (QWidget* window : QApplication::topLevelWidgets())
      if (styled(window) && window->testAttribute(Qt::WA_WState_Polished))
        window->setStyleSheet(sheet);
  }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::Polish && object->isWidgetType()) {
      auto* widget = static_cast<QWidget*>(object);
      if (widget->isWindow() && styled(widget) && widget->styleSheet() != sheet)
        widget->setStyleSheet(sheet);
    }
    return false;
  }

 private:
  static bool styled(const QWidget* window) { return !window->property(plainStyle).toBool(); }
};

}  // namespace

void applyTheme(AppTheme theme) {
  static std::optional<AppTheme> applied;
  if (applied == theme) return;
  applied = theme;
  const OrbPalette palette{theme};
  QApplication::setPalette(themePalette(palette));
  static WindowStyler* styler = [] {
    auto* installed = new WindowStyler;  // lives as long as the application
    installed->setParent(qApp);
    qApp->installEventFilter(installed);
    return installed;
  }();
  styler->sheet = themeStyleSheet(palette);
  styler->restyle();
}

namespace {

// The names the style sheet's selectors use; none for plain text.
const char* roleName(TextRole role) {
  static constexpr std::array<const char*, 6> names{nullptr,  "secondary", "muted",
                                                    "accent", "warning",   "error"};
  return names[static_cast<size_t>(role)];
}

}  // namespace

void setTextRole(QWidget* label, TextRole role) {
  const char* name = roleName(role);
  const QVariant value = name ? QVariant(QString::fromLatin1(name)) : QVariant();
  if (label->property("role") == value) return;
  label->setProperty("role", value);
  label->style()->unpolish(label);
  label->style()->polish(label);
}

QLabel* themedLabel(const QString& text, TextRole role, double size, QFont::Weight weight,
                    QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setFont(uiFont(size, weight));
  label->setWordWrap(true);
  if (role != TextRole::plain) label->setProperty("role", QString::fromLatin1(roleName(role)));
  return label;
}

void clearLayout(QLayout* layout, int keep) {
  while (QLayoutItem* item = layout->takeAt(keep)) {
    if (QWidget* w = item->widget()) w->deleteLater();
    delete item;
  }
}

namespace {

void collectTexts(const QWidget* root, QStringList& out) {
  for (const QObject* child : root->children()) {
    const auto* widget = qobject_cast<const QWidget*>(child);
    if (!widget || widget->isHidden()) continue;
    if (const auto* elided = dynamic_cast<const ElidedLabel*>(widget)) {
      if (!elided->fullText().isEmpty()) out << elided->fullText();
    } else if (const auto* label = qobject_cast<const QLabel*>(widget)) {
      if (!label->text().isEmpty()) out << label->text();
    } else if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
      if (!button->text().isEmpty()) out << button->text();
    } else if (const auto* edit = qobject_cast<const QLineEdit*>(widget)) {
      if (!edit->text().isEmpty()) out << edit->text();
    } else if (const auto* box = qobject_cast<const QComboBox*>(widget)) {
      out << box->currentText();
    }
    collectTexts(widget, out);
  }
}

}  // namespace

QStringList shownTexts(const QWidget* root) {
  QStringList texts;
  collectTexts(root, texts);
  return texts;
}

QScrollArea* scrollingArea(QWidget* content, QWidget* parent, bool sideways) {
  auto* area = new QScrollArea(parent);
  area->setWidgetResizable(true);
  area->setFrameShape(QFrame::NoFrame);
  if (!sideways) area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area->setWidget(content);
  return area;
}

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent) : QLabel(parent) {
  setProperty("elides", true);
  setWordWrap(false);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  setFullText(text);
}

void ElidedLabel::setFullText(const QString& text) {
  full_ = text;
  shorten();
}

QSize ElidedLabel::minimumSizeHint() const {
  return {fontMetrics().horizontalAdvance(QStringLiteral("…")) * 3,
          QLabel::minimumSizeHint().height()};
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
  QLabel::resizeEvent(event);
  shorten();
}

void ElidedLabel::changeEvent(QEvent* event) {
  QLabel::changeEvent(event);
  if (event->type() == QEvent::FontChange) shorten();
}

ElidedLabel* elidedLabel(const QString& text, TextRole role, double size, QFont::Weight weight,
                         QWidget* parent) {
  auto* label = new ElidedLabel(QString(), parent);
  label->setFont(uiFont(size, weight));
  if (role != TextRole::plain) label->setProperty("role", QString::fromLatin1(roleName(role)));
  label->setFullText(text);
  return label;
}

void ElidedLabel::shorten() {
  const QString shown = fontMetrics().elidedText(full_, Qt::ElideRight, contentsRect().width());
  setText(shown);
  setToolTip(shown == full_ ? QString() : full_);
}

ProductHeading::ProductHeading(const QString& title, const QString& subtitle, QWidget* parent)
    : QWidget(parent) {
  row_ = new QHBoxLayout(this);
  row_->setContentsMargins(0, 0, 0, 0);
  auto* texts = new QVBoxLayout;
  texts->setSpacing(4);
  title_ = themedLabel(title, TextRole::plain, 22, QFont::Bold, this);
  subtitle_ = themedLabel(subtitle, TextRole::muted, 12.5, QFont::Normal, this);
  texts->addWidget(title_);
  texts->addWidget(subtitle_);
  row_->addLayout(texts, 1);
}

void ProductHeading::addTrailing(QWidget* widget) {
  row_->addWidget(widget, 0, Qt::AlignTop);
}

ProductCard::ProductCard(const QString& title, QWidget* parent) : QFrame(parent) {
  setProperty("card", true);
  content_ = new QVBoxLayout(this);
  content_->setContentsMargins(16, 14, 16, 16);
  content_->setSpacing(10);
  if (!title.isEmpty())
    content_->addWidget(themedLabel(title, TextRole::secondary, 12, QFont::DemiBold));
}

ProductPill::ProductPill(const QString& text, QWidget* parent) : QPushButton(text, parent) {
  setProperty("pill", true);
  setProperty("selected", false);
  setCursor(Qt::PointingHandCursor);
}

void ProductPill::setSelected(bool selected) {
  if (isSelected() == selected) return;
  setProperty("selected", selected);
  repolish(this);
}

ProductSwitch::ProductSwitch(const QString& text, QWidget* parent) : QCheckBox(text, parent) {
  setFont(uiFont(13));
  setCursor(Qt::PointingHandCursor);
}

QSize ProductSwitch::sizeHint() const {
  return {46 + fontMetrics().horizontalAdvance(text()), std::max(24, fontMetrics().height() + 4)};
}

void ProductSwitch::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPalette& colours = palette();
  const QRectF track(1, (height() - 20) / 2.0, 36, 20);
  painter.setPen(Qt::NoPen);
  QColor off = colours.color(QPalette::WindowText);
  off.setAlphaF(0.22f);
  painter.setBrush(isChecked() ? colours.color(QPalette::Highlight) : off);
  painter.drawRoundedRect(track, 10, 10);
  const double x = isChecked() ? track.right() - 18 : track.left() + 2;
  painter.setBrush(QColor(Qt::white));
  painter.drawEllipse(QRectF(x, track.top() + 2, 16, 16));
  if (hasFocus()) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colours.color(QPalette::Highlight), 1));
    painter.drawRoundedRect(track.adjusted(-1.5, -1.5, 1.5, 1.5), 11, 11);
  }
  painter.setPen(
      colours.color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
  painter.drawText(QRectF(46, 0, width() - 46, height()), Qt::AlignLeft | Qt::AlignVCenter, text());
}

void repolish(QWidget* widget) {
  widget->style()->unpolish(widget);
  widget->style()->polish(widget);
  widget->update();
}

}  // namespace tidemark

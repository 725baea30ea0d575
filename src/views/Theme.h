#pragma once

#include <functional>
#include <string>

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <QWidget>

#include "core/Enums.h"
#include "views/OrbPalette.h"

namespace tidemark {

// Every colour the windows use, for one theme: the palette's own roles where it has one, and
// the few it does not name, each for one purpose.
struct ThemeColors {
  Color window;  // background: the backdrop of every window
  Color card;    // surface: cards, panels, the settings sidebar
  Color raised;  // elevated: row cards, fields, buttons
  Color ink, secondary, muted, line;
  Color accentA, accentB;  // auroraA and auroraB: focus, the on state, the primary buttons
  // Not in the palette:
  Color selection;  // auroraB at 0.24: the chosen pill and list item
  Color wash;       // white at 0.05 (light: the ink's navy at 0.04): hover and press on a card
  Color warning;    // #FFB35C (light: #B25E00): notices that are not failures
  Color error;      // the rise colour #FF453A: failures in words
  Color onAccent;   // #10131F: text on the aurora gradient, which is light in every theme
};
ThemeColors themeColors(const OrbPalette& palette);

// The standard controls' colours for a theme: window, text, fields, buttons and selection.
QPalette themePalette(const OrbPalette& palette);
// Rounded fields and buttons, cards, pills and the text roles in the theme's colours.
QString themeStyleSheet(const OrbPalette& palette);
// Gives the whole application the theme, so every open window recolours at once, and every
// window made later takes it before it shows. Does nothing when the theme is already applied.
void applyTheme(AppTheme theme);
// The property that keeps a window (the orb's panel) out of the style sheet: it draws itself.
inline constexpr char plainStyle[] = "tidemarkPlainStyle";

// The colours text takes by what it says: plain text, then ever quieter secondary and muted
// text, the accent, warnings (notices that are no failure) and failures in words.
enum class TextRole { plain, secondary, muted, accent, warning, error };
// Gives a label its role's colour, also again after it had another.
void setTextRole(QWidget* label, TextRole role);

// A label in one of the text roles of the style sheet, at a size in logical pixels.
QLabel* themedLabel(const QString& text, TextRole role, double size,
                    QFont::Weight weight = QFont::Normal, QWidget* parent = nullptr);

// A frameless scroll area around `content`, which it resizes. Up and down only unless
// `sideways`: what is too narrow gives way in its own layout.
QScrollArea* scrollingArea(QWidget* content, QWidget* parent = nullptr, bool sideways = false);

// Removes the layout's items after the first `keep`, deleting their widgets.
void clearLayout(QLayout* layout, int keep = 0);

// The texts of the shown labels, buttons, fields and pickers below `root`, in the order of the
// widget tree: what a user reads there, for checks of it.
QStringList shownTexts(const QWidget* root);

// A one-line label that shortens its text with "…" where it has too little room, and then tells
// the whole text as its tooltip. Marked with the property "elides".
class ElidedLabel final : public QLabel {
 public:
  explicit ElidedLabel(const QString& text, QWidget* parent = nullptr);
  void setFullText(const QString& text);
  const QString& fullText() const { return full_; }
  QSize minimumSizeHint() const override;

 protected:
  void resizeEvent(QResizeEvent*) override;
  void changeEvent(QEvent* event) override;

 private:
  void shorten();
  QString full_;
};

// An elided label in one of the text roles.
ElidedLabel* elidedLabel(const QString& text, TextRole role, double size,
                         QFont::Weight weight = QFont::Normal, QWidget* parent = nullptr);

// A window's heading: the title over a muted subtitle, with room on the right for a button.
class ProductHeading final : public QWidget {
 public:
  ProductHeading(const QString& title, const QString& subtitle, QWidget* parent = nullptr);
  void addTrailing(QWidget* widget);
  QLabel& title() { return *title_; }
  QLabel& subtitle() { return *subtitle_; }

 private:
  QLabel* title_;
  QLabel* subtitle_;
  QHBoxLayout* row_;
};

// A titled card on the raised surface; its content goes into content().
class ProductCard final : public QFrame {
 public:
  explicit ProductCard(const QString& title, QWidget* parent = nullptr);
  QVBoxLayout& content() { return *content_; }

 private:
  QVBoxLayout* content_;
};

// A pill-shaped button; the selected one carries the accent.
class ProductPill final : public QPushButton {
 public:
  explicit ProductPill(const QString& text, QWidget* parent = nullptr);
  void setSelected(bool selected);
  bool isSelected() const { return property("selected").toBool(); }
};

// An on/off switch with its label: a rounded track, the accent when on.
class ProductSwitch final : public QCheckBox {
 public:
  explicit ProductSwitch(const QString& text, QWidget* parent = nullptr);
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent*) override;
  bool hitButton(const QPoint& pos) const override { return rect().contains(pos); }
};

// Re-reads the style sheet for a widget after one of its style properties changed.
void repolish(QWidget* widget);

}  // namespace tidemark

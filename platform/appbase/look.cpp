#include "ulo/look.h"

#include <QAbstractScrollArea>
#include <QFontMetrics>
#include <QScroller>
#include <QWidget>

#include <algorithm>

namespace ulo {

namespace {

constexpr int narrowLine = 13;  // line height of the narrow screen's font in pixels
constexpr int iconUnit = 16;

constexpr char thinScrollBar[] =
    "QScrollBar:vertical { width: %1px; background: palette(base); margin: 0; }"
    "QScrollBar::handle:vertical { background: palette(mid); min-height: %2px;"
    " border-radius: %3px; }"
    "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }"
    "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: transparent; }";

int lineHeight(const QWidget* widget) {
  return QFontMetrics(widget->font()).height();
}

struct Colors {
  QColor window, base, text, weak, button, accent, accentText, selected, link;
};

const Colors& colorsOf(Theme theme) {
  static const Colors light = {"#f4f5f7", "#ffffff", "#1b1f24", "#5b6570", "#e3e7ec",
                               "#1f5a96", "#ffffff", "#cfe2f6", "#1f5a96"};
  static const Colors dark = {"#15181c", "#1d2126", "#eceff2", "#a3adb8", "#2a3037",
                              "#17466f", "#f5f8fb", "#27496b", "#7db8ee"};
  return theme == Theme::light ? light : dark;
}

}  // namespace

Theme preferredTheme(const QPalette& desktop) {
  const QByteArray wanted = qgetenv("ULO_THEME");
  if (wanted == "light" || wanted == "dark")
    return wanted == "light" ? Theme::light : Theme::dark;
  return desktop.color(QPalette::Window).lightness() < 128 ? Theme::dark : Theme::light;
}

QPalette themePalette(Theme theme) {
  const Colors& colors = colorsOf(theme);
  QPalette palette(colors.button, colors.window);
  palette.setColor(QPalette::Base, colors.base);
  palette.setColor(QPalette::AlternateBase, colors.window);
  for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                                         QPalette::ToolTipText, QPalette::HighlightedText})
    palette.setColor(role, colors.text);
  palette.setColor(QPalette::ToolTipBase, colors.base);
  palette.setColor(QPalette::PlaceholderText, colors.weak);
  // Bars have the accent color, the current row a light form of it.
  palette.setColor(QPalette::Highlight, colors.selected);
  palette.setColor(QPalette::Link, colors.link);
  palette.setColor(QPalette::Mid, colors.weak);
  palette.setColor(QPalette::Shadow, colors.accent);
  palette.setColor(QPalette::BrightText, colors.accentText);
  for (const QPalette::ColorRole role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, colors.weak);
  return palette;
}

int gap(const QWidget* widget) {
  return std::max(4, lineHeight(widget) / 3);
}

int touchHeight(const QWidget* widget) {
  return std::max(30, lineHeight(widget) * 2);
}

int iconSize(const QWidget* widget) {
  return iconUnit * std::max(1, (lineHeight(widget) + iconUnit / 2) / iconUnit);
}

int scaled(const QWidget* widget, int pixels) {
  return pixels * std::max(narrowLine, lineHeight(widget)) / narrowLine;
}

void makeTouchable(QAbstractScrollArea* area) {
  const int width = gap(area);
  area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area->setStyleSheet(
      QString::fromLatin1(thinScrollBar).arg(width).arg(touchHeight(area)).arg(width / 2));
  QScroller::grabGesture(area->viewport(), QScroller::TouchGesture);
}

}  // namespace ulo

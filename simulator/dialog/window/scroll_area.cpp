#include "simulator/dialog/window/scroll_area.h"

#include <QMouseEvent>
#include <QScrollBar>

namespace vorlu::simulator {

namespace {

constexpr const char* styleSheetText = R"(
  QScrollArea { background: transparent; border: 2px solid transparent; border-radius: 8px; }
  QScrollArea:focus { border-color: rgba(0, 99, 225, 150); }
  QScrollBar:vertical { background: transparent; width: 11px; margin: 2px; }
  QScrollBar::handle:vertical { background: rgba(0, 0, 0, 90); border-radius: 3px; min-height: 24px; }
  QScrollBar::handle:vertical:hover { background: rgba(0, 0, 0, 130); }
  QScrollBar::add-line, QScrollBar::sub-line { height: 0; }
  QScrollBar::add-page, QScrollBar::sub-page { background: transparent; })";
constexpr int border = 2;  // of the style sheet

}  // namespace

ScrollArea::ScrollArea(QWidget* content, QWidget* parent) : QScrollArea(parent) {
  setStyleSheet(styleSheetText);
  viewport()->setAutoFillBackground(false);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setWidget(content);
  content->setAutoFillBackground(false);
}

void ScrollArea::place(const QRect& box, int contentHeight) {
  const bool tooHigh = contentHeight > box.height();
  // The border lies outside the box, so that the content stands where the window's other parts do.
  setGeometry(box.adjusted(-border, -border, border, border));
  setVerticalScrollBarPolicy(tooHigh ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
  const int bar = tooHigh ? verticalScrollBar()->sizeHint().width() : 0;
  widget()->resize(box.width() - bar, contentHeight);
  setFocusPolicy(tooHigh ? Qt::TabFocus : Qt::NoFocus);
}

bool ScrollArea::scrolls() const {
  return focusPolicy() != Qt::NoFocus;
}

void ScrollArea::mousePressEvent(QMouseEvent* event) {
  event->ignore();
}

}  // namespace vorlu::simulator

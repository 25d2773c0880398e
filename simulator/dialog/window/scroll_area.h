#pragma once

#include <QScrollArea>

namespace vorlu::simulator {

/// Content that scrolls up and down when it is higher than its place; only then does it take the keyboard. A mouse
/// press on it goes to the window, which may be dragged by it.
class ScrollArea : public QScrollArea {
 public:
  ScrollArea(QWidget* content, QWidget* parent);

  /// Places area and content; call it again when the content has changed.
  void place(const QRect& box, int contentHeight);
  bool scrolls() const;

 protected:
  void mousePressEvent(QMouseEvent* event) override;
};

}  // namespace vorlu::simulator

#pragma once

#include <QAbstractButton>

namespace vorlu::simulator {

/// A rounded button with a ring around it while it has the keyboard. Its widget is wider than the visible button by
/// `look::focusRing` on each side.
class PushButton : public QAbstractButton {
 public:
  enum class Kind { standard, other };
  PushButton(const QString& text, Kind kind, QWidget* parent);

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Kind kind_;
};

}  // namespace vorlu::simulator

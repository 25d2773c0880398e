#include "simulator/dialog/window/push_button.h"

#include <QLinearGradient>
#include <QPainter>
#include <algorithm>

#include "simulator/dialog/window/look.h"

namespace vorlu::simulator {

namespace {

constexpr int fontSize = 13;
constexpr int padding = 16;      // left and right of the text
constexpr int widestText = 240;  // longer ones are cut
constexpr double radius = 6.5;

struct Colours {
  QColor top, bottom, edge, text;
};

Colours coloursOf(bool isStandard, bool isEnabled, bool isDown) {
  if (!isEnabled)
    return {QColor(0xea, 0xea, 0xed), QColor(0xea, 0xea, 0xed), QColor(0, 0, 0, 22), QColor(0x77, 0x77, 0x7f)};
  if (!isStandard) {
    const QColor face = isDown ? QColor(0xe3, 0xe3, 0xe8) : QColor(Qt::white);
    return {face, face, QColor(0, 0, 0, 56), look::text};
  }
  if (isDown) return {look::accent.darker(118), look::accent.darker(118), look::accent.darker(130), Qt::white};
  return {look::accentLight, look::accent, look::accent.darker(112), Qt::white};
}

}  // namespace

PushButton::PushButton(const QString& text, Kind kind, QWidget* parent) : QAbstractButton(parent), kind_(kind) {
  setText(text);
  setToolTip(text.size() > 24 ? text : QString());
  setFont(look::font(fontSize, QFont::Medium));
  setFocusPolicy(Qt::StrongFocus);
  resize(sizeHint());
}

QSize PushButton::sizeHint() const {
  const int wanted = std::min(fontMetrics().horizontalAdvance(text()), widestText) + 2 * padding;
  return QSize(std::max(wanted, look::buttonWidth), look::buttonHeight) + 2 * QSize(look::focusRing, look::focusRing);
}

void PushButton::paintEvent(QPaintEvent*) {
  const Colours colours = coloursOf(kind_ == Kind::standard, isEnabled(), isDown());
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF face = QRectF(rect()).adjusted(look::focusRing, look::focusRing, -look::focusRing, -look::focusRing);
  if (hasFocus()) {
    QColor ring = look::accent;
    ring.setAlpha(105);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ring);
    painter.drawRoundedRect(rect(), radius + look::focusRing, radius + look::focusRing);
  }
  QLinearGradient fill(face.topLeft(), face.bottomLeft());
  fill.setColorAt(0, colours.top);
  fill.setColorAt(1, colours.bottom);
  painter.setPen(QPen(colours.edge, 1));
  painter.setBrush(fill);
  painter.drawRoundedRect(face.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
  painter.setPen(colours.text);
  painter.drawText(face, Qt::AlignCenter,
                   fontMetrics().elidedText(text(), Qt::ElideRight, static_cast<int>(face.width()) - 2 * padding + 2));
}

}  // namespace vorlu::simulator

#include "simulator/dialog/window/progress_bar.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "simulator/dialog/window/look.h"

namespace vorlu::simulator {

namespace {

constexpr int stepsToCross = 36;  // of an unknown progress
constexpr double segment = 0.3;   // its share of the bar

}  // namespace

ProgressBar::ProgressBar(QWidget* parent) : QWidget(parent) {}

void ProgressBar::setFraction(double fraction) {
  fraction_ = std::clamp(fraction, 0.0, 1.0);
  update();
}

void ProgressBar::turn() {
  ++turn_;
  update();
}

void ProgressBar::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  const QRectF bar(0, (height() - barHeight) / 2.0, width(), barHeight);
  QPainterPath track;
  track.addRoundedRect(bar, barHeight / 2.0, barHeight / 2.0);
  painter.fillPath(track, look::track);
  painter.setBrush(look::accent);
  QRectF done = bar;
  if (fraction_ >= 0) {
    done.setWidth(bar.width() * fraction_);
  } else {
    const double start = (turn_ % stepsToCross) * (1 + segment) / stepsToCross - segment;
    done.setLeft(bar.left() + bar.width() * start);
    done.setWidth(bar.width() * segment);
  }
  // A rounded piece that never leaves the track.
  QPainterPath piece;
  piece.addRoundedRect(done, barHeight / 2.0, barHeight / 2.0);
  painter.fillPath(piece.intersected(track), look::accent);
}

}  // namespace vorlu::simulator

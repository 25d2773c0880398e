#pragma once

#include <QWidget>

namespace vorlu::simulator {

/// A slim bar. Before its first value it shows that something is under way.
class ProgressBar : public QWidget {
 public:
  static constexpr int barHeight = 6;

  explicit ProgressBar(QWidget* parent);

  /// From 0 to 1.
  void setFraction(double fraction);
  bool isAnimated() const { return fraction_ < 0; }
  void turn();

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  double fraction_ = -1;  // negative: not known yet
  int turn_ = 0;
};

}  // namespace vorlu::simulator

#pragma once

#include <QImage>
#include <QWidget>
#include <vector>

#include "simulator/dialog/prompt.h"

namespace vorlu::simulator {

/// The rows of a list: icon, title, status text and sign.
class ListView : public QWidget {
 public:
  ListView(const std::vector<ListRow>& rows, QWidget* parent = nullptr);

  /// Height of all rows, each this high.
  static int heightOf(std::size_t rows, int rowHeight);
  std::size_t count() const { return rows_.size(); }
  void setRowHeight(int height) { rowHeight_ = height; }
  int contentHeight() const { return heightOf(rows_.size(), rowHeight_); }
  /// "TITLE: STATUS" changes the row of that title; a status that is no known word is shown as its text.
  void change(const QString& titleAndStatus);
  bool isAnimated() const;
  /// One step of the spinners.
  void turn();

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  struct Row {
    QString title, status, statusText;
    QImage icon;  // null without one
  };
  void paintRow(QPainter& painter, const Row& row, const QRect& box) const;

  std::vector<Row> rows_;
  int rowHeight_;
  int turn_ = 0;
};

}  // namespace vorlu::simulator

#include "simulator/dialog/window/list_view.h"

#include <QPainter>
#include <algorithm>

#include "simulator/dialog/window/drawn_icon.h"
#include "simulator/dialog/window/icon_file.h"
#include "simulator/dialog/window/look.h"

namespace vorlu::simulator {

namespace {

constexpr int padding = 12;  // at both ends of a row
constexpr int iconGap = 10;
constexpr int titleSize = 13;
constexpr int statusSize = 12;

bool isSign(const QString& status) {
  return QStringList{"wait", "success", "fail", "pending", "error"}.contains(status);
}

}  // namespace

ListView::ListView(const std::vector<ListRow>& rows, QWidget* parent) : QWidget(parent), rowHeight_(look::rowHeight) {
  for (const auto& row : rows) {
    const QString title = QString::fromStdString(row.title);
    const QString path = QString::fromStdString(row.icon);
    const int pixels = qRound(look::rowIcon * devicePixelRatioF());
    rows_.push_back({title, QString::fromStdString(row.status), QString::fromStdString(row.statusText),
                     path.isEmpty() ? QImage() : iconFor(path, title, pixels)});
  }
}

int ListView::heightOf(std::size_t rows, int rowHeight) {
  return static_cast<int>(rows) * rowHeight;
}

void ListView::change(const QString& titleAndStatus) {
  const auto colon = titleAndStatus.lastIndexOf(':');
  if (colon < 0) return;
  const QString title = titleAndStatus.left(colon).trimmed();
  const QString status = titleAndStatus.mid(colon + 1).trimmed();
  for (Row& row : rows_) {
    if (row.title.trimmed() != title) continue;
    (isSign(status) ? row.status : row.statusText) = status;
  }
  update();
}

bool ListView::isAnimated() const {
  return std::any_of(rows_.begin(), rows_.end(), [](const Row& row) { return row.status == "wait"; });
}

void ListView::turn() {
  ++turn_;
  update();
}

void ListView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const QRect box(0, static_cast<int>(i) * rowHeight_, width(), rowHeight_);
    if (i > 0) {
      painter.setPen(look::separator);
      painter.drawLine(box.left() + padding, box.top(), box.right() - padding, box.top());
    }
    paintRow(painter, rows_[i], box);
  }
}

void ListView::paintRow(QPainter& painter, const Row& row, const QRect& box) const {
  QRect rest = box.adjusted(padding, 0, -padding, 0);
  if (!row.icon.isNull()) {
    painter.drawImage(QRect(rest.left(), box.center().y() - look::rowIcon / 2 + 1, look::rowIcon, look::rowIcon),
                      row.icon);
    rest.setLeft(rest.left() + look::rowIcon + iconGap);
  }
  if (isSign(row.status)) {
    const QRect sign(rest.right() - look::rowSign, box.center().y() - look::rowSign / 2 + 1, look::rowSign,
                     look::rowSign);
    drawStatus(painter, sign, row.status, turn_);
    rest.setRight(sign.left() - iconGap);
  }
  painter.setFont(look::font(statusSize));
  const QString status = painter.fontMetrics().elidedText(row.statusText, Qt::ElideRight, rest.width() / 2);
  painter.setPen(look::secondaryText);
  painter.drawText(rest, Qt::AlignRight | Qt::AlignVCenter, status);
  rest.setRight(rest.right() - painter.fontMetrics().horizontalAdvance(status) - iconGap);
  painter.setFont(look::font(titleSize, QFont::Medium));
  painter.setPen(look::text);
  painter.drawText(rest, Qt::AlignLeft | Qt::AlignVCenter,
                   painter.fontMetrics().elidedText(row.title, Qt::ElideRight, rest.width()));
}

}  // namespace vorlu::simulator

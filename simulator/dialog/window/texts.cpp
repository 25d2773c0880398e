#include "simulator/dialog/window/texts.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QTextOption>
#include <cmath>

#include "simulator/dialog/window/look.h"
#include "simulator/dialog/window/message_text.h"

namespace vorlu::simulator {

namespace {

constexpr int mostTitleLines = 2;
constexpr double messageLineHeight = 118;  // percent

// The title's lines as they are shown.
QStringList brokenLines(const QString& text, const QFont& font, int width) {
  QTextLayout layout(text, font);
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout.setTextOption(option);
  layout.beginLayout();
  QStringList lines;
  for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(width);
    if (lines.size() + 1 == mostTitleLines) {
      lines << QFontMetrics(font).elidedText(text.mid(line.textStart()), Qt::ElideRight, width);
      break;
    }
    lines << text.mid(line.textStart(), line.textLength()).trimmed();
  }
  layout.endLayout();
  return lines;
}

}  // namespace

TitleView::TitleView(int fontSize, QWidget* parent) : QWidget(parent) {
  setFont(look::font(fontSize, QFont::DemiBold));
}

void TitleView::setText(const QString& text) {
  text_ = QString(text).replace("\\n", " ").simplified();
  setAccessibleName(text_);
  update();
}

int TitleView::heightFor(int width) const {
  return static_cast<int>(brokenLines(text_, font(), width).size()) * fontMetrics().lineSpacing();
}

void TitleView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setPen(look::text);
  const Qt::Alignment side = text_.isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft;
  QRect box(0, 0, width(), fontMetrics().lineSpacing());
  for (const QString& line : brokenLines(text_, font(), width())) {
    painter.drawText(box, static_cast<int>(side | Qt::AlignVCenter), line);
    box.translate(0, box.height());
  }
}

MessageView::MessageView(int fontSize) {
  document_.setDefaultFont(look::font(fontSize));
  document_.setDocumentMargin(0);
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  document_.setDefaultTextOption(option);
}

void MessageView::setMessage(const QString& message) {
  document_.setHtml(messageHtml(message));
  for (QTextBlock block = document_.begin(); block.isValid(); block = block.next()) {
    QTextCursor cursor(block);
    QTextBlockFormat format = block.blockFormat();
    format.setLineHeight(messageLineHeight, QTextBlockFormat::ProportionalHeight);
    cursor.setBlockFormat(format);
  }
  setAccessibleName(document_.toPlainText());
  update();
}

int MessageView::heightFor(int width) const {
  document_.setTextWidth(width);
  return static_cast<int>(std::ceil(document_.size().height()));
}

void MessageView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  document_.setTextWidth(width());
  QAbstractTextDocumentLayout::PaintContext context;
  context.palette.setColor(QPalette::Text, look::text);
  document_.documentLayout()->draw(&painter, context);
}

}  // namespace vorlu::simulator

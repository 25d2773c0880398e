#pragma once

#include <QTextDocument>
#include <QWidget>

namespace vorlu::simulator {

/// A title of one or two lines; what doesn't fit is cut with an ellipsis.
class TitleView : public QWidget {
 public:
  TitleView(int fontSize, QWidget* parent);

  void setText(const QString& text);
  int heightFor(int width) const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString text_;
};

/// A message with its paragraphs, as high as it needs.
class MessageView : public QWidget {
 public:
  explicit MessageView(int fontSize);

  void setMessage(const QString& message);
  bool isEmpty() const { return document_.isEmpty(); }
  int heightFor(int width) const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  mutable QTextDocument document_;  // laid out for the width that was asked for last
};

}  // namespace vorlu::simulator

#pragma once

#include <QImage>
#include <QWidget>
#include <optional>

#include "simulator/dialog/command.h"
#include "simulator/dialog/prompt.h"
#include "simulator/dialog/window/list_view.h"
#include "simulator/dialog/window/progress_bar.h"
#include "simulator/dialog/window/push_button.h"
#include "simulator/dialog/window/scroll_area.h"
#include "simulator/dialog/window/texts.h"

class QLabel;

namespace vorlu::simulator {

/// The window of one prompt. It has the size that the prompt asks for and finds room in it: text and list scroll, the
/// buttons always stay. Without a height it is as high as its content.
class PromptWindow : public QWidget {
 public:
  explicit PromptWindow(const Prompt& prompt);

  /// How the prompt has ended (see `ending`); nothing while it lasts.
  std::optional<int> ended() const { return ended_; }
  void end(int status);

  /// A line of the command file. "quit:" ends the prompt.
  void follow(const Command& command);
  /// Seconds that are left on the timer.
  void showTimeLeft(double seconds);
  /// One step of what moves.
  void animate();
  void comeForward();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void addButtons();
  void addTimer();
  void loadIcon();
  int contentHeight(int width) const;
  int textHeight(int width) const;
  int progressHeight() const;
  int footerHeight() const;
  int naturalListHeight() const;
  int listHeight(int room);
  QSize leastSize() const;
  void fit();
  void arrange();
  void arrangeFooter();
  void arrangeText(const QRect& box);
  void standAtPosition();
  bool pressKey(int key, Qt::KeyboardModifiers modifiers);
  bool scroll(int key);
  void setProgress(const QString& value);

  Prompt prompt_;
  std::optional<int> ended_;
  int iconSize_ = 0;  // 0 without one
  QImage icon_;
  QRect iconBox_;
  QRect listBox_;
  TitleView* title_;
  MessageView* message_;
  ScrollArea* messageArea_;
  ListView* list_ = nullptr;
  ScrollArea* listArea_ = nullptr;
  ProgressBar* progress_ = nullptr;
  QLabel* progressText_ = nullptr;
  ProgressBar* timerBar_ = nullptr;
  QLabel* timerText_ = nullptr;
  PushButton* button1_ = nullptr;
  PushButton* button2_ = nullptr;
  std::optional<QPoint> dragStart_;  // within the window
  bool wasDragged_ = false;
};

}  // namespace vorlu::simulator

#include "simulator/dialog/window/prompt_window.h"

#include <QBitmap>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QWindow>
#include <algorithm>
#include <cctype>
#include <cmath>

#include "simulator/dialog/window/drawn_icon.h"
#include "simulator/dialog/window/icon_file.h"
#include "simulator/dialog/window/look.h"
#include "simulator/dialog/window_library.h"

namespace vorlu::simulator {

namespace {

constexpr int textGap = 7;  // between title, message and progress
constexpr int progressTextHeight = 18;
constexpr int timerBarWidth = 150;
constexpr int screenMargin = 24;     // between a window in a corner and the screen's edge
constexpr int listEdge = 1;          // the line around the list
constexpr double headRise = 0.38;    // share of the spare room that stands above icon and text
constexpr double widestIcon = 0.35;  // share of the window's width
constexpr double leastRows = 1.6;    // of a list whose window is too small: the cut row says that it scrolls

// What a prompt that doesn't tell gets.
struct Defaults {
  int width, highest, iconSize, titleSize, messageSize;
};
constexpr Defaults full{600, 620, 80, 16, 13};
constexpr Defaults mini{480, 300, 60, 15, 12};
constexpr int leastHead = 60;  // height that icon and text have in the smallest window

int given(int value, int otherwise) {
  return value > 0 ? value : otherwise;
}

QString text(const std::string& utf8) {
  return QString::fromStdString(utf8);
}

QString clockText(double seconds) {
  const auto left = static_cast<long>(std::ceil(std::max(seconds, 0.0)));
  const QString tail =
      QString("%1:%2").arg(left / 60 % 60, left < 3600 ? 1 : 2, 10, QChar('0')).arg(left % 60, 2, 10, QChar('0'));
  return left < 3600 ? tail : QString("%1:%2").arg(left / 3600).arg(tail);
}

QLabel* smallLabel(QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setFont(look::font(12));
  QPalette palette;
  palette.setColor(QPalette::WindowText, look::secondaryText);
  label->setPalette(palette);
  return label;
}

}  // namespace

PromptWindow::PromptWindow(const Prompt& prompt) : prompt_(prompt) {
  const Defaults& defaults = prompt.mini ? mini : full;
  setWindowFlags(Qt::Window | Qt::FramelessWindowHint | (prompt.onTop ? Qt::WindowStaysOnTopHint : Qt::WindowType(0)));
  setWindowTitle(text(prompt.title));
  const int widest = static_cast<int>(given(prompt.width, defaults.width) * widestIcon);
  iconSize_ = prompt.icon.empty() ? 0 : std::min(given(prompt.iconSize, defaults.iconSize), widest);
  loadIcon();
  title_ = new TitleView(given(prompt.titleSize, defaults.titleSize), this);
  title_->setText(text(prompt.title));
  message_ = new MessageView(given(prompt.messageSize, defaults.messageSize));
  message_->setMessage(text(prompt.message));
  if (prompt.progressSteps) {
    progress_ = new ProgressBar(this);
    progressText_ = smallLabel(this);
  }
  addTimer();
  addButtons();
  // Created in the order of the Tab key: buttons first.
  messageArea_ = new ScrollArea(message_, this);
  if (!prompt.rows.empty()) {
    list_ = new ListView(prompt.rows);
    listArea_ = new ScrollArea(list_, this);
  }
  qApp->installEventFilter(this);
  fit();
  standAtPosition();
  if (button1_ != nullptr) button1_->setFocus();
  if (button1_ != nullptr && !button1_->isEnabled() && button2_ != nullptr) button2_->setFocus();
}

void PromptWindow::addButtons() {
  if (prompt_.button1) {
    button1_ = new PushButton(text(*prompt_.button1), PushButton::Kind::standard, this);
    button1_->setEnabled(!prompt_.button1Disabled);
    connect(button1_, &PushButton::clicked, this, [this] { end(ending::button1); });
  }
  if (prompt_.button2) {
    button2_ = new PushButton(text(*prompt_.button2), PushButton::Kind::other, this);
    connect(button2_, &PushButton::clicked, this, [this] { end(ending::button2); });
  }
}

void PromptWindow::addTimer() {
  if (prompt_.timer <= 0 || prompt_.hideTimerBar) return;
  timerBar_ = new ProgressBar(this);
  timerText_ = smallLabel(this);
  showTimeLeft(prompt_.timer);
}

void PromptWindow::loadIcon() {
  if (iconSize_ == 0) return;
  const int pixels = qRound(iconSize_ * devicePixelRatioF());
  icon_ = iconFor(text(prompt_.icon), "", pixels);
  const QString overlay = text(prompt_.overlayIcon);
  const int small = pixels * 2 / 5;
  if (overlay.isEmpty() || (readIcon(overlay, small).isNull() && !isKnownIcon(overlay))) return;
  QPainter painter(&icon_);
  painter.drawImage(pixels - small, pixels - small, iconFor(overlay, "", small));
}

void PromptWindow::end(int status) {
  if (!ended_) ended_ = status;
  QCoreApplication::exit(*ended_);
}

// --- size and place -------------------------------------------------------------------------------

int PromptWindow::progressHeight() const {
  return progress_ != nullptr ? textGap + ProgressBar::barHeight + 4 + progressTextHeight : 0;
}

int PromptWindow::textHeight(int width) const {
  const int message = message_->isEmpty() ? 0 : textGap + message_->heightFor(width);
  return title_->heightFor(width) + message + progressHeight();
}

int PromptWindow::footerHeight() const {
  return button1_ != nullptr || button2_ != nullptr || timerBar_ != nullptr ? look::gap + look::buttonHeight : 0;
}

int PromptWindow::contentHeight(int width) const {
  const int textLeft = iconSize_ > 0 ? iconSize_ + look::iconGap : 0;
  const int head = std::max(iconSize_, textHeight(width - 2 * look::sideMargin - textLeft));
  const int list = list_ != nullptr ? look::gap + naturalListHeight() : 0;
  return look::topMargin + head + list + footerHeight() + look::bottomMargin;
}

// The buttons and a little text are always seen.
QSize PromptWindow::leastSize() const {
  int width = 2 * look::sideMargin;
  for (const PushButton* button : {button1_, button2_}) width += button != nullptr ? button->width() : 0;
  return {width, look::topMargin + leastHead + footerHeight() + look::bottomMargin};
}

// Takes the size that was asked for, or that the content needs, and never more than the screen has.
void PromptWindow::fit() {
  const Defaults& defaults = prompt_.mini ? mini : full;
  const QSize most = screen()->availableSize() - QSize(2 * screenMargin, 2 * screenMargin);
  const QSize least = leastSize();
  const int wide = std::min(std::max(given(prompt_.width, defaults.width), least.width()), most.width());
  const int natural = std::min(contentHeight(wide), defaults.highest);
  setFixedSize(wide, std::min(std::max(given(prompt_.height, natural), least.height()), most.height()));
  QBitmap shape(size());
  shape.fill(Qt::color0);
  QPainter painter(&shape);
  painter.setBrush(Qt::color1);
  painter.setPen(Qt::NoPen);
  painter.drawRoundedRect(rect(), look::cornerRadius, look::cornerRadius);
  painter.end();
  setMask(shape);
  arrange();
}

int PromptWindow::naturalListHeight() const {
  return ListView::heightOf(list_->count(), look::rowHeight) + 2 * listEdge;
}

// The list takes what room there is: its rows grow a little, or it scrolls before the text has to.
int PromptWindow::listHeight(int room) {
  const int natural = naturalListHeight();
  const int rows = static_cast<int>(list_->count());
  list_->setRowHeight(std::clamp((room - 2 * listEdge) / rows, look::rowHeight, look::highestRow));
  if (natural <= room) return list_->contentHeight() + 2 * listEdge;
  return std::max(room, std::min(natural, static_cast<int>(leastRows * look::rowHeight)));
}

// From the bottom up: the buttons have their place, then the list, then the text. Spare room goes around the text.
void PromptWindow::arrange() {
  arrangeFooter();
  const int textLeft = look::sideMargin + (iconSize_ > 0 ? iconSize_ + look::iconGap : 0);
  const int textWidth = width() - look::sideMargin - textLeft;
  const int bottom = height() - look::bottomMargin - footerHeight();
  int headRoom = std::max(bottom - look::topMargin, 0);
  const int head = std::max(iconSize_, textHeight(textWidth));
  if (list_ != nullptr) {
    const int list = listHeight(headRoom - look::gap - head);
    headRoom = std::max(headRoom - look::gap - list, 0);
    listBox_ = QRect(look::sideMargin, bottom - list, width() - 2 * look::sideMargin, list);
    listArea_->place(listBox_.adjusted(listEdge, listEdge, -listEdge, -listEdge), list_->contentHeight());
  }
  const int rise = static_cast<int>(headRise * std::max(headRoom - head, 0));
  const int top = look::topMargin + rise;
  const int icon = std::min(iconSize_, headRoom);
  iconBox_ = QRect(look::sideMargin, top, icon, icon);
  arrangeText(QRect(textLeft, top, textWidth, std::min(head, headRoom)));
  update();
}

void PromptWindow::arrangeText(const QRect& box) {
  const int titleHeight = title_->heightFor(box.width());
  title_->setGeometry(box.left(), box.top(), box.width(), titleHeight);
  const int natural = message_->isEmpty() ? 0 : message_->heightFor(box.width());
  const int top = box.top() + titleHeight + textGap;
  const int shown = std::clamp(box.bottom() + 1 - top - progressHeight(), 0, natural);
  // A bar beside text that scrolls takes some of its width.
  const int needed = shown < natural ? message_->heightFor(box.width() - look::iconGap) : natural;
  messageArea_->setVisible(shown > 0);
  messageArea_->place(QRect(box.left(), top, box.width(), shown), needed);
  if (progress_ == nullptr) return;
  const int barTop = (natural > 0 ? top + shown : box.top() + titleHeight) + textGap;
  progress_->setGeometry(box.left(), barTop, box.width(), ProgressBar::barHeight);
  progressText_->setGeometry(box.left(), barTop + ProgressBar::barHeight + 4, box.width(), progressTextHeight);
}

void PromptWindow::arrangeFooter() {
  const int top = height() - look::bottomMargin - look::buttonHeight - look::focusRing;
  int right = width() - look::sideMargin + look::focusRing;
  for (PushButton* button : {button1_, button2_}) {
    if (button == nullptr) continue;
    button->move(right - button->width(), top);
    right -= button->width() - 2 * look::focusRing + look::buttonGap;
  }
  if (timerBar_ == nullptr) return;
  const int middle = height() - look::bottomMargin - look::buttonHeight / 2;
  const int room = right - look::buttonGap - look::sideMargin;
  const int barWidth = std::clamp(room - 70, 0, timerBarWidth);
  timerBar_->setGeometry(look::sideMargin, middle - 5, barWidth, 10);
  timerText_->setGeometry(look::sideMargin + barWidth + 10, middle - 10, 70, 20);
}

// "topleft", "right", "centre/centre" and so on; any other word is the centre.
void PromptWindow::standAtPosition() {
  const QRect area = screen()->availableGeometry();
  const QString word = text(prompt_.position).toLower();
  QPoint corner = area.center() - rect().center();
  if (word.contains("left")) corner.setX(area.left() + screenMargin);
  if (word.contains("right")) corner.setX(area.right() - width() - screenMargin);
  if (word.contains("top")) corner.setY(area.top() + screenMargin);
  if (word.contains("bottom")) corner.setY(area.bottom() - height() - screenMargin);
  move(corner);
}

// --- what changes ---------------------------------------------------------------------------------

void PromptWindow::follow(const Command& command) {
  using Kind = Command::Kind;
  const QString value = text(command.value);
  switch (command.kind) {
    case Kind::quit:
      return end(ending::quit);
    case Kind::progress:
      return setProgress(value.trimmed());
    case Kind::progressText:
      if (progressText_ != nullptr) progressText_->setText(value);
      return;
    case Kind::listItem:
      if (list_ != nullptr) list_->change(value);
      return;
    case Kind::title:
      title_->setText(value);
      setWindowTitle(value);
      break;
    case Kind::message:
      message_->setMessage(value);
      break;
    case Kind::icon:
      prompt_.icon = command.value;
      loadIcon();
      break;
    case Kind::unknown:
      return;
  }
  fit();
  if (!wasDragged_) standAtPosition();
}

void PromptWindow::setProgress(const QString& value) {
  if (progress_ == nullptr) return;
  if (value == "complete") return progress_->setFraction(1);
  bool isNumber = false;
  const double done = value.toDouble(&isNumber);
  if (isNumber) progress_->setFraction(done / std::max(prompt_.progressSteps.value_or(0), 1));
}

void PromptWindow::showTimeLeft(double seconds) {
  if (timerBar_ == nullptr) return;
  timerBar_->setFraction(seconds / prompt_.timer);
  timerText_->setText(clockText(seconds));
}

void PromptWindow::animate() {
  if (list_ != nullptr && list_->isAnimated()) list_->turn();
  if (progress_ != nullptr && progress_->isAnimated()) progress_->turn();
}

void PromptWindow::comeForward() {
  show();
  raise();
  activateWindow();
}

void PromptWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.fillRect(rect(), look::window);
  painter.setPen(QPen(look::outline, 1));
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), look::cornerRadius, look::cornerRadius);
  if (iconSize_ > 0) painter.drawImage(iconBox_, icon_);
  if (list_ == nullptr) return;
  painter.setPen(QPen(look::track, 1));
  painter.setBrush(Qt::white);
  painter.drawRoundedRect(QRectF(listBox_).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
}

// --- what the user does ---------------------------------------------------------------------------

bool PromptWindow::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress && watched->isWidgetType()) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (pressKey(key->key(), key->modifiers())) return true;
  }
  return QWidget::eventFilter(watched, event);
}

// Return presses button 1, unless the user has gone to the other with the Tab key; the space bar presses the one with
// the ring.
bool PromptWindow::pressKey(int key, Qt::KeyboardModifiers modifiers) {
  const bool isCommand = modifiers.testFlag(Qt::ControlModifier) || modifiers.testFlag(Qt::MetaModifier);
  if (isCommand) {
    if (key != std::toupper(static_cast<unsigned char>(prompt_.quitKey))) return false;
    end(ending::quit);
    return true;
  }
  if (key == Qt::Key_Return || key == Qt::Key_Enter) {
    PushButton* pressed = button2_ != nullptr && button2_->hasFocus() ? button2_ : button1_;
    if (pressed != nullptr) pressed->click();
    return true;
  }
  return scroll(key);
}

// The keys move what has the ring, or else what can be moved.
bool PromptWindow::scroll(int key) {
  ScrollArea* area = nullptr;
  for (ScrollArea* candidate : {listArea_, messageArea_}) {
    if (candidate == nullptr || !candidate->scrolls()) continue;
    if (area == nullptr || candidate->hasFocus()) area = candidate;
  }
  if (area == nullptr) return false;
  QScrollBar* bar = area->verticalScrollBar();
  const int page = std::max(area->height() - look::rowHeight, look::rowHeight);
  switch (key) {
    case Qt::Key_Up:
      bar->setValue(bar->value() - look::rowHeight);
      return true;
    case Qt::Key_Down:
      bar->setValue(bar->value() + look::rowHeight);
      return true;
    case Qt::Key_PageUp:
      bar->setValue(bar->value() - page);
      return true;
    case Qt::Key_PageDown:
      bar->setValue(bar->value() + page);
      return true;
    default:
      return false;
  }
}

void PromptWindow::closeEvent(QCloseEvent*) {
  end(ending::quit);
}

void PromptWindow::mousePressEvent(QMouseEvent* event) {
  if (!prompt_.moveable || event->button() != Qt::LeftButton) return;
  // On Wayland only the desktop can move a window.
  if (QGuiApplication::platformName() == "wayland") {
    windowHandle()->startSystemMove();
    return;
  }
  dragStart_ = event->globalPosition().toPoint() - pos();
}

void PromptWindow::mouseMoveEvent(QMouseEvent* event) {
  if (!dragStart_) return;
  wasDragged_ = true;
  move(event->globalPosition().toPoint() - *dragStart_);
}

void PromptWindow::mouseReleaseEvent(QMouseEvent*) {
  dragStart_.reset();
}

}  // namespace vorlu::simulator

// What the library with the window exports: shows one prompt and gives its exit status.

#include <signal.h>
#include <unistd.h>

#include <QApplication>
#include <QStyleFactory>
#include <QTimer>
#include <cstdlib>

#include "simulator/dialog/window/look.h"
#include "simulator/dialog/window/prompt_window.h"
#include "simulator/dialog/window_library.h"
#include "simulator/host/forward_request.h"
#include "simulator/host/host_clock.h"

namespace {

using namespace vorlu::simulator;

constexpr int tick = 50;          // milliseconds between two looks at the command file
constexpr int ticksPerClock = 4;  // between two looks at the Mac's clock

void exitWithoutDisplay(int) {
  _exit(ending::noDisplay);
}

// Qt aborts when no display answers.
void startQt(int& argc, char** argv, QApplication*& application) {
  QApplication::setDesktopSettingsAware(false);
  QApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
  const auto before = signal(SIGABRT, exitWithoutDisplay);
  application = new QApplication(argc, argv);
  signal(SIGABRT, before);
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  QApplication::setFont(look::font(13));
  QApplication::setQuitOnLastWindowClosed(false);
}

/// What the prompt's timer says, in the Mac's time.
class Timer {
 public:
  explicit Timer(double seconds) : end_(seconds > 0 ? HostClock::read().now() + seconds : 0) {}
  bool runs() const { return end_ > 0; }
  double left() const { return end_ - HostClock::read().now(); }

 private:
  double end_;
};

}  // namespace

extern "C" __attribute__((visibility("default"))) int vorluShowPrompt(const Prompt& prompt, CommandFile& commands) {
  int argc = 1;
  char name[] = "Dialog";
  char* argv[] = {name, nullptr};
  QApplication* application = nullptr;  // lives as long as the process: its threads outlast this function
  startQt(argc, argv, application);

  PromptWindow window(prompt);
  window.comeForward();
  listenForForwardRequests();

  const Timer timer(prompt.timer);
  int ticks = 0;
  QTimer pulse;
  QObject::connect(&pulse, &QTimer::timeout, &window, [&] {
    for (const auto& line : commands.newLines()) window.follow(parseCommand(line));
    window.animate();
    if (takeForwardRequest()) window.comeForward();
    if (!timer.runs() || ticks++ % ticksPerClock != 0) return;
    const double left = timer.left();
    window.showTimeLeft(left);
    if (left <= 0) window.end(ending::timerRanOut);
  });
  pulse.start(tick);
  QApplication::exec();
  window.hide();
  return window.ended().value_or(ending::quit);  // what the desktop ends is no answer
}

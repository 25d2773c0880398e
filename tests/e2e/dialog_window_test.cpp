#include <gtest/gtest.h>

#include "tests/e2e/simulated_mac.h"
#include "tests/support/temporary_folder.h"

namespace vorlu::e2e {
namespace {

// Handles Dialog's window on a display of its own as a person would, with pointer and keyboard. What isn't as it should
// be is printed.
const std::string person = R"sh(
folder=$1 dialog=$2 commands=$1/commands
trap '[[ $BASHPID != $$ ]] || kill $screen $(jobs -p) 2>/dev/null' EXIT
unset WAYLAND_DISPLAY QT_SCALE_FACTOR
exec 3< <(exec Xvfb -displayfd 1 -screen 0 1280x800x24 -fbdir "$folder" -noreset -nolisten tcp 2>/dev/null)
screen=$!
read -r -t 20 -u 3 number || echo "Xvfb doesn't start"
export DISPLAY=:$number
echo quit: >"$commands" # meant for a prompt of long ago
show() { # FLAG…
  "$dialog" --commandfile "$commands" "$@" 2>>"$folder/errors" &
  prompt=$!
  window=$(timeout 20 xdotool search --sync --onlyvisible --pid $prompt | tail -n 1)
  timeout 20 xdotool windowfocus --sync "$window" || echo "no window has the keyboard"
}
click() { # POINTS from the right edge to the middle of a button
  eval "$(xdotool getwindowgeometry --shell "$window")"
  xdotool mousemove $((X + WIDTH - $1)) $((Y + HEIGHT - 30)) click 1
}
key() { xdotool key "$@"; }
tell() { echo "$1" >>"$commands"; }
ends() { # NAME STATUS: how the prompt that is shown ends
  local alarm status
  { sleep 20; kill -KILL $prompt; } & alarm=$!
  wait $prompt; status=$?
  kill $alarm
  [[ $status == $2 ]] || echo "$1: status $status"
} 2>/dev/null
try() { # NAME STATUS ACTION FLAG…
  show "${@:4}"
  eval "$3"
  ends "$1" "$2"
}
)sh";

const std::string endings = R"sh(
two=(--title T --message M --button1text Yes --button2text No --quitkey u --ontop --moveable)
try 'button 1' 0 'click 62' "${two[@]}"
try 'button 2' 2 'click 156' "${two[@]}"
try Return 0 'key Return' "${two[@]}"
try 'Tab and the space bar' 2 'key Tab space' "${two[@]}"
try 'quit key' 10 'key u ctrl+u' "${two[@]}"
try 'quit key without a button' 10 'key super+u' --mini --quitkey u --title T --progress 9
try timer 4 : "${two[@]}" --timer 1
try 'timer without a bar' 4 : --mini --title T --timer 1 --hidetimerbar
try 'quit line' 10 'tell quit:' "${two[@]}"
try 'disabled button' 10 'click 62; key Return space; tell quit:' --title T --button1text Wait --button1disabled
try kill 143 'kill $prompt' "${two[@]}"
row() { printf '{"title" : "%s", "icon" : "%s", "status" : "pending", "statustext" : "Version: 2 "}' "$1" /none; }
list="{\"listitem\" : [$(row Slides),$(row 'Draw 🎨'),$(row "Mike's"),$(row 'The \"Pro\"'),$(row מכתבים)]}"
try 'five apps' 2 'key Down; click 156' "${two[@]}" --jsonstring "$list" --height 200
long=$(for ((i = 0; i < 60; ++i)); do printf '%s' '**שלום** <b>"world"</b> `$(id)` 🎉\n\n' 'wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwww'; done)
try 'long texts in a small window' 2 'click 156' "${two[@]}" --title "$long" --message "$long" --icon /none \
  --jsonstring "$list" --height 150 --width 300
try 'sizes that are none' 0 'click 62' "${two[@]}" --height -5 --width 0 --iconsize x --icon /none --jsonstring '[broken'
kill $screen
for DISPLAY in '' ":$number"; do
  "$dialog" "${two[@]}" --unknown value 2>>"$folder/errors" & prompt=$!
  wait $screen 2>/dev/null
  ends "without the display '$DISPLAY'" 20
done
grep -q 'ignored --unknown' "$folder/errors" || echo 'nothing is said of an unknown flag'
)sh";

// What was found to be wrong.
std::string complaintsOf(const std::string& script) {
  const test::TemporaryFolder folder;
  return runOnMachine({"bash", "-c", person + script, "person", folder.path(), builtFile("sim-dialog")}).output;
}

class DialogWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::string needed = "command -v Xvfb && command -v xdotool && ls " + builtFile("sim-dialog-window.so");
    const Outcome check = runOnMachine({"sh", "-c", needed});
    if (check.status == 0) return;
    if (std::getenv("CI") != nullptr) FAIL() << "Xvfb, xdotool or Qt 6 is missing: " << check.output;
    GTEST_SKIP() << "Xvfb, xdotool or Qt 6 is missing";
  }
};

TEST_F(DialogWindowTest, EachEndHasItsStatus) {
  EXPECT_EQ(complaintsOf(endings), "");
}

}  // namespace
}  // namespace vorlu::e2e

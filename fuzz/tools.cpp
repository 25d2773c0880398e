#include <algorithm>

#include "fuzz/agent.h"
#include "fuzz/target.h"
#include "vorlu/detection/catalog_script.h"
#include "vorlu/install/disk_image.h"
#include "vorlu/install/installer_package.h"
#include "vorlu/install/network_quality.h"
#include "vorlu/install/verification.h"
#include "vorlu/state/paths.h"
#include "vorlu/state/process_table.h"

namespace vorlu::fuzz {
namespace {

FuzzedMac& mac() {
  return FuzzedMac::shared();
}

Vorlu& freshWith(const std::string& output) {
  Vorlu& vorlu = mac().fresh();
  mac().processes.output = output;
  return vorlu;
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

void expectLines() {
  for (const std::string& line : mac().systemLog.lines())
    expect(!contains(line, "\n") && !contains(line, "\r"), "a message is one line", line);
}

void readHdiutil(const std::string& output) {
  Vorlu& vorlu = freshWith(output);
  const bool mounted = mountImage(vorlu, "/private/tmp/a.dmg", false);
  const std::string& point = vorlu.progress.mountPoint;
  expect(mounted == !point.empty(), "what is mounted has a place", output, point);
  if (!mounted) return expectLines();
  expect(point.starts_with("/Volumes/") && point.size() > 9, "a volume's path", output, point);
  expect(!contains(point, "\n") && contains(output, point.substr(9)), "the path stands in the output", output, point);
  expectLines();
}

void readInstaller(const std::string& output, std::size_t pieceSize, int status) {
  std::vector<std::string> messages[2];
  for (const bool pieces : {false, true}) {
    Vorlu& vorlu = freshWith(output);
    mac().processes.status = status;
    if (pieces) mac().processes.pieceSize = pieceSize;
    const bool installed = installPackage(vorlu, "/private/tmp/a.pkg", "", false, true);
    expect(installed == (status == 0), "the status decides, not the text", output);
    expect(vorlu.progress.installProgress == 20, "the bar ends where it should", output);
    expectLines();
    messages[pieces ? 1 : 0] = mac().systemLog.lines();
  }
  expect(messages[0] == messages[1], "the pieces in which it arrives change nothing", output);
}

void readPkgutil(const std::string& output) {
  const std::string signature = readPackageSignature(freshWith(output), "/private/tmp/a.pkg");
  const bool named =
      contains(output, "Developer ID Installer: ") || contains(output, "3rd Party Mac Developer Install");
  expect(named || signature == "Unknown" || signature == "Error: App is not signed", "no name without its marker",
         output, signature);
  expectLines();
}

void readCodesign(const std::string& output) {
  Vorlu& vorlu = freshWith(output);
  const std::string signature = readCodeSignature(vorlu, "/private/tmp/a.app");
  const bool named = output.starts_with("Authority=") || contains(output, "Authority=");
  expect(named || signature == "Unknown" || signature == "Error: App is not signed", "no name without its marker",
         output, signature);
  expect(!matchesExpectedSignature(vorlu, signature), "nobody is expected, nobody passes", output, signature);
  expect(contains(trimmed(signature), "\n") == false, "a name is one line", output, signature);
  expectLines();
}

void readPs(const std::string& output) {
  Vorlu& vorlu = freshWith(output);
  const auto table = readProcessTable(vorlu);
  expect(table.ok(), "the table can be read");
  const auto lines = static_cast<std::size_t>(std::count(output.begin(), output.end(), '\n')) + 1;
  expect(table->rows.size() <= lines, "a row is a line", output);
  for (const ProcessRow& row : table->rows) {
    expect(row.pid >= 0 && row.parent >= 0 && row.age >= 0, "numbers have no sign", output);
    expect(!row.program.empty() && contains(output, row.program), "the program stands in the output", output,
           row.program);
    expect(table->lineOf(row.pid).size() <= 1000, "a line of parents ends", output);
    table->descends(row.pid, row.parent);
  }
  const auto commands = readCommandLines(vorlu);
  for (const CommandLine& line : *commands) expect(line.pid >= 0, "numbers have no sign", output);
  if (const auto age = processAge(vorlu, 1)) expect(*age >= 0, "nobody is younger than nothing", output);
}

void readNetworkQuality(const std::string& output) {
  Vorlu& vorlu = freshWith(output);
  const std::string capacity = measureNetworkQuality(vorlu);
  expect(contains(output, capacity) && !contains(capacity, "\n"), "the capacity stands in the output", output,
         capacity);
  mac().write(paths::networkQuality, output);
  const int speed = networkSpeed(vorlu);
  expect(speed >= 1 && speed <= 1'000'000, "a speed to divide by", output);
}

}  // namespace

/// What the Mac's programs print. The first bytes choose the program, its status, and the pieces of its output.
FUZZ_TARGET(tools) {
  Input in(input);
  const unsigned tool = in.byte();
  const unsigned how = in.byte();
  const std::string output = in.rest();
  switch (tool % 6) {
    case 0:
      return readHdiutil(output);
    case 1:
      return readInstaller(output, how / 2 + 1, how % 2);
    case 2:
      return readPkgutil(output);
    case 3:
      return readCodesign(output);
    case 4:
      return readPs(output);
    default:
      return readNetworkQuality(output);
  }
}

}  // namespace vorlu::fuzz

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "vorlu/platform/platform.h"
#include "vorlu/state/record.h"

namespace vorlu {

struct Vorlu;

/// Run/runData.plist: what one run tells the next. Times are whole seconds since the Unix epoch.
struct RunDataFile {
  std::optional<std::string> DeferCount;  ///< deferrals left as decimal text, or "N/A"
  std::optional<std::int64_t> LastRun;
  std::optional<bool> UserDeferred;
  std::optional<std::int64_t> LastCache;
  std::optional<std::int64_t> LastKeyPrompt;
  std::optional<std::int64_t> NextUpdateAttempt;
  std::optional<std::string> CurrentRunType;  ///< the flow in progress, "N/A" between runs
  std::optional<std::int64_t> LastIconCheck;
  std::optional<std::string> LastCompliant;  ///< a date in the form fullStamp, or "N/A"
  std::optional<std::int64_t> LastReport;
  std::optional<std::string> LastUser;
  std::optional<std::int64_t> SecretsTimestamp;
  std::optional<std::int64_t> LastServerTimestamp;
  std::optional<std::int64_t> ServerCallCount;
  std::optional<std::int64_t> LastServerReset;
  static constexpr auto fields() {
    using R = RunDataFile;
    return std::array{field<&R::DeferCount>("DeferCount"),
                      field<&R::LastRun>("LastRun"),
                      field<&R::UserDeferred>("UserDeferred"),
                      field<&R::LastCache>("LastCache"),
                      field<&R::LastKeyPrompt>("LastKeyPrompt"),
                      field<&R::NextUpdateAttempt>("NextUpdateAttempt"),
                      field<&R::CurrentRunType>("CurrentRunType"),
                      field<&R::LastIconCheck>("LastIconCheck"),
                      field<&R::LastCompliant>("LastCompliant"),
                      field<&R::LastReport>("LastReport"),
                      field<&R::LastUser>("LastUser"),
                      field<&R::SecretsTimestamp>("SecretsTimestamp"),
                      field<&R::LastServerTimestamp>("LastServerTimestamp"),
                      field<&R::ServerCallCount>("ServerCallCount"),
                      field<&R::LastServerReset>("LastServerReset")};
  }
};

/// What `updateRunData` changes.
enum class RunDataSelector {
  deferralUsed = 0,
  deferralNotApplicable = 1,
  resetDeferralsAndRun = 2,
  resetDeferrals = 3,
  lastCache = 4,
  lastKeyPrompt = 5,
  nextUpdateAttempt = 6,
  currentRunType = 7,
  lastIconCheck = 8,
  lastCompliant = 9,
  lastReport = 10,
  lastUser = 11,
  secretsTimestamp = 12,
  lastServerTimestamp = 13,
  serverCallCount = 17,
  lastServerReset = 18,
};

/// The file as it stands now, or why it can't be read or decoded.
Result<RunDataFile> loadRunData(FileManager& files);

/// Values shared with `updateRunData`, and the keys that this process has read.
class RunData {
 public:
  explicit RunData(FileManager& files) : files_(files) {}

  std::int64_t now = 0;  ///< seconds since the epoch; refreshed by each update
  std::string deferralLimitText;
  std::string currentRunType = "N/A";
  std::string lastCompliantText = "N/A";
  std::int64_t serverCallCount = 0;
  /// Deferrals left: DeferCount as first read, then what updates make of it. Nothing when it is no number.
  std::optional<std::int64_t>& deferCountRemaining();

  /// A key as this process first read it: the file is decoded at the first question and the value kept, whatever is
  /// written later. An unreadable file or absent key gives 0, false, or "N/A".
  std::int64_t kept(std::optional<std::int64_t> RunDataFile::*key) { return kept(key, integers_, std::int64_t{0}); }
  bool kept(std::optional<bool> RunDataFile::*key) { return kept(key, booleans_, false); }
  std::string kept(std::optional<std::string> RunDataFile::*key) { return kept(key, texts_, std::string("N/A")); }

 private:
  template <class T>
  using Kept = std::vector<std::pair<std::optional<T> RunDataFile::*, T>>;
  template <class T>
  T kept(std::optional<T> RunDataFile::*key, Kept<T>& values, const T& fallback) {
    for (const auto& [known, value] : values) {
      if (known == key) return value;
    }
    const Result<RunDataFile> file = loadRunData(files_);
    T value = file && (*file).*key ? *((*file).*key) : fallback;
    values.emplace_back(key, value);
    return value;
  }

  FileManager& files_;
  Kept<std::int64_t> integers_;
  Kept<bool> booleans_;
  Kept<std::string> texts_;
  std::optional<std::optional<std::int64_t>> deferCountRemaining_;
};

/// A decimal integer with an optional sign; nothing for any other text.
std::optional<std::int64_t> parseCount(const std::string& text);

/// Changes the keys of one selector in the file, each with an atomic write of the whole file. A file that can't be
/// loaded is logged and left alone; a failed write is logged and the next key tried. Creates a missing file first,
/// which may end the run.
void updateRunData(Vorlu& vorlu, RunDataSelector selector);

/// Creates the run directory and the file when they are missing. What can't be created is logged, and the line for
/// Jamf Pro given back.
std::optional<std::string> createRunData(Vorlu& vorlu);

/// The same. Ends the run with 1 when they can't be created.
void ensureRunData(Vorlu& vorlu);

}  // namespace vorlu

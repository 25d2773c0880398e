#include "vorlu/platform/linux/icu_calendar.h"

#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <map>
#include <mutex>
#include <stdexcept>

namespace vorlu {
namespace {

constexpr double millisecondsPerSecond = 1000;

const icu::Locale& posixLocale() {
  static const icu::Locale locale("en", "US", "POSIX");
  return locale;
}

std::unique_ptr<icu::TimeZone> zoneNamed(const std::string& name) {
  return std::unique_ptr<icu::TimeZone>(name.empty()
                                            ? icu::TimeZone::detectHostTimeZone()
                                            : icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(name)));
}

void require(UErrorCode status) {
  if (U_FAILURE(status)) throw std::runtime_error(std::string("Calendar: ") + u_errorName(status));
}

}  // namespace

struct IcuCalendar::State {
  std::mutex mutex;
  std::map<std::string, std::unique_ptr<icu::SimpleDateFormat>, std::less<>> formatters;  ///< by pattern
  std::map<Zone, std::unique_ptr<icu::GregorianCalendar>> calendars;

  icu::SimpleDateFormat& formatter(std::string_view pattern, const std::string& localZone) {
    const auto known = formatters.find(pattern);
    if (known != formatters.end()) return *known->second;
    UErrorCode status = U_ZERO_ERROR;
    auto made = std::make_unique<icu::SimpleDateFormat>(
        icu::UnicodeString::fromUTF8(icu::StringPiece(pattern.data(), static_cast<int>(pattern.size()))), posixLocale(),
        status);
    require(status);
    made->adoptTimeZone(zoneNamed(localZone).release());
    return *(formatters[std::string(pattern)] = std::move(made));
  }

  icu::GregorianCalendar& calendar(Zone zone, const std::string& localZone) {
    auto& known = calendars[zone];
    if (!known) {
      UErrorCode status = U_ZERO_ERROR;
      auto timeZone = zoneNamed(zone == Zone::london ? "Europe/London" : localZone);
      known = std::make_unique<icu::GregorianCalendar>(timeZone.release(), posixLocale(), status);
      require(status);
      known->setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
      known->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
    }
    return *known;
  }
};

IcuCalendar::IcuCalendar(std::string localZone) : localZone_(std::move(localZone)), state_(std::make_unique<State>()) {}

IcuCalendar::~IcuCalendar() = default;

std::string IcuCalendar::format(Seconds when, std::string_view pattern) {
  const std::scoped_lock lock(state_->mutex);
  icu::UnicodeString text;
  state_->formatter(pattern, localZone_).format(when * millisecondsPerSecond, text);
  std::string utf8;
  return text.toUTF8String(utf8);
}

CalendarFields IcuCalendar::fields(Seconds when, Zone zone) {
  const std::scoped_lock lock(state_->mutex);
  icu::GregorianCalendar& calendar = state_->calendar(zone, localZone_);
  UErrorCode status = U_ZERO_ERROR;
  calendar.setTime(when * millisecondsPerSecond, status);
  CalendarFields fields;
  fields.year = calendar.get(UCAL_YEAR, status);
  fields.month = calendar.get(UCAL_MONTH, status) + 1;  // ICU counts months from 0
  fields.day = calendar.get(UCAL_DATE, status);
  fields.hour = calendar.get(UCAL_HOUR_OF_DAY, status);
  fields.minute = calendar.get(UCAL_MINUTE, status);
  fields.second = calendar.get(UCAL_SECOND, status);
  fields.weekday = calendar.get(UCAL_DAY_OF_WEEK, status);
  require(status);
  return fields;
}

std::optional<Seconds> IcuCalendar::hourOfDay(Seconds when, int hour, Zone zone) {
  if (hour < 0 || hour > 24) return std::nullopt;
  const CalendarFields day = fields(when, zone);
  const std::scoped_lock lock(state_->mutex);
  icu::GregorianCalendar& calendar = state_->calendar(zone, localZone_);
  UErrorCode status = U_ZERO_ERROR;
  calendar.clear();
  calendar.set(day.year, day.month - 1, day.day + hour / 24, hour % 24, 0, 0);
  const UDate moment = calendar.getTime(status);
  if (U_FAILURE(status)) return std::nullopt;
  return moment / millisecondsPerSecond;
}

}  // namespace vorlu

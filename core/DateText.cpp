#include "core/DateText.h"

namespace {
const char* const kDays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
const char* const kMonths[] = {"January", "February", "March",     "April",   "May",      "June",
                               "July",    "August",   "September", "October", "November", "December"};

std::tm LocalTime(std::time_t when) {
  std::tm t{};
  localtime_r(&when, &t);
  return t;
}
}  // namespace

CString ShortDateText(std::time_t when) {
  const std::tm t = LocalTime(when);
  return CString::Formatted(u"%d/%d/%d", t.tm_mon + 1, t.tm_mday, t.tm_year + 1900);
}

CString LongDateText(std::time_t when) {
  const std::tm t = LocalTime(when);
  return CString::Formatted(u"%s, %s %d, %d", kDays[t.tm_wday % 7], kMonths[t.tm_mon % 12], t.tm_mday,
                            t.tm_year + 1900);
}

CString TodayShortDateText() { return ShortDateText(std::time(nullptr)); }
CString TodayLongDateText() { return LongDateText(std::time(nullptr)); }

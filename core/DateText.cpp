#include "core/DateText.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <cstring>
#include <string>

#include "platform/mfc/Utf.h"

namespace {

const char* const kDays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
const char* const kMonths[] = {"January", "February", "March",     "April",   "May",      "June",
                               "July",    "August",   "September", "October", "November", "December"};

std::tm LocalTime(std::time_t when) {
  std::tm t{};
  localtime_r(&when, &t);
  return t;
}

// The date conventions of the process's environment (LC_ALL, LC_TIME, LANG), read afresh for
// each text; null for the C locale, or when the named locale is not installed.
class TimeLocale {
public:
  TimeLocale() {
    m_locale = newlocale(LC_TIME_MASK | LC_CTYPE_MASK, "", static_cast<locale_t>(nullptr));
    if (m_locale && IsC(m_locale)) {
      freelocale(m_locale);
      m_locale = nullptr;
    }
  }
  ~TimeLocale() {
    if (m_locale) freelocale(m_locale);
  }
  TimeLocale(const TimeLocale&) = delete;
  TimeLocale& operator=(const TimeLocale&) = delete;

  bool IsCLocale() const { return m_locale == nullptr; }
  std::string Info(nl_item item) const { return nl_langinfo_l(item, m_locale); }
  // strftime in this locale, as UTF-16.
  CString Format(const std::string& format, const std::tm& t) const {
    char buf[512];
    const size_t n = strftime_l(buf, sizeof buf, format.c_str(), &t, m_locale);
    return Decode(std::string(buf, n));
  }

private:
  static bool IsC(locale_t loc) {
    // The C and POSIX locales name their months in English and write dates as %m/%d/%y.
    return std::strcmp(nl_langinfo_l(D_FMT, loc), "%m/%d/%y") == 0 &&
           std::strcmp(nl_langinfo_l(MON_1, loc), "January") == 0;
  }
  CString Decode(const std::string& bytes) const {
    const std::string codeset = nl_langinfo_l(CODESET, m_locale);
    if (codeset == "UTF-8" || codeset == "ANSI_X3.4-1968") return CString(Utf16FromUtf8(bytes));
    iconv_t cd = iconv_open("UTF-8", codeset.c_str());
    if (cd == reinterpret_cast<iconv_t>(-1)) return CString(Utf16FromUtf8(bytes));
    std::string out(bytes.size() * 4 + 4, '\0');
    char* in = const_cast<char*>(bytes.data());
    size_t inLeft = bytes.size(), outLeft = out.size();
    char* at = out.data();
    const size_t done = iconv(cd, &in, &inLeft, &at, &outLeft);
    iconv_close(cd);
    if (done == static_cast<size_t>(-1)) return CString(Utf16FromUtf8(bytes));
    out.resize(out.size() - outLeft);
    return CString(Utf16FromUtf8(out));
  }
  locale_t m_locale = nullptr;
};

// Where the locale's short form puts the year, the month and the day.
enum class Order { MonthFirst, DayFirst, YearFirst };
Order OrderOf(const std::string& shortFormat) {
  for (size_t i = 0; i + 1 < shortFormat.size(); ++i) {
    if (shortFormat[i] != '%') continue;
    switch (shortFormat[i + 1]) {
      case 'm': case 'b': case 'B': case 'h': return Order::MonthFirst;
      case 'd': case 'e': return Order::DayFirst;
      case 'Y': case 'y': case 'C': case 'F': return Order::YearFirst;
      default: ++i;
    }
  }
  return Order::MonthFirst;
}

}  // namespace

CString ShortDateText(std::time_t when) {
  const std::tm t = LocalTime(when);
  const TimeLocale locale;
  if (locale.IsCLocale()) return CString::Formatted(u"%d/%d/%d", t.tm_mon + 1, t.tm_mday, t.tm_year + 1900);
  return locale.Format(locale.Info(D_FMT), t);
}

CString LongDateText(std::time_t when) {
  const std::tm t = LocalTime(when);
  const TimeLocale locale;
  if (locale.IsCLocale())
    return CString::Formatted(u"%s, %s %d, %d", kDays[t.tm_wday % 7], kMonths[t.tm_mon % 12], t.tm_mday,
                              t.tm_year + 1900);
  // The weekday and the month by name, in the order of the locale's short form; a day
  // written "23." there is written so here too.
  const std::string shortFormat = locale.Info(D_FMT);
  switch (OrderOf(shortFormat)) {
    case Order::MonthFirst: return locale.Format("%A, %B %-d, %Y", t);
    case Order::DayFirst:
      return locale.Format(shortFormat.find('.') != std::string::npos ? "%A, %-d. %B %Y" : "%A, %-d %B %Y", t);
    case Order::YearFirst: return locale.Format(shortFormat + " %A", t);
  }
  return CString();
}

CString TodayShortDateText() { return ShortDateText(std::time(nullptr)); }
CString TodayLongDateText() { return LongDateText(std::time(nullptr)); }

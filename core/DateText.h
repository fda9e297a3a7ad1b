#pragma once
// A date as the user's locale writes it, the locale being the process's environment (LC_ALL,
// LC_TIME, LANG): the short form is the locale's date format (de_DE: 23.11.2026), the long
// form the weekday, the day, the month by name and the year in the short form's order (de_DE:
// Montag, 23. November 2026). In the C locale, or with a locale that is not installed: 11/23/2026
// and Monday, November 23, 2026.
#include <ctime>

#include "platform/mfc/CString.h"

CString ShortDateText(std::time_t when);
CString LongDateText(std::time_t when);
CString TodayShortDateText();
CString TodayLongDateText();

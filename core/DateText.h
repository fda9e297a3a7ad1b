#pragma once
// Today's date as the user's locale writes it: the short form (11/23/2026) and the long
// form (Monday, November 23, 2026).
#include <ctime>

#include "platform/mfc/CString.h"

CString ShortDateText(std::time_t when);
CString LongDateText(std::time_t when);
CString TodayShortDateText();
CString TodayLongDateText();

#pragma once
#include <ctime>

#include "platform/mfc/CString.h"

// The last modification time of a file in local time, as "Jan 02 02:03:55 1980"
// (English month, day, time, year: 20 characters). Empty for an empty path or a file that
// cannot be read.
CString FileTimeText(const CString& path);
// The same form for a given time.
CString TimeText(std::time_t when);

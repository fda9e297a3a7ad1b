#pragma once
// One image as a dialog offers it: its name (possibly with a suffix in brackets) and
// whether it is ticked.
#include <vector>

#include "platform/mfc/CString.h"

struct ImageChoice {
  CString name;
  int selected = 0;
};

using ImageChoiceArray = std::vector<ImageChoice>;

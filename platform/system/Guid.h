#pragma once
#include "platform/mfc/CString.h"

// A new random GUID in registry form with its braces, upper case:
// {0F3C2A5B-1D4E-4A6B-9C8D-7E6F5A4B3C2D}. Empty when no random source answered.
CString NewGuidString();

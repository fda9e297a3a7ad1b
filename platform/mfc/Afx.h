#pragma once
// The framework layer in one include.
#include "platform/mfc/AfxTypes.h"
#include "platform/mfc/Exceptions.h"
#include "platform/mfc/CString.h"
#include "platform/mfc/CObject.h"
#include "platform/mfc/CStringList.h"
#include "platform/mfc/CMapStringToString.h"
#include "platform/mfc/CFile.h"
#include "platform/mfc/CArchive.h"

#include "platform/mfc/CObject.h"

void CObject::Serialize(CArchive&) {}

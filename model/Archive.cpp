#include "model/Archive.h"

int g_archiveVersion = kNewestArchiveVersion;
int g_loadedVersion = 0;

#include "core/RunFlags.h"

int g_batchCancelState = 0;
int g_progressThreadEnded = 1;

#pragma once
// Process-wide flags shared between a report run and its progress box.

// 1 once the user has confirmed a cancel in the progress box; a run sets it to 0 after Word
// has started and polls it at each section boundary.
extern int g_cancelRequested;
// 0: a single report. 1: a run of several load-case reports. 2: the user stopped them all.
extern int g_batchCancelState;
// 0 while a progress box's worker exists, 1 once it has ended.
extern int g_progressThreadEnded;

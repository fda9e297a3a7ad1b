#pragma once
// Process-wide flags shared between a batch of report runs and its progress boxes. (A single
// run's cancel flag is the run's own: CZPReport::m_cancelRequested.)

// 0: a single report. 1: a run of several load-case reports. 2: the user stopped them all.
extern int g_batchCancelState;
// 0 while a progress box's worker exists, 1 once it has ended.
extern int g_progressThreadEnded;

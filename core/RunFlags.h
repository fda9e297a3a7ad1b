#pragma once
// What the report runs of one manager share with the progress boxes they open: the front end
// that shows the boxes, and the state of a batch of load-case reports, which a box's stop-all
// button sets from the box's own thread.
#include <atomic>

class COVReportManager;
class IRunBoxFrontEnd;

enum BatchCancelState {
  kBatchNone = 0,     // a single report
  kBatchRunning = 1,  // several load-case reports, one after the other: the boxes offer to stop them all
  kBatchStopAll = 2,  // the user stopped them all: no further report of the batch starts
};

class CZPRunFlags {
public:
  std::atomic<int> m_batchCancelState{kBatchNone};
  // Shows the boxes of the runs (not owned; null: boxes are kept, but nobody sees them).
  std::atomic<IRunBoxFrontEnd*> m_frontEnd{nullptr};
};

// The flags of the manager that runs a report (a CZPReportManager); null for any other.
CZPRunFlags* RunFlagsOf(COVReportManager* manager);

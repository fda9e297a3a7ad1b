#pragma once
// The versions of the archive encoding (formats file and report archive).
//
// A store always writes the archive version of the options object (the host's, given to
// GetZPReportOptionsObject) and the newest layout. A load records the version it read in the
// archive (CArchive::SetArchiveVersion), and every version test of a load asks that archive.

// Items that a load reads only from archives of at least these versions.
constexpr int kArchiveVersionResultExtra = 850020;   // m_resultExtra of a study-results section
constexpr int kArchiveVersionOutOfDate = 850020;     // m_outOfDate of a report
constexpr int kArchiveVersionLoadCase = 890013;      // load-case data of a report
constexpr int kArchiveVersionHeaderChoice = 890108;  // m_headerChoice of the header info
// The newest layout; an options object writes it unless the host gives another version.
constexpr int kNewestArchiveVersion = 890108;

#pragma once
// The versions of the archive encoding (formats file and report archive).
//
// A store always writes g_archiveVersion and the newest layout. A load sets g_loadedVersion
// from the stream, and every version test of a load reads g_loadedVersion.

// The version of the archives of this build; the host gives it to GetZPReportOptionsObject.
extern int g_archiveVersion;
// The version of the archive being read; 0 until one was read.
extern int g_loadedVersion;

// Items that a load reads only from archives of at least these versions.
constexpr int kArchiveVersionResultExtra = 850020;   // m_resultExtra of a study-results section
constexpr int kArchiveVersionOutOfDate = 850020;     // m_outOfDate of a report
constexpr int kArchiveVersionLoadCase = 890013;      // load-case data of a report
constexpr int kArchiveVersionHeaderChoice = 890108;  // m_headerChoice of the header info
// The newest layout; g_archiveVersion starts with it until the host sets its own.
constexpr int kNewestArchiveVersion = 890108;

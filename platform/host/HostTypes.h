#pragma once
// Small declarations shared by the host's headers.
#include <cstdint>

// The options object of the report generator, defined by the report model; the host only
// keeps a pointer to it.
class COVReportOptions;

class zphStudy;
class CMaterial;
class LBCManager;
class CSpecialLoads;
class ZpLoadCaseManager;
class CStudyItem;
class CReportMgrItem;
class CzpPostDlgParam;
class OrvOptSession_c;
class HostServices;

// GetBodiesInformationFromTheModel reports the plies of at most this many composite bodies.
constexpr int kMaxCompositeBodies = 50;

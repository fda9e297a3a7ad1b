#pragma once
// The functions that libzpreport.so exports, as a program that loads it with dlopen() sees
// them. Everything else of the library is reached through the virtual operations of the
// objects these functions make.
#include <cstdint>

class zphStudy;
class COVReportManager;
class COVReportOptions;
class COVReport;
class IRunBoxFrontEnd;

extern "C" {

// Makes a report manager for `study` (null for a design study) and stores it in *result;
// the caller owns it. Returns 1.
using GetZPReportManagerObjectFn = int (*)(zphStudy* study, COVReportManager** result);
// Loads the language table `resourceLibrary` (null or empty: the built-in English texts),
// sets the archive version, makes the options object (which reads the formats file) and
// stores it in *result; the caller owns it. Returns 1.
using GetZPReportOptionsObjectFn = int (*)(const char16_t* resourceLibrary, unsigned version,
                                           COVReportOptions** result);

// Shows the progress boxes of the reports that `manager` runs from now on on `frontEnd` (not
// owned; null: nobody sees them). See ui/RunBoxFrontEnd.h for what a front end is told and
// how it cancels a run. Optional for the loader.
using ZpSetRunBoxFrontEndFn = void (*)(COVReportManager* manager, IRunBoxFrontEnd* frontEnd);

// Puts into the format that new reports of `studyType` start from what a user chooses in
// the report dialog for one section: whether it is included, and when `text` is not null,
// the description (kind 0) or the comment, switched on (any other kind). For a program that
// makes reports without the dialog. Returns 1; 2 when the text was longer than the dialog
// takes and was cut to that length (kZpDescriptionLimit, kZpCommentLimit UTF-16 units); 0 when
// that format has no such section. Optional for the loader.
enum { kZpDescriptionLimit = 500, kZpCommentLimit = 1000 };
using ZpSetSectionChoiceFn = int (*)(COVReportOptions* options, int studyType, int sectionKind,
                                     int included, const char16_t* text);

// Puts into the format that new reports of `studyType` start from the user section as a user
// sets it up in the report dialog: included, with `title`, and when `path` is not empty the
// outside file it shows, linked or embedded, as an icon or as its content. Returns 1; 0 when
// that format has no user section. Optional for the loader.
using ZpSetUserSectionFn = int (*)(COVReportOptions* options, int studyType, const char16_t* title,
                                   const char16_t* path, int link, int icon);

// How the last run of `report` ended: 1 generated, 2 failed, 3 cancelled, 0 not run. When
// `reason` is not null it receives the reason of a failure or a cancel in words (empty after a
// success), valid until the report runs again or is deleted. Optional for the loader.
using ZpGetReportRunResultFn = int (*)(COVReport* report, const char16_t** reason);
}

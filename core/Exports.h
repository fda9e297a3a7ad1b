#pragma once
// The functions that libzpreport.so exports, as a program that loads it with dlopen() sees
// them. Everything else of the library is reached through the virtual operations of the
// objects these functions make.
#include <cstddef>
#include <cstdint>
#include <string>

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

// Makes the manager's dialogs run from an answers file (JSON text; see ui/ReportDialogDriver.h)
// instead of a user: its control values, button presses and answers to message boxes. The
// messages shown and what could not be done go to standard error as they come. Returns 1; 0
// with a message in `error` when the answers cannot be read. Optional for the loader.
using ZpSetDialogAnswersFn = int (*)(COVReportManager* manager, const char* answers, char* error,
                                     std::size_t errorSize);
// The number of answers that could not be carried out in the manager's dialogs (a control that
// doesn't exist, steps that end while a dialog is open). Optional for the loader.
using ZpGetDialogErrorsFn = int (*)(COVReportManager* manager);
// Runs the preference page on the options with an answers file (dialog 13027): after OK the
// page's values are saved into the options and the formats file is written. Returns 1 saved,
// 0 cancelled (nothing written), -1 with a message in `error` when the answers cannot be read
// or carried out. Optional for the loader.
using ZpRunPreferencePageFn = int (*)(COVReportOptions* options, const char* answers, char* error,
                                      std::size_t errorSize);

// Replaces what opens a finished document (by default the desktop's program for it) by
// `opener`, given the document's path; null puts the desktop's back. Optional for the loader.
using ZpSetDocumentOpenerFn = void (*)(COVReportManager* manager, void (*opener)(void* context, const char16_t* path),
                                      void* context);
}

// The dialogs run for a user elsewhere (a page in a browser): the front end reads the state and
// hands over what the user does, from threads of its own, while the library's thread waits in
// the dialog. Strings are JSON or empty.
class IZpInteractiveDialogs {
public:
  virtual ~IZpInteractiveDialogs() = default;
  // {"version": n, "dialog": the open dialog's controls or null, "message": {"text", "buttons":
  // [{"id", "text"}]} or null, "busy": a step is being carried out, "error": what the last step
  // could not do}. The version goes up with every change.
  virtual std::string State() = 0;
  // One step for the open dialog, as in an answers file; empty when taken, else why not.
  virtual std::string Submit(const std::string& step) = 0;
  // The answer to the open message box (a button id of its state); empty when taken.
  virtual std::string Answer(int button) = 0;
  // The user went away: the open dialog is cancelled, messages take their default answer.
  virtual void Leave() = 0;
};
extern "C" {
// A new set of interactive dialogs (the caller deletes it, after the runs that use it).
using ZpNewInteractiveDialogsFn = IZpInteractiveDialogs* (*)();
// The manager's dialogs run through `dialogs` from now on (not owned).
using ZpSetInteractiveDialogsFn = int (*)(COVReportManager* manager, IZpInteractiveDialogs* dialogs);
// Runs the preference page on the options through `dialogs`; as ZpRunPreferencePage.
using ZpRunPreferencePageInteractiveFn = int (*)(COVReportOptions* options, IZpInteractiveDialogs* dialogs,
                                                 char* error, std::size_t errorSize);
}

extern "C" {
// The stored formats as JSON with every field named (what FormatsToJson writes), handed to
// `sink` in one piece. Returns 1; 0 for options of another kind. Optional for the loader.
using ZpFormatsToJsonFn = int (*)(COVReportOptions* options, void (*sink)(const char* json, std::size_t size, void* context),
                                  void* context);
// Replaces the stored formats by `json` and writes the formats file. Returns 1; 0 with the
// field and the problem in `error` when the JSON cannot be taken, and then nothing changes;
// -1 when the file could not be written. Optional for the loader.
using ZpFormatsFromJsonFn = int (*)(COVReportOptions* options, const char* json, char* error, std::size_t errorSize);
}

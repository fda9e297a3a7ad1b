#pragma once
// The add-in's free functions, as the report generator calls them. Each forwards to the
// current host (HostServices.h).
#include <cstdint>
#include <vector>

#include "platform/host/HostTypes.h"
#include "platform/mfc/CString.h"
#include "platform/mfc/CStringList.h"

// ---- the add-in

// Stores the report generator's options object in *options; null when the add-in has none.
void GetReportOptions(COVReportOptions** options);
// The folder of the report templates.
CString GetReportTemplatePath();
// The name of the active model.
CString GetOVModelName();
// The help file for the dialogs.
CString GetZephraHelpFilePath();
// Not 0 while the quick-study wizard is in charge.
int ZephraGetAnalysisWizardState();
// The folder of the active study's result files; may be empty.
CString GetResultFilesPath();
// Turns the view normal to the 2D plane of a study that has one.
void ActivateViewNormalTo2DPlane(zphStudy* study);

// ---- pictures

// Writes a JPEG picture of the model in isometric view to path. 1 when it was written.
int CaptureModelIsometricViewAsImage(const CString& path);

// ---- lists of the active model

// The bodies of the model, by kind.
//   modelInfo:  string 0 the model's name, string 1 the configuration's name.
//   solids, shells, beams: 4 heading strings, then 4 strings per body (name, treatment or
//     formulation, volumetric properties, document path and date); empty when the model has no
//     body of the kind, so a non-empty list counts 4 + 4 x bodies.
//   composites: 2 heading strings, then per body 7 strings (name, number of plies, symmetry,
//     document label, document, date label, date) and, for a body with n plies (n > 0), 8 ply
//     heading strings and 8 strings per ply. Empty without composite bodies.
//   compositeCount: the number of composite bodies.
//   pliesPerComposite: room for kMaxCompositeBodies counts, zeroed by the caller; the number of
//     plies of each composite body, in list order.
//   withImages: always 1.
//   images: complete paths of pictures captured into imageFolder: the model, then one per
//     solid, per shell, per composite and per beam, in list order.
void GetBodiesInformationFromTheModel(CStringList& modelInfo, CStringList& solids,
                                      CStringList& shells, CStringList& composites,
                                      CStringList& beams, int& compositeCount,
                                      std::int32_t* pliesPerComposite, int withImages,
                                      const CString& imageFolder, CStringList& images);

// The unit system of the active study: records of 2 strings, label and value.
void ZpReportGetUnitsDetails(CStringList& units);

// The documents of a design study: records of 3 strings, name, path, configuration.
void ZpReportGetModelInfoDetails(CStringList& documents);

// ---- results

// Sensors: records of 2 strings (name, details); one picture path per sensor.
void GetSensorDetailsForReport(CStringList& sensors, const CString& scratchFolder,
                               CStringList& images, int forReport);
// Work-flow sensitive sensors: names, points per sensor, one location per point, 6 stress
// components per point, two notes. Returns the number of such sensors.
int GetWorkFlowSensitiveSensorResultsForReport(CStringList& names, std::vector<int>& pointCounts,
                                               CStringList& locations, CStringList& components,
                                               CString& locationNote, CString& headingNote);
// Result plots: details records of 4 strings (name, type, minimum, maximum), one picture base
// name per plot (the picture is scratchFolder + "//" + name without "@" + ".jpg").
void ZpReportGetStudyResults(zphStudy* study, const CString& scratchFolder, int resultOption,
                             CStringList& details, CStringList& imageNames, int flag);
// Frequencies: records of 4 (frequency study) or 2 (buckling study) strings.
void ZpReportGetPostFrequencies(zphStudy* study, CStringList& frequencies);
// Mass participation: records of 5 strings: mode, frequency, X, Y, Z.
void ZephraGetPostMassParticipation(zphStudy* study, CStringList& massParticipation);

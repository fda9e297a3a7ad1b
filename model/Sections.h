#pragma once
// The sections of a report: one object per chapter, with its title, comment, included flag
// and the options of its kind.
//
// Writers. A section's writer is a member of its class: the operations named Update...InWordDoc
// and the like below are declared here and defined with the writers (writers/, design/,
// core/). The model itself never calls them.
#include <atomic>
#include <memory>
#include <vector>

#include "model/framework/COVBaseReportSection.h"
#include "platform/mfc/CString.h"
#include "platform/mfc/CStringList.h"

class CArchive;
class CDataExchange;
class CDialog;
class zphStudy;
namespace Word {
class Selection;
}

// The section kinds, by the value of m_sectionType.
enum SectionKind : int {
  kSectionDescription = 0,
  kSectionAssumptions = 1,
  kSectionModelInformation = 2,
  kSectionStudyProperties = 3,
  kSectionUnits = 4,
  kSectionMaterialProperties = 5,
  kSectionLoadsFixtures = 6,
  kSectionConnectors = 7,
  kSectionContacts = 8,
  kSectionMesh = 9,
  kSectionSensors = 10,
  kSectionResultantForces = 11,
  kSectionInert12 = 12,  // loads and stores, reaches no document
  kSectionBeams = 13,
  kSectionStudyResults = 14,
  kSectionUserAdded = 15,  // added by the dialog's add button; reaches no document
  kSectionConclusions = 16,
  kSectionUserDefined = 17,  // the appendix
  kSectionResultSummary = 18,
  kSectionKindCount = 19,
};

// The number of the title text of a kind (0 for kind 15, whose titles are empty).
unsigned SectionTitleId(int kind);

using SelectionPtr = std::shared_ptr<Word::Selection>;

// The base of all sections here, and the class of every kind without options of its own
// (1, 4, 8, 9, 10, 11, 12, 16; and 18 after a Clone).
class CZPNewReportSection : public COVBaseReportSection {
public:
  // Loads text `titleId` into m_titleDefault and copies it to m_title.
  CZPNewReportSection(int kind, unsigned titleId);
  CZPNewReportSection(const CZPNewReportSection& other) = default;
  ~CZPNewReportSection() override = default;

  // A new section of the class of `kind`, with m_included 1; null for a kind outside 0..18.
  static CZPNewReportSection* CreateSection(int kind);

  CZPNewReportSection* Clone() const override;
  void Serialize(CArchive& archive) override;
  // The dialog's controls of this class (defined in model/SectionControls.cpp).
  void DoDataExchange(CDataExchange* exchange) override;
  void UpdateUI(CDialog* dialog) override;
  void ShowSectionUI(CDialog* dialog, int show) override;

  // ---- writers (defined with the writers)
  void UpdateAssumptionDetailsInWordDoc(SelectionPtr selection, const CString& imageFolder, zphStudy* study);
  void UpdateCommentsInWordDoc(SelectionPtr selection, const CString& labelTag, const CString& commentTag);
  void UpdateConclusionDetailsInWordDoc(SelectionPtr selection);
  // `text` is consumed.
  void UpdateEntityDetails(SelectionPtr selection, CString text);
  void UpdateUnitsDetailsInWordDoc(SelectionPtr selection);
  void UpdateContactsInWordDoc(SelectionPtr selection, const CString& scratchFolder, zphStudy* study);
  void UpdateMeshInformationInWordDoc(SelectionPtr selection, const CString& scratchFolder, zphStudy* study);
  void UpdateSensorsDetailsInWordDoc(SelectionPtr selection, const CString& scratchFolder);
  void UpdateResultantForcesDetailsInWordDoc(SelectionPtr selection, zphStudy* study);
  void UpdateReactionForcesDetails(SelectionPtr selection, zphStudy* study);
  void UpdateFreeBodyForcesDetails(SelectionPtr selection, zphStudy* study);
};

// Kind 0.
class CZPNewReportSectionDescription : public CZPNewReportSection {
public:
  CZPNewReportSectionDescription();
  CZPNewReportSectionDescription(const CZPNewReportSectionDescription& other) = default;
  CZPNewReportSectionDescription* Clone() const override;
  void Serialize(CArchive& archive) override;
  // The dialog's controls of this class (defined in model/SectionControls.cpp).
  void DoDataExchange(CDataExchange* exchange) override;
  void UpdateUI(CDialog* dialog) override;
  void ShowSectionUI(CDialog* dialog, int show) override;

  void UpdateDescriptionInWordDoc(SelectionPtr selection);
  void UpdateDescriptionInMotionWordDoc(SelectionPtr selection);

  CString m_description;  // at most 500 characters
};

// Kind 2.
class CZPNewReportSectionModelInformation : public CZPNewReportSection {
public:
  CZPNewReportSectionModelInformation();
  CZPNewReportSectionModelInformation(const CZPNewReportSectionModelInformation& other) = default;
  CZPNewReportSectionModelInformation* Clone() const override;
  void Serialize(CArchive& archive) override;
  void DoDataExchange(CDataExchange* exchange) override;
  void ShowSectionUI(CDialog* dialog, int show) override;

  void UpdateBodyDetailsInWordDoc(SelectionPtr selection, const CString& imageFolder, zphStudy* study);
  // The design-study writer.
  void UpdateDetailsInWordDoc(SelectionPtr selection);

  int m_modelOption0 = 1;
  int m_modelOption1 = 1;
  int m_modelOption2 = 1;
  int m_modelOption3 = 1;
  int m_modelOption4 = 1;
};

// Kind 3.
class CZPNewReportSectionStudyProperties : public CZPNewReportSection {
public:
  CZPNewReportSectionStudyProperties();
  CZPNewReportSectionStudyProperties(const CZPNewReportSectionStudyProperties& other) = default;
  CZPNewReportSectionStudyProperties* Clone() const override;
  void Serialize(CArchive& archive) override;

  void UpdateDetailsInWordDoc(SelectionPtr selection, zphStudy* study);
  void UpdateDetailsInWordDocForOptStudy(SelectionPtr selection);

  int m_studyOption0 = 1;
  int m_studyOption1 = 1;
  int m_studyOption2 = 1;
  int m_studyOption3 = 0;
  int m_studyOption4 = 0;
};

// Kind 5. In the record m_materialText lies before m_materialOption6.
class CZPNewReportSectionMaterialProperties : public CZPNewReportSection {
public:
  CZPNewReportSectionMaterialProperties();
  CZPNewReportSectionMaterialProperties(const CZPNewReportSectionMaterialProperties& other) = default;
  CZPNewReportSectionMaterialProperties* Clone() const override;
  void Serialize(CArchive& archive) override;

  void UpdateDetailsInWordDoc(SelectionPtr selection, const CString& imageFolder, zphStudy* study);

  int m_materialOption0 = 1;
  int m_materialOption1 = 0;
  int m_materialOption2 = 1;
  int m_materialOption3 = 0;
  int m_materialOption4 = 0;
  int m_materialOption5 = 0;
  int m_materialOption6 = 1;
  int m_materialOption7 = 1;
  CString m_materialText;
};

// Kind 6: fixtures and loads; in a design study its set-up.
class CZPNewReportSectionLoadsRestraints : public CZPNewReportSection {
public:
  CZPNewReportSectionLoadsRestraints();
  CZPNewReportSectionLoadsRestraints(const CZPNewReportSectionLoadsRestraints& other) = default;
  CZPNewReportSectionLoadsRestraints* Clone() const override;

  void UpdateDetailsInWordDoc(SelectionPtr selection, const CString& imageFolder, zphStudy* study);
  // `handled` is false only when the study isn't a fatigue study.
  void UpdateDetailsInWordDoc_FatigueStudy(zphStudy* study, CString& tag, SelectionPtr& selection,
                                           const CString& imageFolder, bool& handled);
  // `rowState` is 0 on entry and on return.
  void FillFoundationBolt_ConnectorForces(const CString& name, zphStudy* study, CStringList& forces,
                                          CString& text, CString& tag, SelectionPtr& selection, int& rowState);
  // Design study: the set-up with its three tables.
  void GetActiveOptDesignVariable(SelectionPtr selection);
  void GetActiveOptConstraintVariables(SelectionPtr selection, CStringList& rows);
  void GetActiveOptGoalsVariables(SelectionPtr selection, CStringList& rows);
};

// Kind 7.
class CZPNewReportSectionConnectors : public CZPNewReportSection {
public:
  CZPNewReportSectionConnectors();
  CZPNewReportSectionConnectors(const CZPNewReportSectionConnectors& other) = default;
  CZPNewReportSectionConnectors* Clone() const override;

  void UpdateDetailsInWordDoc(SelectionPtr selection, const CString& imageFolder, zphStudy* study);
  void FillEdgeWeldConnectorTable(SelectionPtr selection, CStringList& names, CStringList& details,
                                  CStringList& weldForces, CStringList& images, CStringList& weldGraphs);
  void FillPinBoltBearingConnectorTable(SelectionPtr selection, CStringList& names, CStringList& details,
                                        CStringList& pinForces, CStringList& strength, CStringList& images,
                                        CStringList& strengthPlots);
};

// Kind 13.
class CZPNewReportSectionBeams : public CZPNewReportSection {
public:
  CZPNewReportSectionBeams();
  CZPNewReportSectionBeams(const CZPNewReportSectionBeams& other) = default;
  CZPNewReportSectionBeams* Clone() const override;
  void Serialize(CArchive& archive) override;
  // The dialog's controls of this class (defined in model/SectionControls.cpp).
  void DoDataExchange(CDataExchange* exchange) override;
  void UpdateUI(CDialog* dialog) override;
  void ShowSectionUI(CDialog* dialog, int show) override;

  void UpdateDetailsInWordDoc(SelectionPtr selection, zphStudy* study);
  // `isForces` is 1 for the forces block, 0 for the stresses block.
  void OutputBeamResults(SelectionPtr selection, zphStudy* study, int isForces, std::vector<CString>& names,
                         std::vector<long>& ids, int count, int unitIndex);
  void OutputBeamResultsForEntireLength(SelectionPtr selection, zphStudy* study, int isForces,
                                        std::vector<CString>& names, std::vector<long>& ids, int count,
                                        int unitIndex);

  int m_beamForces = 1;
  int m_beamForcesChoice = 0;  // 0 to 3; 3 is the output along the whole length
  int m_beamStresses = 1;
  int m_beamStressesChoice = 0;

  // The run's cancel flag, which the writer reads between blocks and between beams. The
  // driver points it at its own flag for the length of a run; a copy of the section starts
  // without one.
  class CancelWatch {
  public:
    CancelWatch() = default;
    CancelWatch(const CancelWatch&) {}
    CancelWatch& operator=(const CancelWatch&) { return *this; }
    void Watch(const std::atomic<int>* flag) { m_flag = flag; }
    bool Cancelled() const { return m_flag && m_flag->load() != 0; }

  private:
    const std::atomic<int>* m_flag = nullptr;
  };
  CancelWatch m_cancel;
};

// Kind 14.
class CZPNewReportSectionStudyResults : public CZPNewReportSection {
public:
  CZPNewReportSectionStudyResults();
  CZPNewReportSectionStudyResults(const CZPNewReportSectionStudyResults& other) = default;
  CZPNewReportSectionStudyResults* Clone() const override;
  // m_resultExtra is read only from archives of version 850020 on.
  void Serialize(CArchive& archive) override;
  void DoDataExchange(CDataExchange* exchange) override;
  void ShowSectionUI(CDialog* dialog, int show) override;

  void UpdateDetailsInWordDoc(SelectionPtr selection, const CString& scratchFolder, zphStudy* study);
  void WritePressureVesselLinearizationData(SelectionPtr selection, const CString& scratchFolder, zphStudy* study);
  void GetActiveOptMotionStudyResultsVariables(SelectionPtr selection, const CString& scratchFolder,
                                               int motionStudyId, const CString& modelName,
                                               const CString& motionStudyName);
  // Design study.
  void GetActiveOptResultsVariables(SelectionPtr selection, const CString& folder);
  void WriteImageDetailsToTable(SelectionPtr selection, int withImages, CStringList& details,
                                CStringList& imageFiles);
  void SetTheNameAndUnitsColumnOfNextTable(SelectionPtr selection, int captionFlag, const CString& name,
                                           const CString& units, int& rowIndex, int& rowNumber,
                                           int& iterationNumber);

  int m_resultOption = 1;  // third argument of ZpReportGetStudyResults
  int m_resultExtra = 1;   // stored; nothing reads it
};

// Kind 18. It has no copy constructor of its own and doesn't override Clone: a clone is a
// plain CZPNewReportSection of kind 18.
class CZPNewReportSectionResultSummary : public CZPNewReportSection {
public:
  CZPNewReportSectionResultSummary();

  void GetActiveOptResultsSummaryVariables(SelectionPtr selection, const CString& folder);
};

// Kinds 15 and 17. The default constructor makes kind 15 with empty titles; CreateSection(17)
// makes the appendix with the titles of text 54905.
class CZPNewReportSectionUser : public CZPNewReportSection {
public:
  CZPNewReportSectionUser();
  CZPNewReportSectionUser(const CZPNewReportSectionUser& other) = default;
  CZPNewReportSectionUser* Clone() const override;
  void Serialize(CArchive& archive) override;
  // The dialog's controls of this class (defined in model/SectionControls.cpp).
  void DoDataExchange(CDataExchange* exchange) override;
  void UpdateUI(CDialog* dialog) override;
  void ShowSectionUI(CDialog* dialog, int show) override;

  // Sets m_title alone.
  void SetTitle(const CString& title) { m_title = title; }
  // 1 when the section can be generated: not included, no external file asked for, or an
  // external file that exists. Else it tells the user why (texts 55023 and 55024, followed by
  // the title; over `dialog` when there is one) and gives 0. Trims m_externalPath.
  int ValidateData(CDialog* dialog);

  void UpdateDetailsInWordDoc(SelectionPtr selection);

  int m_insertExternal = 0;  // an external file is inserted at the section's data tag
  CString m_externalPath;
  int m_linkToFile = 0;      // 0 embedded, 1 linked
  int m_displayAsIcon = 1;
};

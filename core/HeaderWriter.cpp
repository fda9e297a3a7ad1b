// The writers of a report's identity: first-page header, running header, footers and cover.
// One pass serves the study and the motion forms, which differ in their tags and texts.
#include "core/DateText.h"
#include "core/DocumentPrimitives.h"
#include "model/HeaderInfo.h"
#include "platform/host/Host.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/Resources.h"

namespace {

// The placeholders and texts in which the two forms differ.
struct HeaderForm {
  bool motion;
  const char16_t* largeLogo;
  const char16_t* companyName;
  const char16_t* address1;
  const char16_t* address2;
  const char16_t* phone;
  const char16_t* fax;
  const char16_t* email;
  const char16_t* designer;
  const char16_t* date;
  const char16_t* smallLogo;
  const char16_t* firstFooterLabel;
  unsigned analysedText;
  unsigned simulationOfText;
  const char16_t* studyNameLabel;
  const char16_t* tableOfContents;
};

const HeaderForm kStudyForm = {
    false,
    u"[Large Company Logo]",
    u"[Company Name]",
    u"[Company Address Line 1]",
    u"[Company Address Line 2]",
    u"[Company Phone]",
    u"[Company Fax]",
    u"[Company Email]",
    u"[Designer\u2019s Name]",
    u"[Date]",
    u"[Sm Com Logo]",
    u"<Label_AnalyzedwithOrvantaSimulation/>",
    54985,
    54984,
    u"<Label_StudyName/>",
    u"Table of Contents",
};

const HeaderForm kMotionForm = {
    true,
    u"<Company_Logo/>",
    u"<Company_Name/>",
    u"<Company_Address_Line1/>",
    u"<Company_Address_Line2/>",
    u"<Company_Phone/>",
    u"<Company_Fax/>",
    u"<Company_Email/>",
    u"<Designer_Name/>",
    u"<Published_Date/>",
    u"<Company_Logo/>",
    u"<Label_AnalyzedUsingOrvantaMotion/>",
    55067,
    55066,
    u"<Label_MotionStudyName/>",
    u"<Label_TableofContents/>",
};

constexpr const char16_t* kRunningFooterLabel = u"<Label_AnalyzedwithOrvantaSimulation/>";
constexpr const char16_t* kSimulationOfModel = u"<Label_Simulationof/> <Model_Name/>";

bool Used(int on, const CString& text) { return on != 0 && !text.IsEmpty(); }

// The view of the active pane, reached afresh for every call, as Word's objects may change
// under a seek.
Word::Ptr<Word::View> PaneView(const Word::Ptr<Word::Application>& app) {
  auto window = Word::Checked(Word::Checked(app)->GetActiveWindow());
  auto pane = Word::Checked(window->GetActivePane());
  return Word::Checked(pane->GetView());
}

void DeleteSelectedTable(const SelectionPtr& selection) {
  Word::Checked(Word::Checked(selection->GetTables())->Item(1))->Delete();
}

class HeaderPass {
public:
  HeaderPass(const HeaderForm& form, const CZPReportHeaderInfo& header, const Word::Ptr<Word::Application>& app,
             const SelectionPtr& selection)
      : m_form(form), m_header(header), m_app(app), m_sel(selection) {}

  void Run(const CString& scratchFolder, const CString& modelName, const CString& studyName,
           const CString& studyTypeText, const CString& studyLabel) {
    // Stage 1: the model picture and the view.
    // The names become one file name of the scratch folder, whatever they hold.
    const CString imagePath = scratchFolder + u"\\" + MakeFileName(modelName + u"-" + studyName) + u"-Model.jpg";
    CaptureModelIsometricViewAsImage(imagePath);
    {
      auto view = PaneView(m_app);
      const int type = view->GetType();
      if (type == Word::wdNormalView || type == Word::wdOutlineView) view->PutType(Word::wdPrintView);
    }

    FirstPageHeader();
    PaneView(m_app)->NextHeaderFooter();
    RunningHeader();
    Footers(modelName);
    PaneView(m_app)->PutSeekView(Word::wdSeekMainDocument);
    Cover(imagePath, modelName, studyName, studyTypeText, studyLabel);
  }

private:
  // A field line: the placeholder is replaced by the text when the field is used, and
  // goes with its paragraph mark when not.
  void FieldLine(const char16_t* tag, int on, const CString& text, const CString& prefix, bool marksHeader) {
    if (!FindTag(m_sel, tag, 0)) return;
    if (Used(on, text)) {
      if (marksHeader) m_headerEmpty = false;
      TypeString(m_sel, prefix + text);
    } else {
      m_sel->Delete();
      m_sel->Delete();
    }
  }

  void Logo(const char16_t* tag) {
    if (Used(m_header.m_logoOn, m_header.m_logoPath)) {
      ReplaceTagWithImage(m_sel, tag, m_header.m_logoPath, 1, 0, 0);
      m_headerEmpty = false;
    } else {
      ReplaceTagWithImage(m_sel, tag, CString(), 1, 0, 0);
    }
  }

  void FirstPageHeader() {
    PaneView(m_app)->PutSeekView(Word::wdSeekFirstPageHeader);
    m_headerEmpty = true;
    Logo(m_form.largeLogo);
    FieldLine(m_form.companyName, m_header.m_companyOn, m_header.m_company, CString(), true);
    FieldLine(m_form.address1, m_header.m_addressOn, m_header.m_address1, CString(), true);
    FieldLine(m_form.address2, m_header.m_addressOn, m_header.m_address2, CString(), true);
    FieldLine(m_form.phone, m_header.m_phoneOn, m_header.m_phone, ZpCommonString(54980), true);
    FieldLine(m_form.fax, m_header.m_faxOn, m_header.m_fax, ZpCommonString(54981), true);
    if (FindTag(m_sel, m_form.email, 0)) {
      if (Used(m_header.m_emailOn, m_header.m_email)) {
        m_headerEmpty = false;
        TypeString(m_sel, m_header.m_email);
      } else {
        m_sel->Delete();
        if (m_headerEmpty) {
          // The nested table of the company block, then the table round it.
          DeleteSelectedTable(m_sel);
          DeleteSelectedTable(m_sel);
          m_sel->Delete();
        }
      }
    }
  }

  void RunningHeader() {
    if (FindTag(m_sel, m_form.designer, 0)) {
      if (Used(m_header.m_designerOn, m_header.m_designer)) {
        m_headerEmpty = false;
        TypeString(m_sel, m_header.m_designer);
      } else {
        m_sel->Delete();
        m_sel->Delete();
        if (m_headerEmpty) {
          DeleteSelectedTable(m_sel);
          m_sel->Delete();
          return;
        }
      }
    }
    FieldLine(m_form.companyName, m_header.m_companyOn, m_header.m_company, CString(), false);
    FieldLine(m_form.address1, m_header.m_addressOn, m_header.m_address1, CString(), false);
    if (FindTag(m_sel, m_form.address2, 0)) {
      if (Used(m_header.m_addressOn, m_header.m_address2))
        TypeString(m_sel, m_header.m_address2);
      else
        m_sel->Delete();
    }
    if (FindTag(m_sel, m_form.date, 0)) TypeString(m_sel, TodayShortDateText());
    Logo(m_form.smallLogo);
  }

  void Footers(const CString& modelName) {
    PaneView(m_app)->PutSeekView(Word::wdSeekFirstPageFooter);
    if (FindTag(m_sel, m_form.firstFooterLabel, 0)) TypeString(m_sel, ZpCommonString(m_form.analysedText));
    if (FindTag(m_sel, kSimulationOfModel, 0)) TypeString(m_sel, ZpCommonString(m_form.simulationOfText) + modelName);
    PaneView(m_app)->NextHeaderFooter();
    if (FindTag(m_sel, kRunningFooterLabel, 0)) TypeString(m_sel, ZpCommonString(m_form.analysedText));
    if (FindTag(m_sel, kSimulationOfModel, 0)) TypeString(m_sel, ZpCommonString(m_form.simulationOfText) + modelName);
  }

  void Cover(const CString& imagePath, const CString& modelName, const CString& studyName,
             const CString& studyTypeText, const CString& studyLabel) {
    auto fill = [&](const char16_t* tag, const CString& text) {
      if (FindTag(m_sel, tag, 0)) TypeString(m_sel, text);
    };
    ReplaceTagWithImage(m_sel, u"<Image_288pxW_MainModel/>", imagePath, 1, 0, 0);
    fill(u"<Label_Simulationof/>", ZpCommonString(m_form.simulationOfText));
    fill(u"<Model_Name/>", modelName);
    fill(u"<Label_Date/>", ZpCommonString(54982));
    fill(u"<Published_Date/>", TodayLongDateText());
    fill(u"<Label_Designer/>", ZpCommonString(54983));
    fill(u"<Designer_Name/>", Used(m_header.m_designerOn, m_header.m_designer) ? m_header.m_designer
                                                                              : CString(u"Orvanta"));
    fill(m_form.studyNameLabel, ZpCommonString(50691));
    if (m_form.motion) {
      fill(u"<Study_Name/>", studyName.IsEmpty() ? CString(u"Motion Study") : studyName);
      fill(m_form.tableOfContents, CString(u"Table Of Contents"));
    } else {
      fill(u"<Study_Name/>", studyLabel.IsEmpty() ? studyName : studyLabel);
      fill(u"<Label_StudyType/>", ZpCommonString(50509));
      fill(u"<Study_Type/>", studyTypeText);
      fill(m_form.tableOfContents, ZpCommonString(55281));
    }
  }

  const HeaderForm& m_form;
  const CZPReportHeaderInfo& m_header;
  Word::Ptr<Word::Application> m_app;
  SelectionPtr m_sel;
  bool m_headerEmpty = true;
};

}  // namespace

void CZPReportHeaderInfo::UpdateHeaderDetailsInWordDoc(Word::Ptr<Word::Application> app,
                                                       Word::Ptr<Word::Selection> selection, CString scratchFolder,
                                                       CString modelName, CString studyName, CString studyTypeText,
                                                       CString studyLabel) const {
  HeaderPass(kStudyForm, *this, app, selection).Run(scratchFolder, modelName, studyName, studyTypeText, studyLabel);
}

// The motion form writes no study type: the cover's fields end with the study's name.
void CZPReportHeaderInfo::UpdateHeaderDetailsInWordDocForMotionReport(Word::Ptr<Word::Application> app,
                                                                      Word::Ptr<Word::Selection> selection,
                                                                      CString scratchFolder, CString modelName,
                                                                      CString studyName, CString) const {
  HeaderPass(kMotionForm, *this, app, selection).Run(scratchFolder, modelName, studyName, CString(), CString());
}

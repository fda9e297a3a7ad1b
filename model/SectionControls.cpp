// The sections' and the header's own controls in the report dialogs: which they show, how
// they exchange their fields, which they enable.
#include "model/ControlIds.h"
#include "model/HeaderInfo.h"
#include "model/Sections.h"
#include "platform/mfc/CDialog.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"

using namespace ctl;

namespace {

void Show(CDialog* dialog, std::initializer_list<int> ids, bool show) {
  for (int id : ids) dialog->ShowControl(id, show);
}
void Enable(CDialog* dialog, std::initializer_list<int> ids, bool enable) {
  for (int id : ids) dialog->EnableControl(id, enable);
}
void Text(CDataExchange* dx, int id, CString& value, int limit) {
  DDX_Text(dx, id, value);
  if (limit > 0) DDV_MaxChars(dx, value, limit);
}

constexpr int kTitleLimit = 50;
constexpr int kCommentLimit = 1000;
constexpr int kDescriptionLimit = 500;

}  // namespace

// ---- every section

void CZPNewReportSection::ShowSectionUI(CDialog* dialog, int show) {
  Show(dialog, {kSectionLabel, kTitle, kCommentsOn, kComments}, show != 0);
}

void CZPNewReportSection::DoDataExchange(CDataExchange* dx) {
  Text(dx, kTitle, m_title, kTitleLimit);
  DDX_Check(dx, kCommentsOn, m_commentsOn);
  Text(dx, kComments, m_comments, kCommentLimit);
}

void CZPNewReportSection::UpdateUI(CDialog* dialog) { dialog->EnableControl(kComments, m_commentsOn != 0); }

// ---- the description: its text alone

void CZPNewReportSectionDescription::ShowSectionUI(CDialog* dialog, int show) {
  Show(dialog, {kSectionLabel, kTitle, kCommentsOn, kComments}, false);
  Show(dialog, {kDescriptionLabel, kDescription}, show != 0);
}

void CZPNewReportSectionDescription::DoDataExchange(CDataExchange* dx) {
  CZPNewReportSection::DoDataExchange(dx);
  Text(dx, kDescription, m_description, kDescriptionLimit);
}

void CZPNewReportSectionDescription::UpdateUI(CDialog* dialog) { dialog->EnableControl(kDescription, true); }

// ---- model information: two switches that stay hidden

void CZPNewReportSectionModelInformation::ShowSectionUI(CDialog* dialog, int show) {
  CZPNewReportSection::ShowSectionUI(dialog, show);
  Show(dialog, {kModelOption0, kModelOption4}, false);
}

void CZPNewReportSectionModelInformation::DoDataExchange(CDataExchange* dx) {
  CZPNewReportSection::DoDataExchange(dx);
  DDX_Check(dx, kModelOption0, m_modelOption0);
  DDX_Check(dx, kModelOption4, m_modelOption4);
}

// ---- beams

void CZPNewReportSectionBeams::ShowSectionUI(CDialog* dialog, int show) {
  CZPNewReportSection::ShowSectionUI(dialog, show);
  Show(dialog, {kBeamForces, kBeamStresses, kBeamForcesChoice, kBeamStressesChoice}, show != 0);
}

void CZPNewReportSectionBeams::DoDataExchange(CDataExchange* dx) {
  CZPNewReportSection::DoDataExchange(dx);
  DDX_Check(dx, kBeamForces, m_beamForces);
  DDX_Check(dx, kBeamStresses, m_beamStresses);
  DDX_CBIndex(dx, kBeamForcesChoice, m_beamForcesChoice);
  DDX_CBIndex(dx, kBeamStressesChoice, m_beamStressesChoice);
}

void CZPNewReportSectionBeams::UpdateUI(CDialog* dialog) {
  CZPNewReportSection::UpdateUI(dialog);
  dialog->EnableControl(kBeamForcesChoice, m_beamForces != 0);
  dialog->EnableControl(kBeamStressesChoice, m_beamStresses != 0);
}

// ---- study results

void CZPNewReportSectionStudyResults::ShowSectionUI(CDialog* dialog, int show) {
  CZPNewReportSection::ShowSectionUI(dialog, show);
  dialog->ShowControl(kResultOption, show != 0);
}

void CZPNewReportSectionStudyResults::DoDataExchange(CDataExchange* dx) {
  CZPNewReportSection::DoDataExchange(dx);
  DDX_Check(dx, kResultOption, m_resultOption);
}

// ---- sections of the user: an external file

void CZPNewReportSectionUser::ShowSectionUI(CDialog* dialog, int show) {
  CZPNewReportSection::ShowSectionUI(dialog, show);
  Show(dialog, {kInsertExternal, kExternalPath, kExternalBrowse, kExternalLabel, kLinkGroup, kLinkToFile}, show != 0);
}

void CZPNewReportSectionUser::DoDataExchange(CDataExchange* dx) {
  CZPNewReportSection::DoDataExchange(dx);
  DDX_Check(dx, kInsertExternal, m_insertExternal);
  DDX_Text(dx, kExternalPath, m_externalPath);
  DDX_Radio(dx, kLinkGroup, m_linkToFile);
}

void CZPNewReportSectionUser::UpdateUI(CDialog* dialog) {
  CZPNewReportSection::UpdateUI(dialog);
  Enable(dialog, {kExternalPath, kExternalBrowse, kExternalLabel, kLinkGroup, kLinkToFile}, m_insertExternal != 0);
}

int CZPNewReportSectionUser::ValidateData(CDialog* dialog) {
  if (m_included == 0 || m_insertExternal == 0) return 1;
  m_externalPath.Trim();
  auto tell = [&](unsigned id) {
    const CString text = ZpCommonString(id) + m_title;
    if (dialog) dialog->ShowMessage(text, 0);
    else ShowMessageText(text, 0);
  };
  if (m_externalPath.IsEmpty()) {
    tell(55023);
    return 0;
  }
  int locked = 0;
  if (!FileProbe(m_externalPath, locked)) {
    tell(55024);
    return 0;
  }
  return 1;
}

// ---- the header

void CZPReportHeaderInfo::DoDataExchange(CDataExchange* dx) {
  DDX_Check(dx, kLogoOn, m_logoOn);
  DDX_Check(dx, kDesignerOn, m_designerOn);
  DDX_Check(dx, kCompanyOn, m_companyOn);
  DDX_Check(dx, kAddressOn, m_addressOn);
  DDX_Check(dx, kPhoneOn, m_phoneOn);
  DDX_Check(dx, kFaxOn, m_faxOn);
  DDX_Check(dx, kEmailOn, m_emailOn);
  Text(dx, kLogoPath, m_logoPath, 260);
  Text(dx, kDesigner, m_designer, 50);
  Text(dx, kCompany, m_company, 50);
  Text(dx, kAddress1, m_address1, 100);
  Text(dx, kAddress2, m_address2, 100);
  Text(dx, kPhone, m_phone, 20);
  Text(dx, kFax, m_fax, 20);
  Text(dx, kEmail, m_email, 50);
  DDX_Check(dx, kShowOnPublish, m_showOnPublish);
}

void CZPReportHeaderInfo::UpdateUI(CDialog* dialog) {
  Enable(dialog, {kLogoPath, kLogoBrowse}, m_logoOn != 0);
  dialog->EnableControl(kDesigner, m_designerOn != 0);
  dialog->EnableControl(kCompany, m_companyOn != 0);
  Enable(dialog, {kAddress1, kAddress2}, m_addressOn != 0);
  dialog->EnableControl(kPhone, m_phoneOn != 0);
  dialog->EnableControl(kFax, m_faxOn != 0);
  dialog->EnableControl(kEmail, m_emailOn != 0);
}

void CZPReportHeaderInfo::ShowSectionUI(CDialog* dialog, int) {
  Show(dialog,
       {kLogoOn, kLogoPath, kLogoBrowse, kDesignerOn, kDesigner, kCompanyOn, kCompany, kAddressOn, kAddress1,
        kAddress2, kPhoneOn, kPhone, kFaxOn, kFax, kEmailOn, kEmail, kShowOnPublish},
       true);
}

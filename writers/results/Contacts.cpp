// Contacts: a row per contact set with its name, picture and description, each followed by a
// row of the set's friction forces when the host has them; then one table per contact
// visualization plot.
#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;
constexpr const char16_t* kNameTag = u"<Contact_Name/>";
constexpr const char16_t* kFrictionLabelTag = u"<Label_ContactFrictionForces/>";
constexpr const char16_t* kPlotImageTag = u"<Image_ContactVisualizationPlot/>";

// The friction row of one contact: its label, headings, the first record at the tags and a
// second record, when there is one, in a new row below it.
void FillFriction(const SelectionPtr& selection, const CStringList& forces) {
  TypeString(selection, ZpCommonString(52736));
  FillText(selection, u"<L_CtFrcForceComp/>", 50650, 1);
  Fill(selection, u"<L_CtFrcForceX/>", u"X", 1);
  Fill(selection, u"<L_CtFrcForceY/>", u"Y", 1);
  Fill(selection, u"<L_CtFrcForceZ/>", u"Z", 1);
  FillText(selection, u"<L_CtFrcForceRes/>", 51755, 1);

  ListWalk walk(forces);
  const CString component = walk.Next();
  const CString x = walk.Next();
  const CString y = walk.Next();
  const CString z = walk.Next();
  const CString resultant = walk.Next();
  Fill(selection, u"<CtFrcForceType1/>", component, 1);
  Fill(selection, u"<CtFrcForceX1/>", x, 1);
  Fill(selection, u"<CtFrcForceY1/>", y, 1);
  Fill(selection, u"<CtFrcForceZ1/>", z, 1);
  Fill(selection, u"<CtFrcForceRes1/>", resultant, 1);
  if (walk.AtEnd()) return;
  selection->InsertRowsBelow();
  selection->MoveLeft();
  TypeString(selection, walk.Next());
  for (int column = 0; column < 4; ++column) {
    selection->MoveRight();
    TypeString(selection, walk.Next());
  }
}

void FillContact(CZPNewReportSection& section, const SelectionPtr& selection, zphStudy* study, ListWalk& contacts,
                 ListWalk& images) {
  const CString name = contacts.Next();
  const CString description = contacts.Next();
  const CString image = images.NextOrEmpty();
  Fill(selection, kNameTag, name, 1);
  if (image.IsEmpty())
    FillText(selection, u"<Image_Contact/>", kNoneText, 1);
  else
    ReplaceTagWithImage(selection, u"<Image_Contact/>", image, 1, 1, 0);
  if (FindTag(selection, u"<Contact_Description/>", 1)) section.UpdateEntityDetails(selection, description);

  CStringList forces(10);
  const int hasForces = study->GetContactFrictionForce(name, forces);
  if (!FindTag(selection, kFrictionLabelTag, 1)) return;
  if (hasForces == 0 || forces.IsEmpty())
    DeleteRow(selection);
  else
    FillFriction(selection, forces);
}

void WriteVisualizationPlots(const SelectionPtr& selection, const CStringList& details, const CStringList& images) {
  if (!FindTag(selection, u"<Label_ContactVisualizationPlots/>", 0)) return;
  if (images.IsEmpty() || details.IsEmpty()) {
    selection->Delete();
    selection->TypeBackspace();
    if (FindTag(selection, u"<L_CVName/>", 0)) {
      DropTable(selection);
      selection->Delete();
    }
    return;
  }
  TypeString(selection, ZpCommonString(52989));
  const int plots = images.GetCount();
  if (FindTag(selection, kPlotImageTag, 0)) {
    if (plots != details.GetCount() / 2) {
      selection->SelectCell();
      DropTable(selection);
      selection->TypeBackspace();
      return;
    }
    RepeatTable(selection, plots);
  }
  ListWalk detail(details);
  ListWalk image(images);
  while (!image.AtEnd() && !detail.AtEnd()) {
    const CString name = detail.Next();
    const CString type = detail.Next();
    FillText(selection, u"<L_CVName/>", 51179, 1);
    FillText(selection, u"<L_CVType/>", 50692, 1);
    Fill(selection, u"<CV_Name/>", name, 1);
    Fill(selection, u"<CV_Type/>", type, 1);
    ReplaceTagWithImage(selection, kPlotImageTag, image.Next(), 1, 1, 0);
    Fill(selection, u"<ImageCaption_ContactVisualizationPlot/>", name, 1);
  }
}
}  // namespace

void CZPNewReportSection::UpdateContactsInWordDoc(SelectionPtr selection, const CString& scratchFolder,
                                                  zphStudy* study) {
  if (m_sectionType != kSectionContacts || !study) return;
  try {
    Fill(selection, u"<Header_Contact/>", m_title);
    CStringList contacts(10);
    CStringList contactImages(10);
    int flag = 0;
    study->GetContactDetails(contacts, contactImages, scratchFolder, flag);
    const int contactCount = contacts.GetCount() / 2;

    if (FindTag(selection, u"<Label_ContactName/>", 0)) {
      if (contactCount == 0) {
        selection->SelectCell();
        DropTable(selection);
        selection->TypeBackspace();
        FillText(selection, u"<Contact_State/>", kNoneText);
      } else {
        TypeString(selection, ZpCommonString(54904));
        FillText(selection, u"<Label_ContactDetails/>", 55036);
        FillText(selection, u"<Label_ContactDescription/>", 55038);
        if (contactCount > 1) CloneRowPairs(selection, kNameTag, kFrictionLabelTag, u"ContactForcesRow", contactCount);
        ListWalk walk(contacts);
        ListWalk images(contactImages);
        for (int contact = 0; contact < contactCount; ++contact) FillContact(*this, selection, study, walk, images);
        if (FindTag(selection, u"<Contact_State/>", 0)) {
          selection->Delete();
          selection->TypeBackspace();
        }
      }
    }

    CStringList plotDetails(10);
    CStringList plotImages(10);
    study->GetContactVisPlotDetails(plotDetails, plotImages, scratchFolder);
    WriteVisualizationPlots(selection, plotDetails, plotImages);
  } catch (...) {
    // The section ends where it stands; the run goes on.
  }
}

// Pressure-vessel linearization, inside the study results: one table per linearization plot
// with the line's two points, a grid of results, the model's picture and up to eight curves.
// A study of any other type loses the heading and the template's table.
#include <algorithm>

#include "model/Sections.h"
#include "platform/host/Host.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr int kPressureVesselStudy = 9;
constexpr const char16_t* kHeadingTag = u"<Header2_PressureVesselLinearization/>";
constexpr const char16_t* kPoint1Tag = u"<PVL_Point1/>";
constexpr const char16_t* kCurveStem = u"<PVLCurve_1_";

// The grid: titles in row 2 and column 1, values in rows 3 to 9 of columns 2 to 9.
constexpr int kGridRows = 7;
constexpr int kGridColumns = 8;
constexpr int kCurves = 8;


// Fills the next copy of the table; a plot the host gives nothing for loses its copy.
void WritePlot(const SelectionPtr& selection, zphStudy* study, CzpPostDlgParam* plot, const CString& scratchFolder) {
  if (!plot || !FindTag(selection, u"<PVL_PlotName/>", 1)) return;
  CStringList values(10);
  CStringList summary(10);
  CStringList curves(10);
  if (study->GetPVLinearizationDetailsForReport(plot, scratchFolder, values, summary, curves) == 0) {
    DropTable(selection);
    return;
  }
  const Word::Ptr<Word::Table> table = TableAt(selection);
  TypeString(selection, ZpCommonString(50802) + u" : " + plot->m_plotName);

  ListWalk facts(summary);
  for (const char16_t* tag : {kPoint1Tag, u"<PVL_Point2/>", u"<PVL_RUnits/>"})
    if (FindTag(selection, tag, 1)) TypeString(selection, facts.Next());
  const CString modelPicture = facts.Next();
  if (FindTag(selection, u"<PVL_c1/>", 1)) {
    TypeString(selection, facts.Next());
    for (int row = 0; row < kGridRows; ++row) WriteCell(table, row + 3, 1, facts.Next());
  }
  ListWalk grid(values);
  for (int column = 2; column < 2 + kGridColumns; ++column) {
    WriteCell(table, 2, column, facts.Next());
    for (int row = 0; row < kGridRows; ++row) WriteCell(table, row + 3, column, grid.Next());
  }
  table->AutoFitBehavior(Word::wdAutoFitContent);

  FillText(selection, u"<Label_PVLCurveData/>:", 54988, 1);
  if (FindTag(selection, u"<Image_PVLModel/>", 1)) {
    TableAt(selection)->AutoFitBehavior(Word::wdAutoFitFixed);
    ReplaceTagWithImage(selection, u"<Image_PVLModel/>", modelPicture, 1, 1, 0);
  }
  if (FindTag(selection, CString(kCurveStem) + u"1/>", 1)) TableAt(selection)->AutoFitBehavior(Word::wdAutoFitFixed);
  ListWalk curve(curves);
  for (int n = 1; n <= kCurves; ++n) {
    const CString picture = curve.Next();
    const CString label = curve.Next();
    ReplaceTagWithImage(selection, CString::Formatted(u"%s%d/>", kCurveStem, n), picture, 1, 1, 0);
    FindTag(selection, CString::Formatted(u"%s%d_Label/>", kCurveStem, n), 1);
    TypeString(selection, label);
  }
}
}  // namespace

void CZPNewReportSectionStudyResults::WritePressureVesselLinearizationData(SelectionPtr selection,
                                                                           const CString& scratchFolder,
                                                                           zphStudy* study) {
  try {
    std::vector<CzpPostDlgParam*> plots;
    int plotCount = 0;
    if (study && study->GetStudyType() == kPressureVesselStudy)
      plotCount = study->GetPVLinearizationPlotParamsForReport(plots);
    plotCount = std::min(plotCount, static_cast<int>(plots.size()));

    if (FindTag(selection, kHeadingTag, 0)) {
      if (plotCount < 1) {
        selection->Delete();
        selection->Delete();
        if (FindTag(selection, kPoint1Tag, 0)) {
          selection->SelectCell();
          DropTable(selection);
          selection->Delete();
        }
        return;
      }
      TypeString(selection, u"Pressure Vessel Linearization Data");
    }
    if (plotCount >= 2 && FindTag(selection, kPoint1Tag, 0)) RepeatTable(selection, plotCount);
    for (int plot = 0; plot < plotCount; ++plot) WritePlot(selection, study, plots[static_cast<std::size_t>(plot)], scratchFolder);
  } catch (...) {
    // The linearization ends where it stands; the run goes on.
  }
}

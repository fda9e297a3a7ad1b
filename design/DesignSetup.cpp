// The set-up of a design study: its tables of design variables, constraints and goals, from the
// host's design session. A table with nothing to show goes, with the caption in its title row.
#include <span>

#include "model/Sections.h"
#include "platform/host/DesignSession.h"
#include "writers/setup/TableSteps.h"

using namespace zpsteps;

namespace {
constexpr unsigned kNoneText = 54992;
constexpr const char16_t* kHeaderTag = u"<Header_DesignStudySetUp/>";
constexpr const char16_t* kVariablesLabelTag = u"<Label_DesignVariables/>";
constexpr const char16_t* kConstraintsLabelTag = u"<Label_Constraints/>";
constexpr const char16_t* kGoalsLabelTag = u"<Label_Goals/>";

// One column of a set-up table: the tag of its header cell with the caption typed there, and
// the tag of its first row.
struct Column {
  const char16_t* headerTag;
  unsigned caption;
  const char16_t* firstRowTag;
  // An empty value in the first row takes the tag away instead of typing over it.
  bool dropTagWhenEmpty = false;
};

constexpr Column kVariableColumns[] = {{u"<L_DVName/>", 51179, u"<DVName/>"},
                                       {u"<Label_DVType/>", 50692, u"<DVType/>"},
                                       {u"<Label_DVValues/>", 50575, u"<Details_DVValues/>"},
                                       {u"<Label_DVUnits/>", 50697, u"<DVUnits/>"}};
// The blanks in "< ConstrName/>" and "<L_ ConstrType/>" belong to the tags.
constexpr Column kConstraintColumns[] = {{u"<L_ConstrName/>", 55011, u"< ConstrName/>"},
                                         {u"<L_ ConstrType/>", 55061, u"<ConstrType/>"},
                                         {u"<Label_CoBounds/>", 54958, u"<Details_Bounds/>"},
                                         {u"<Label_ConUnits/>", 50697, u"<ConstrUnits/>", true},
                                         {u"<L_ConsStudy/>", 50691, u"<ConstrStudyName/>"}};
constexpr Column kGoalColumns[] = {{u"<L_GoalName/>", 51179, u"<Goal_Name/>"},
                                   {u"<Label_GoalDetail/>", 54959, u"<Goal_Details/>"},
                                   {u"<Label_GoalProperty/>", 51132, u"<Goal_Property/>"},
                                   {u"<Label_GoalWeight/>", 54960, u"<Goal_Weight/>"},
                                   {u"<Label_GoalStudy/>", 50691, u"<Goal_StudyName/>"}};

// Caption, header row and rows of one table; `rows` holds a record of one string a column.
void WriteSetupTable(const SelectionPtr& selection, const CStringList& rows, const char16_t* captionTag,
                     unsigned caption, std::span<const Column> columns) {
  FillText(selection, captionTag, caption);
  for (const Column& column : columns) FillText(selection, column.headerTag, column.caption);

  ListWalk walk(rows);
  for (bool first = true; !walk.AtEnd(); first = false) {
    if (first) {
      for (const Column& column : columns) {
        const CString& value = walk.Next();
        if (!FindTag(selection, column.firstRowTag, 0)) continue;
        if (value.IsEmpty() && column.dropTagWhenEmpty)
          selection->TypeBackspace();
        else
          TypeString(selection, value);
      }
      continue;
    }
    // The insertion point stands in the row just written: the next goes below it.
    NewRow(selection);
    TypeString(selection, walk.Next());
    for (std::size_t column = 1; column < columns.size(); ++column) {
      NextCell(selection);
      TypeString(selection, walk.Next());
    }
  }
}

void RemoveLabel(const SelectionPtr& selection, const char16_t* tag) {
  if (!FindTag(selection, tag, 0)) return;
  selection->Delete();
  selection->TypeBackspace();
}

void RemoveTable(const SelectionPtr& selection, const char16_t* headerTag) {
  if (!FindTag(selection, headerTag, 0)) return;
  DropTable(selection);
  selection->TypeBackspace();
}

OrvOptSession_c* DesignSession() { return OrvSession_c::OrvOpt(); }
}  // namespace

void CZPNewReportSectionLoadsRestraints::GetActiveOptConstraintVariables(SelectionPtr selection, CStringList& rows) {
  if (OrvOptSession_c* session = DesignSession()) session->GetConstraintRows(rows);
  if (rows.IsEmpty()) return;
  WriteSetupTable(selection, rows, kConstraintsLabelTag, 54956, kConstraintColumns);
}

void CZPNewReportSectionLoadsRestraints::GetActiveOptGoalsVariables(SelectionPtr selection, CStringList& rows) {
  if (OrvOptSession_c* session = DesignSession()) session->GetGoalRows(rows);
  if (rows.IsEmpty()) return;
  WriteSetupTable(selection, rows, kGoalsLabelTag, 54957, kGoalColumns);
}

void CZPNewReportSectionLoadsRestraints::GetActiveOptDesignVariable(SelectionPtr selection) {
  CStringList variables(10);
  if (OrvOptSession_c* session = DesignSession()) session->GetDesignVariableRows(variables);
  CStringList constraints(10);
  CStringList goals(10);
  GetActiveOptConstraintVariables(selection, constraints);
  GetActiveOptGoalsVariables(selection, goals);
  const bool anyVariable = !variables.IsEmpty();
  const bool anyConstraint = !constraints.IsEmpty();
  const bool anyGoal = !goals.IsEmpty();

  FillText(selection, kHeaderTag, 54969);

  if (anyVariable && anyConstraint && !anyGoal) {
    RemoveTable(selection, kGoalColumns[0].headerTag);
    RemoveLabel(selection, kGoalsLabelTag);
  } else if (anyVariable && !anyConstraint) {
    RemoveTable(selection, kConstraintColumns[0].headerTag);
  } else if (!anyVariable && (anyConstraint || anyGoal)) {
    RemoveTable(selection, kVariableColumns[0].headerTag);
  } else if (!anyVariable) {
    RemoveLabel(selection, kVariablesLabelTag);
    RemoveTable(selection, kVariableColumns[0].headerTag);
    RemoveLabel(selection, kConstraintsLabelTag);
    RemoveTable(selection, kConstraintColumns[0].headerTag);
    RemoveLabel(selection, kGoalsLabelTag);
    RemoveTable(selection, kGoalColumns[0].headerTag);
    TypeString(selection, ZpCommonString(kNoneText));
  }

  if (anyVariable) WriteSetupTable(selection, variables, kVariablesLabelTag, 54954, kVariableColumns);
}

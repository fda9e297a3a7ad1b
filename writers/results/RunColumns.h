#pragma once
// The run tables of a design study: the tags of their seven columns, and the markers their
// header cells carry while the rows are written.
//
// Later rows find their columns by the captions of the header row. Captions typed into the
// document are data that no search finds, so until every row is written the name column and
// each numbered run column carry a marker of their own (ZpRunName, ZpRunColumn<n>); the writer
// types the captions over the markers at the end.
#include <array>

#include "platform/mfc/CString.h"

namespace zpruns {

inline constexpr std::array<const char16_t*, 7> kHeaderTags = {
    u"<L_ComName/>", u"<L_Units/>", u"<L_Iter1/>", u"<L_Iter2/>", u"<L_Iter3/>", u"<L_Iter4/>", u"<L_Iter5/>"};
inline constexpr std::array<const char16_t*, 5> kValueTags = {u"<SR_Iter1/>", u"<SR_Iter2/>", u"<SR_Iter3/>",
                                                              u"<SR_Iter4/>", u"<SR_Iter5/>"};
inline constexpr const char16_t* kNameTag = u"<SR_ComName/>";
inline constexpr const char16_t* kUnitsTag = u"<SR_Units/>";
inline constexpr const char16_t* kNameMarker = u"<ZpRunName/>";

// The marker of the run column whose caption is the family caption with `number`.
inline CString ColumnMarker(int number) { return CString::Formatted(u"<ZpRunColumn%d/>", number); }

// The family caption: iterations when `iterationMode` is set, else scenarios.
inline unsigned FamilyCaption(int iterationMode) { return iterationMode != 0 ? 54961 : 50806; }

}  // namespace zpruns

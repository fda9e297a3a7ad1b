#pragma once
// The writers of a report's identity: first-page header, running header, footers and cover.
//
// CZPReportHeaderInfo::UpdateHeaderDetailsInWordDoc and ...ForMotionReport call these; they
// take the header data as an argument so that the forms of study and motion reports share
// one pass.
#include "platform/mfc/CString.h"
#include "platform/word/Word.h"

class CZPReportHeaderInfo;

// Study and design-study reports: bracketed placeholders in the page headers.
void WriteStudyReportHeader(const CZPReportHeaderInfo& header, const Word::Ptr<Word::Application>& app,
                            const Word::Ptr<Word::Selection>& selection, const CString& scratchFolder,
                            const CString& modelName, const CString& studyName,
                            const CString& studyTypeText, const CString& studyLabel);

// Motion reports: tags in the page headers, no study type on the cover.
void WriteMotionReportHeader(const CZPReportHeaderInfo& header, const Word::Ptr<Word::Application>& app,
                             const Word::Ptr<Word::Selection>& selection, const CString& scratchFolder,
                             const CString& modelName, const CString& studyName);

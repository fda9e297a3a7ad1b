// The Word session of a report: the version probe, the start of a run with its ladder of
// ways to open the template, and the search test.
#include "core/DocumentPrimitives.h"
#include "core/Report.h"
#include "model/HeaderInfo.h"
#include "platform/system/FileHelpers.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Resources.h"

namespace {

constexpr const char16_t* kWordProgId = u"Word.Application";

// Texts joined by line feeds, for the session's messages.
CString JoinedTexts(std::initializer_list<unsigned> ids) {
  CString text;
  bool first = true;
  for (unsigned id : ids) {
    if (!first) text += u'\n';
    text += ZpCommonString(id);
    first = false;
  }
  return text;
}

void ShowWordCannotStart() { ShowMessageText(JoinedTexts({55052, 55053, 55054})); }

// Documents.Add with a template path as a string variant, the other arguments omitted.
Word::Ptr<Word::Document> AddDocument(const Word::Ptr<Word::Application>& app, const CString& templatePath) {
  return Word::Checked(Word::Checked(app)->GetDocuments())->Add(Word::Variant(Word::String(templatePath)));
}

}  // namespace

int ParseOfficeMajorVersion(const CString& versionText) {
  int value = 0;
  int i = 0;
  while (i < versionText.GetLength() && ZpIsSpace(versionText[i])) ++i;
  bool negative = false;
  if (i < versionText.GetLength() && (versionText[i] == u'-' || versionText[i] == u'+')) {
    negative = versionText[i] == u'-';
    ++i;
  }
  for (; i < versionText.GetLength() && versionText[i] >= u'0' && versionText[i] <= u'9'; ++i) {
    if (value > 100000000) break;
    value = value * 10 + (versionText[i] - u'0');
  }
  return negative ? -value : value;
}

void CZPReport::SetOfficeVersionNumber(int showMessage) {
  try {
    Word::Ptr<Word::Application> app;
    Word::TryCreateInstance(kWordProgId, app);
    if (app) {
      m_officeVersion = ParseOfficeMajorVersion(CString(app->GetVersion()));
      app->Quit();
      app.reset();
    } else {
      m_officeVersion = -1;
    }
  } catch (...) {
    m_officeVersion = -1;
  }
  if (m_officeVersion == -1 && showMessage != 0) ShowWordCannotStart();
}

void CZPReport::ReleaseWord() {
  m_wordDocument.reset();
  m_wordSelection.reset();
  m_wordApp.reset();
}

void CZPReport::CloseWordWithoutSaving() {
  try {
    if (m_wordDocument) m_wordDocument->Close(Word::Variant::I2(Word::wdDoNotSaveChanges));
  } catch (...) {
  }
  try {
    if (m_wordApp) m_wordApp->Quit();
  } catch (...) {
  }
  ReleaseWord();
}

int CZPReport::InitWord(const CString& templateFile, const CString& templateFolder) {
  const CString templatePath = templateFolder + u"\\" + templateFile;
  int locked = 0;
  if (!FileProbe(templatePath, locked)) {
    FailRun(u"the report template \"" + templatePath + u"\" is missing or cannot be read");
    ShowMessageText(JoinedTexts({55055, 55054}));
    return 0;
  }

  // What an earlier run left behind is closed first.
  CloseWordWithoutSaving();

  try {
    Word::TryCreateInstance(kWordProgId, m_wordApp);
    if (!m_wordApp) {
      FailRun(u"Word could not be started");
      ShowWordCannotStart();
      return 0;
    }
    if (ParseOfficeMajorVersion(CString(m_wordApp->GetVersion())) < 11) {
      FailRun(u"Word is too old for the report");
      ShowMessageById(55015);
      CloseWordWithoutSaving();
      return 0;
    }
    m_wordApp->PutVisible(false);

    m_wordApp->ChangeFileOpenDirectory(Word::String(templateFolder));
    m_wordDocument = AddDocument(m_wordApp, templateFile);
    if (!m_wordDocument) m_wordDocument = AddDocument(m_wordApp, templatePath);
    if (!m_wordDocument) {
      auto options = Word::Checked(m_wordApp->GetOptions());
      const CString userTemplates(options->GetDefaultFilePath(Word::wdUserTemplatesPath));
      if (!userTemplates.IsEmpty()) {
        options->PutDefaultFilePath(Word::wdUserTemplatesPath, Word::String(templateFolder));
        try {
          m_wordApp->ChangeFileOpenDirectory(Word::String(templateFolder));
          m_wordDocument = AddDocument(m_wordApp, templateFile);
          if (!m_wordDocument) m_wordDocument = AddDocument(m_wordApp, templatePath);
          if (!m_wordDocument) {
            m_wordApp->PutVisible(true);
            m_wordApp->PutVisible(false);
            m_wordDocument = AddDocument(m_wordApp, templatePath);
          }
        } catch (...) {
          options->PutDefaultFilePath(Word::wdUserTemplatesPath, Word::String(userTemplates));
          throw;
        }
        options->PutDefaultFilePath(Word::wdUserTemplatesPath, Word::String(userTemplates));
      }
    }
    if (!m_wordDocument) {
      FailRun(u"Word made no document of the report template \"" + templatePath + u"\"");
      CloseWordWithoutSaving();
      ShowMessageText(JoinedTexts({55081, 55054}));
      return 0;
    }

    m_wordSelection = m_wordApp->GetSelection();
    if (!m_wordSelection) {
      FailRun(u"Word gave no selection in the new document");
      CloseWordWithoutSaving();
      ShowMessageById(55001);
      return 0;
    }
    if (!CheckIfTheFindAPIWorkingProperly()) {
      FailRun(u"the report template \"" + templatePath + u"\" lacks the tag " + kMainModelImageTag +
              u" of its cover, or searching does not work in it");
      CloseWordWithoutSaving();
      ShowMessageById(55082);
      return 0;
    }

    const int paper = (m_headerInfo && m_headerInfo->m_headerChoice != 0) ? Word::wdPaperA4 : Word::wdPaperLetter;
    Word::Checked(m_wordDocument->GetPageSetup())->PutPaperSize(paper);
    return 1;
  } catch (const Word::ComError& e) {
    // Most often the template itself: not a package, damaged, or no document inside.
    const CString what = FromUtf8(e.Description().empty() ? std::string(e.what()) : e.Description());
    if (!m_wordDocument) {
      FailRun(u"the report template \"" + templatePath + u"\" cannot be opened: " + what);
      CloseWordWithoutSaving();
      ShowMessageText(JoinedTexts({55081}) + u"\n" + what);
    } else {
      FailRun(u"Word failed while it prepared the document: " + what);
      CloseWordWithoutSaving();
      ShowMessageById(55001);
    }
    return 0;
  } catch (...) {
    FailRun(u"Word failed while it prepared the document");
    CloseWordWithoutSaving();
    ShowMessageById(55001);
    return 0;
  }
}

int CZPReport::CheckIfTheFindAPIWorkingProperly() {
  if (!m_wordSelection) return 0;
  if (!FindTag(m_wordSelection, kMainModelImageTag, 0)) return 0;
  return CString(m_wordSelection->GetText()) == CString(kMainModelImageTag) ? 1 : 0;
}

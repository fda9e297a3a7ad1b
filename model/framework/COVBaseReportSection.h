#pragma once
// The host framework's section base: the fields every section has, its store order and the
// virtual slots of the dialogs.
#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"

class CArchive;
class CDataExchange;
class CDialog;

class COVBaseReportSection : public CObject {
public:
  // The kind and the number of its title text; the derived class loads the title.
  COVBaseReportSection(int kind, unsigned titleId);
  COVBaseReportSection(const COVBaseReportSection&) = default;
  COVBaseReportSection& operator=(const COVBaseReportSection&) = default;
  ~COVBaseReportSection() override = default;

  // ---- virtual slots, in their order
  // A new section on the heap, a copy of this one with the same run-time class; the caller owns it.
  virtual COVBaseReportSection* Clone() const = 0;
  // Dialog hooks: move fields to and from the dialog's controls, enable and show them.
  // Here they do nothing; the report dialogs give them their behaviour.
  virtual void DoDataExchange(CDataExchange* exchange);
  virtual void UpdateUI(CDialog* dialog);
  virtual void ShowSectionUI(CDialog* dialog, int show);

  // The base part of the record: m_titleDefault, m_title, m_commentsOn, m_comments,
  // m_sectionType, m_sectionId, m_included, m_sectionAux.
  void Serialize(CArchive& archive) override;

  CString GetTitle() const { return m_title; }
  CString GetTitleDefault() const { return m_titleDefault; }
  int getType() const { return m_sectionType; }
  void SetSectionId(int id) { m_sectionId = id; }

  CString m_titleDefault;  // the title as it came from the string table
  CString m_title;         // the title the user sees; at most 50 characters
  int m_commentsOn = 0;    // non-zero: the comment text is written
  CString m_comments;      // at most 1000 characters
  int m_sectionType;       // the kind, 0 to 18
  int m_sectionId = 0;     // stored; nothing reads it
  int m_included = 1;      // the drivers take any non-zero value as included; counting takes 1 only
  int m_sectionAux = 0;    // stored; nothing reads it
};

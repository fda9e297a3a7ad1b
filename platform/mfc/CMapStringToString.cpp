#include "platform/mfc/CMapStringToString.h"

#include "platform/mfc/CArchive.h"

CMapStringToString::CMapStringToString(const CMapStringToString& other)
    : CObject(other), m_blockSize(other.m_blockSize) {
  for (const Entry& e : other.m_entries) SetAt(e.key, e.value);
}

CMapStringToString& CMapStringToString::operator=(const CMapStringToString& other) {
  if (this != &other) {
    RemoveAll();
    m_blockSize = other.m_blockSize;
    for (const Entry& e : other.m_entries) SetAt(e.key, e.value);
  }
  return *this;
}

BOOL CMapStringToString::Lookup(const char16_t* key, CString& value) const {
  auto it = m_index.find(CString(key));
  if (it == m_index.end()) return FALSE;
  value = it->second->value;
  return TRUE;
}

void CMapStringToString::SetAt(const char16_t* key, const char16_t* value) { (*this)[key] = CString(value); }

CString& CMapStringToString::operator[](const char16_t* key) {
  CString k(key);
  auto it = m_index.find(k);
  if (it != m_index.end()) return it->second->value;
  m_entries.push_back(Entry{k, CString()});
  auto last = std::prev(m_entries.end());
  m_index.emplace(std::move(k), last);
  return last->value;
}

BOOL CMapStringToString::RemoveKey(const char16_t* key) {
  auto it = m_index.find(CString(key));
  if (it == m_index.end()) return FALSE;
  m_entries.erase(it->second);
  m_index.erase(it);
  return TRUE;
}

void CMapStringToString::RemoveAll() noexcept {
  m_index.clear();
  m_entries.clear();
}

POSITION CMapStringToString::GetStartPosition() const noexcept {
  if (m_entries.empty()) return nullptr;
  return reinterpret_cast<POSITION>(const_cast<Entry*>(&m_entries.front()));
}

void CMapStringToString::GetNextAssoc(POSITION& pos, CString& key, CString& value) const {
  if (!pos) throw CInvalidArgException("CMapStringToString: null POSITION");
  const Entry* e = reinterpret_cast<const Entry*>(pos);
  key = e->key;
  value = e->value;
  // Find the entry's successor through the index (entries are unique by key).
  auto it = m_index.find(e->key);
  if (it == m_index.end()) throw CInvalidArgException("CMapStringToString: stale POSITION");
  auto next = std::next(it->second);
  pos = next == m_entries.end() ? nullptr : reinterpret_cast<POSITION>(const_cast<Entry*>(&*next));
}

void CMapStringToString::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    archive.WriteCount(static_cast<DWORD>(m_entries.size()));
    for (const Entry& e : m_entries) archive << e.key << e.value;
  } else {
    DWORD count = archive.ReadCount();
    while (count-- > 0) {
      CString key, value;
      archive >> key >> value;
      SetAt(key, value);
    }
  }
}

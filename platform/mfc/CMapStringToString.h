#pragma once
// CMapStringToString: a map from string to string. Keys are case sensitive.
// Its own order (GetStartPosition / GetNextAssoc) is the order in which keys were first set;
// setting an existing key keeps its place, removing a key takes it out of the order.
//
//   POSITION pos = map.GetStartPosition();
//   while (pos) { CString key, value; map.GetNextAssoc(pos, key, value); ... }
#include <list>
#include <unordered_map>

#include "platform/mfc/AfxTypes.h"
#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"

class CMapStringToString : public CObject {
public:
  explicit CMapStringToString(int blockSize = 10) : m_blockSize(blockSize) {}
  CMapStringToString(const CMapStringToString& other);
  CMapStringToString& operator=(const CMapStringToString& other);
  CMapStringToString(CMapStringToString&&) noexcept = default;
  CMapStringToString& operator=(CMapStringToString&&) noexcept = default;

  int GetCount() const noexcept { return static_cast<int>(m_entries.size()); }
  int GetSize() const noexcept { return GetCount(); }
  bool IsEmpty() const noexcept { return m_entries.empty(); }

  // TRUE and the value when the key is present; `value` is untouched otherwise.
  BOOL Lookup(const char16_t* key, CString& value) const;
  void SetAt(const char16_t* key, const char16_t* value);
  // The value of `key`, made empty when it was not there.
  CString& operator[](const char16_t* key);
  BOOL RemoveKey(const char16_t* key);
  void RemoveAll() noexcept;

  POSITION GetStartPosition() const noexcept;
  // Gives the entry at `pos` and moves `pos` on (null after the last). Null `pos` throws
  // CInvalidArgException.
  void GetNextAssoc(POSITION& pos, CString& key, CString& value) const;

  void Serialize(CArchive& archive) override;

private:
  struct Entry {
    CString key;
    CString value;
  };
  using List = std::list<Entry>;
  List m_entries;
  std::unordered_map<CString, List::iterator> m_index;
  int m_blockSize;
};

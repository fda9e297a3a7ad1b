#pragma once
// CStringList: an ordered, doubly linked list of strings, walked by POSITION.
//
//   POSITION pos = list.GetHeadPosition();
//   while (pos) { CString s = list.GetNext(pos); ... }
//
// GetNext, GetPrev, GetAt, SetAt, RemoveAt, InsertBefore/After with a null POSITION (a walk
// past the end), and GetHead/GetTail/RemoveHead/RemoveTail of an empty list, throw
// CInvalidArgException. A POSITION stays valid until its element is removed.
#include <cstddef>
#include <iterator>

#include "platform/mfc/AfxTypes.h"
#include "platform/mfc/CObject.h"
#include "platform/mfc/CString.h"

class CStringList : public CObject {
  struct Node {
    Node* next = nullptr;
    Node* prev = nullptr;
    CString data;
  };

public:
  explicit CStringList(int blockSize = 10);
  CStringList(const CStringList& other);
  CStringList(CStringList&& other) noexcept;
  CStringList& operator=(const CStringList& other);
  CStringList& operator=(CStringList&& other) noexcept;
  ~CStringList() override;

  int GetCount() const noexcept { return m_count; }
  int GetSize() const noexcept { return m_count; }
  bool IsEmpty() const noexcept { return m_count == 0; }
  int GetBlockSize() const noexcept { return m_blockSize; }

  CString& GetHead();
  const CString& GetHead() const;
  CString& GetTail();
  const CString& GetTail() const;
  CString RemoveHead();
  CString RemoveTail();

  POSITION AddHead(const CString& value);
  POSITION AddTail(const CString& value);
  void AddHead(const CStringList& other);
  void AddTail(const CStringList& other);
  void RemoveAll() noexcept;

  POSITION GetHeadPosition() const noexcept { return ToPos(m_head); }
  POSITION GetTailPosition() const noexcept { return ToPos(m_tail); }
  // The element at `pos`; `pos` moves to the next one (null after the tail).
  CString& GetNext(POSITION& pos);
  const CString& GetNext(POSITION& pos) const;
  CString& GetPrev(POSITION& pos);
  const CString& GetPrev(POSITION& pos) const;
  CString& GetAt(POSITION pos);
  const CString& GetAt(POSITION pos) const;
  void SetAt(POSITION pos, const CString& value);
  void RemoveAt(POSITION pos);
  POSITION InsertBefore(POSITION pos, const CString& value);
  POSITION InsertAfter(POSITION pos, const CString& value);

  // First element equal to `value` (case sensitive) after `startAfter` (null: from the head).
  POSITION Find(const char16_t* value, POSITION startAfter = nullptr) const;
  // The element with this zero-based index, or null.
  POSITION FindIndex(int index) const noexcept;

  // Stored as a count (16-bit, or FFFF and a 32-bit count) and the strings.
  void Serialize(CArchive& archive) override;

  // Range-for over the strings, head to tail.
  template <class N, class V>
  class Iter {
  public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = CString;
    using difference_type = std::ptrdiff_t;
    using pointer = V*;
    using reference = V&;
    explicit Iter(N* n = nullptr) : m_n(n) {}
    reference operator*() const { return m_n->data; }
    pointer operator->() const { return &m_n->data; }
    Iter& operator++() { m_n = m_n->next; return *this; }
    Iter operator++(int) { Iter t = *this; m_n = m_n->next; return t; }
    bool operator==(const Iter& o) const { return m_n == o.m_n; }

  private:
    N* m_n;
  };
  using iterator = Iter<Node, CString>;
  using const_iterator = Iter<const Node, const CString>;
  iterator begin() { return iterator(m_head); }
  iterator end() { return iterator(); }
  const_iterator begin() const { return const_iterator(m_head); }
  const_iterator end() const { return const_iterator(); }

private:
  static POSITION ToPos(Node* n) noexcept { return reinterpret_cast<POSITION>(n); }
  static Node* ToNode(POSITION p);  // throws CInvalidArgException for null

  Node* m_head = nullptr;
  Node* m_tail = nullptr;
  int m_count = 0;
  int m_blockSize = 10;
};

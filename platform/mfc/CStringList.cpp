#include "platform/mfc/CStringList.h"

#include "platform/mfc/CArchive.h"

CStringList::CStringList(int blockSize) : m_blockSize(blockSize > 0 ? blockSize : 10) {}

CStringList::CStringList(const CStringList& other) : CObject(other), m_blockSize(other.m_blockSize) {
  AddTail(other);
}

CStringList::CStringList(CStringList&& other) noexcept
    : m_head(other.m_head), m_tail(other.m_tail), m_count(other.m_count), m_blockSize(other.m_blockSize) {
  other.m_head = other.m_tail = nullptr;
  other.m_count = 0;
}

CStringList& CStringList::operator=(const CStringList& other) {
  if (this != &other) {
    CStringList copy(other);
    *this = std::move(copy);
  }
  return *this;
}

CStringList& CStringList::operator=(CStringList&& other) noexcept {
  if (this != &other) {
    RemoveAll();
    m_head = other.m_head;
    m_tail = other.m_tail;
    m_count = other.m_count;
    m_blockSize = other.m_blockSize;
    other.m_head = other.m_tail = nullptr;
    other.m_count = 0;
  }
  return *this;
}

CStringList::~CStringList() { RemoveAll(); }

CStringList::Node* CStringList::ToNode(POSITION p) {
  if (!p) throw CInvalidArgException("CStringList: null POSITION");
  return reinterpret_cast<Node*>(p);
}

CString& CStringList::GetHead() {
  if (!m_head) throw CInvalidArgException("CStringList: empty list");
  return m_head->data;
}
const CString& CStringList::GetHead() const {
  if (!m_head) throw CInvalidArgException("CStringList: empty list");
  return m_head->data;
}
CString& CStringList::GetTail() {
  if (!m_tail) throw CInvalidArgException("CStringList: empty list");
  return m_tail->data;
}
const CString& CStringList::GetTail() const {
  if (!m_tail) throw CInvalidArgException("CStringList: empty list");
  return m_tail->data;
}

CString CStringList::RemoveHead() {
  if (!m_head) throw CInvalidArgException("CStringList: empty list");
  CString value = std::move(m_head->data);
  RemoveAt(ToPos(m_head));
  return value;
}

CString CStringList::RemoveTail() {
  if (!m_tail) throw CInvalidArgException("CStringList: empty list");
  CString value = std::move(m_tail->data);
  RemoveAt(ToPos(m_tail));
  return value;
}

POSITION CStringList::AddHead(const CString& value) {
  Node* n = new Node{m_head, nullptr, value};
  if (m_head) m_head->prev = n; else m_tail = n;
  m_head = n;
  ++m_count;
  return ToPos(n);
}

POSITION CStringList::AddTail(const CString& value) {
  Node* n = new Node{nullptr, m_tail, value};
  if (m_tail) m_tail->next = n; else m_head = n;
  m_tail = n;
  ++m_count;
  return ToPos(n);
}

void CStringList::AddHead(const CStringList& other) {
  if (&other == this) {
    CStringList copy(other);
    AddHead(copy);
    return;
  }
  for (Node* n = other.m_tail; n; n = n->prev) AddHead(n->data);
}

void CStringList::AddTail(const CStringList& other) {
  if (&other == this) {
    CStringList copy(other);
    AddTail(copy);
    return;
  }
  for (Node* n = other.m_head; n; n = n->next) AddTail(n->data);
}

void CStringList::RemoveAll() noexcept {
  Node* n = m_head;
  while (n) {
    Node* next = n->next;
    delete n;
    n = next;
  }
  m_head = m_tail = nullptr;
  m_count = 0;
}

CString& CStringList::GetNext(POSITION& pos) {
  Node* n = ToNode(pos);
  pos = ToPos(n->next);
  return n->data;
}
const CString& CStringList::GetNext(POSITION& pos) const {
  Node* n = ToNode(pos);
  pos = ToPos(n->next);
  return n->data;
}
CString& CStringList::GetPrev(POSITION& pos) {
  Node* n = ToNode(pos);
  pos = ToPos(n->prev);
  return n->data;
}
const CString& CStringList::GetPrev(POSITION& pos) const {
  Node* n = ToNode(pos);
  pos = ToPos(n->prev);
  return n->data;
}
CString& CStringList::GetAt(POSITION pos) { return ToNode(pos)->data; }
const CString& CStringList::GetAt(POSITION pos) const { return ToNode(pos)->data; }
void CStringList::SetAt(POSITION pos, const CString& value) { ToNode(pos)->data = value; }

void CStringList::RemoveAt(POSITION pos) {
  Node* n = ToNode(pos);
  if (n->prev) n->prev->next = n->next; else m_head = n->next;
  if (n->next) n->next->prev = n->prev; else m_tail = n->prev;
  delete n;
  --m_count;
}

POSITION CStringList::InsertBefore(POSITION pos, const CString& value) {
  if (!pos) return AddHead(value);
  Node* at = ToNode(pos);
  Node* n = new Node{at, at->prev, value};
  if (at->prev) at->prev->next = n; else m_head = n;
  at->prev = n;
  ++m_count;
  return ToPos(n);
}

POSITION CStringList::InsertAfter(POSITION pos, const CString& value) {
  if (!pos) return AddTail(value);
  Node* at = ToNode(pos);
  Node* n = new Node{at->next, at, value};
  if (at->next) at->next->prev = n; else m_tail = n;
  at->next = n;
  ++m_count;
  return ToPos(n);
}

POSITION CStringList::Find(const char16_t* value, POSITION startAfter) const {
  std::u16string_view v(value ? value : u"");
  Node* n = startAfter ? reinterpret_cast<Node*>(startAfter)->next : m_head;
  for (; n; n = n->next) {
    if (std::u16string_view(n->data) == v) return ToPos(n);
  }
  return nullptr;
}

POSITION CStringList::FindIndex(int index) const noexcept {
  if (index < 0 || index >= m_count) return nullptr;
  Node* n = m_head;
  while (index-- > 0) n = n->next;
  return ToPos(n);
}

void CStringList::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    archive.WriteCount(static_cast<DWORD>(m_count));
    for (Node* n = m_head; n; n = n->next) archive << n->data;
  } else {
    DWORD count = archive.ReadCount();
    while (count-- > 0) {
      CString value;
      archive >> value;
      AddTail(value);
    }
  }
}

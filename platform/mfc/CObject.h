#pragma once
// CObject: the framework's serialisable root. A stored record is the object's fields in a
// fixed order, base class first; there are no class names in the stream.
class CArchive;

class CObject {
public:
  CObject() = default;
  virtual ~CObject() = default;
  virtual void Serialize(CArchive& archive);
  virtual bool IsSerializable() const { return true; }
  // Diagnostic slots of the framework; they do nothing in this build.
  virtual void AssertValid() const {}

protected:
  CObject(const CObject&) = default;
  CObject& operator=(const CObject&) = default;
};

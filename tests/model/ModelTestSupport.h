#pragma once
// Shared pieces of the model tests: a temporary application data folder, the archive
// versions put back after each test, and byte helpers (StoreBytes: tests/support/ArchiveBytes.h).
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <typeinfo>
#include <vector>

#include "model/Archive.h"
#include "platform/host/Utilities.h"
#include "platform/mfc/Afx.h"
#include "platform/system/MessageBox.h"
#include "tests/support/ArchiveBytes.h"
#include "tests/support/DocxTestKit.h"

namespace zptest {

// The run-time class of what a pointer points to.
template <class T>
const std::type_info& ClassOf(const T* p) {
  return typeid(*p);
}

class ModelTest : public ::testing::Test {
protected:
  void SetUp() override { zpUtilities_c::SetOVAppDataFolder(FromUtf8(m_appData)); }
  void TearDown() override {
    EXPECT_EQ(m_box.Count(), 0u) << "the model shows no messages";
    zpUtilities_c::SetOVAppDataFolder(CString());
  }

  std::string FormatsPath() const { return m_appData + "/studyReportFormats"; }
  Bytes ReadFile(const std::string& path) const {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  void WriteFile(const std::string& path, const Bytes& bytes) const {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }

  docxtest::TempDir m_temp;
  std::string m_dir = m_temp.Path();
  std::string m_appData = m_dir + "/appdata";
  ScopedMessageBox m_box;
};

// A little writer of raw records, for archives of older layouts.
class RawWriter {
public:
  RawWriter& Int(int v) {
    for (int i = 0; i < 4; ++i) m_bytes.push_back(static_cast<BYTE>((static_cast<unsigned>(v) >> (8 * i)) & 0xFF));
    return *this;
  }
  RawWriter& Str(const CString& s) {
    Bytes b = StoreBytes([&](CArchive& ar) { ar << s; });
    m_bytes.insert(m_bytes.end(), b.begin(), b.end());
    return *this;
  }
  RawWriter& Raw(const Bytes& b) {
    m_bytes.insert(m_bytes.end(), b.begin(), b.end());
    return *this;
  }
  const Bytes& bytes() const { return m_bytes; }

private:
  Bytes m_bytes;
};

}  // namespace zptest

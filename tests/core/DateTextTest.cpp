// Cover and header dates follow the locale of the process's environment.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "core/DateText.h"
#include "platform/mfc/Utf.h"
#include "tests/support/DocxTestKit.h"

namespace {

// The environment of one locale for the length of a scope: LC_ALL, and LOCPATH for locales
// compiled by the test.
class ScopedLocale {
public:
  ScopedLocale(const std::string& name, const std::string& locpath = {}) {
    Save("LC_ALL");
    Save("LOCPATH");
    setenv("LC_ALL", name.c_str(), 1);
    if (locpath.empty()) unsetenv("LOCPATH");
    else setenv("LOCPATH", locpath.c_str(), 1);
  }
  ~ScopedLocale() {
    for (auto& [name, value] : m_saved) {
      if (value.second) setenv(name.c_str(), value.first.c_str(), 1);
      else unsetenv(name.c_str());
    }
  }

private:
  void Save(const std::string& name) {
    const char* v = std::getenv(name.c_str());
    m_saved.emplace_back(name, std::make_pair(v ? std::string(v) : std::string(), v != nullptr));
  }
  std::vector<std::pair<std::string, std::pair<std::string, bool>>> m_saved;
};

// Compiles a locale from the system's sources into `folder`; false when that cannot be done
// here (no locale sources installed).
bool CompileLocale(const std::string& folder, const std::string& source, const std::string& name) {
  const std::string command = "localedef -i " + source + " -f UTF-8 '" + folder + "/" + name + "' >/dev/null 2>&1";
  return std::system(command.c_str()) == 0;
}

std::time_t Monday23November2026() {
  std::tm t{};
  t.tm_year = 2026 - 1900;
  t.tm_mon = 10;
  t.tm_mday = 23;
  t.tm_hour = 12;
  t.tm_isdst = -1;
  return std::mktime(&t);
}

std::string Short() { return ToUtf8(ShortDateText(Monday23November2026()).GetString()); }
std::string Long() { return ToUtf8(LongDateText(Monday23November2026()).GetString()); }

}  // namespace

TEST(DateText, FollowsTheLocaleOfTheEnvironment) {
  {  // The C locale, and one that is not installed, write as before.
    for (const char* name : {"C", "POSIX", "C.UTF-8", "xx_NOWHERE.UTF-8"}) {
      ScopedLocale locale(name);
      EXPECT_EQ(Short(), "11/23/2026") << name;
      EXPECT_EQ(Long(), "Monday, November 23, 2026") << name;
    }
  }
  docxtest::TempDir locales;
  if (!CompileLocale(locales.Path(), "de_DE", "de_DE.UTF-8") || !CompileLocale(locales.Path(), "en_US", "en_US.UTF-8") ||
      !CompileLocale(locales.Path(), "ja_JP", "ja_JP.UTF-8")) {
    GTEST_SKIP() << "localedef cannot compile de_DE, en_US and ja_JP here (Debian's locales package)";
  }
  {
    ScopedLocale locale("de_DE.UTF-8", locales.Path());
    EXPECT_EQ(Short(), "23.11.2026");
    EXPECT_EQ(Long(), "Montag, 23. November 2026");
  }
  {
    ScopedLocale locale("en_US.UTF-8", locales.Path());
    EXPECT_EQ(Short(), "11/23/2026");
    EXPECT_EQ(Long(), "Monday, November 23, 2026");
  }
  {  // LC_TIME alone decides when LC_ALL is not set.
    ScopedLocale locale("", locales.Path());
    unsetenv("LC_ALL");
    setenv("LC_TIME", "de_DE.UTF-8", 1);
    EXPECT_EQ(Short(), "23.11.2026");
    unsetenv("LC_TIME");
  }
  {
    ScopedLocale locale("ja_JP.UTF-8", locales.Path());
    EXPECT_EQ(Short(), "2026\xE5\xB9\xB4" "11\xE6\x9C\x88" "23\xE6\x97\xA5");
    EXPECT_EQ(Long(), "2026\xE5\xB9\xB4" "11\xE6\x9C\x88" "23\xE6\x97\xA5 \xE6\x9C\x88\xE6\x9B\x9C\xE6\x97\xA5");
  }
}

#pragma once
// What the readers of the solver's result files share: a source of lines that reads a file in
// large chunks (or walks text held in memory) without a string per line, and the parsing of
// the fixed-width and free-format numbers those files hold.
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace ccx {

class LineSource {
public:
  // Lines longer than maxLine characters (without the line end) are refused.
  LineSource(const std::string& path, std::size_t maxLine);
  // Text held by the caller, who keeps it alive; name stands for the file in messages.
  LineSource(std::string_view text, std::string name, std::size_t maxLine);
  ~LineSource();
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;

  // The next line without its end ("\n" or "\r\n"); false at the end of the input. The view
  // stays valid until the next call.
  bool Next(std::string_view& line);
  // The number of the line Next returned last (1 for the first).
  std::int64_t LineNumber() const { return m_line; }
  const std::string& Name() const { return m_name; }
  // Bytes of the input not handed out yet: a bound for how many records can still follow
  // (0 where the size of the input is unknown).
  std::uint64_t RemainingBytes() const { return m_total > m_consumed ? m_total - m_consumed : 0; }
  // The size of the input, or what has been read of it where the size is unknown.
  std::uint64_t SizeBytes() const { return m_total > m_consumed ? m_total : m_consumed; }

  // Throws a ReadError for the line Next returned last (or another one).
  [[noreturn]] void Fail(const std::string& problem) const;
  [[noreturn]] void FailAt(std::int64_t line, const std::string& problem) const;

private:
  bool Fill();

  std::string m_name;
  std::FILE* m_file = nullptr;
  std::vector<char> m_buffer;
  const char* m_pos = nullptr;  // the unread part of the buffer (or of the text)
  const char* m_end = nullptr;
  std::uint64_t m_total = 0;
  std::uint64_t m_consumed = 0;
  std::int64_t m_line = 0;
  std::size_t m_maxLine;
  bool m_eof = false;
};

enum class Field { Ok, Blank, Bad };

// The integer in columns [pos, pos + width) of line (cut short by the end of the line), with
// spaces on either side. Blank when the columns hold only spaces or lie past the line's end.
Field IntField(std::string_view line, std::size_t pos, std::size_t width, std::int64_t& value);

// A real number as C's printf writes it (%E, %f, "nan", "inf"), after any spaces from p.
// Returns the end of the number, or nullptr when none starts there.
const char* ParseReal(const char* p, const char* end, double& value);

// One whitespace-free token as a real number, also in the form Fortran writes for an exponent of
// three digits ("0.1234567-100") and its overflow mark ("*****", taken as NaN).
bool ParseFortranReal(std::string_view token, double& value);
// One token as an int (no spaces, no fraction).
bool ParseInt(std::string_view token, std::int64_t& value);

// Values out of float's range become infinities (NaN stays NaN).
float ToFloat(double value);

std::string_view Trim(std::string_view text);
// The next whitespace-separated token from text, which is advanced past it; empty at the end.
std::string_view NextToken(std::string_view& text);

}  // namespace ccx

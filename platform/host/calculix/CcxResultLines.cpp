#include "platform/host/calculix/CcxResultLines.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>

#include "platform/host/calculix/CcxError.h"

namespace ccx {

namespace {

// Big enough that a read costs little per line; far above any line a reader accepts.
constexpr std::size_t kChunk = 4u << 20;

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }

}  // namespace

LineSource::LineSource(const std::string& path, std::size_t maxLine)
    : m_name(path), m_maxLine(std::min(maxLine, kChunk / 2)) {
  m_file = std::fopen(path.c_str(), "rb");
  if (!m_file) throw ReadError(path, 0, std::string("cannot open the file: ") + std::strerror(errno));
  std::error_code ec;
  auto size = std::filesystem::file_size(path, ec);
  m_total = ec ? 0 : static_cast<std::uint64_t>(size);
  m_buffer.resize(kChunk);
  m_pos = m_end = m_buffer.data();
}

LineSource::LineSource(std::string_view text, std::string name, std::size_t maxLine)
    : m_name(std::move(name)), m_pos(text.data()), m_end(text.data() + text.size()),
      m_total(text.size()), m_maxLine(maxLine), m_eof(true) {}

LineSource::~LineSource() {
  if (m_file) std::fclose(m_file);
}

bool LineSource::Fill() {
  if (m_eof) return false;
  std::size_t kept = static_cast<std::size_t>(m_end - m_pos);
  if (kept && m_pos != m_buffer.data()) std::memmove(m_buffer.data(), m_pos, kept);
  std::size_t got = std::fread(m_buffer.data() + kept, 1, m_buffer.size() - kept, m_file);
  m_pos = m_buffer.data();
  m_end = m_buffer.data() + kept + got;
  if (got == 0) {
    if (std::ferror(m_file)) FailAt(m_line + 1, std::string("cannot read the file: ") + std::strerror(errno));
    m_eof = true;
    return false;
  }
  return true;
}

bool LineSource::Next(std::string_view& line) {
  for (;;) {
    std::size_t avail = static_cast<std::size_t>(m_end - m_pos);
    std::size_t look = std::min(avail, m_maxLine + 2);  // room for "\r\n"
    const char* nl = static_cast<const char*>(std::memchr(m_pos, '\n', look));
    const char* stop = nl;
    if (!nl) {
      if (avail <= m_maxLine + 1 && Fill()) continue;
      if (avail > m_maxLine + 1) {
        ++m_line;
        Fail("the line is longer than " + std::to_string(m_maxLine) + " characters");
      }
      if (m_pos == m_end) return false;
      stop = m_end;  // the last line, without a line end
    }
    std::size_t length = static_cast<std::size_t>(stop - m_pos);
    if (length && m_pos[length - 1] == '\r') --length;
    line = std::string_view(m_pos, length);
    const char* next = nl ? nl + 1 : m_end;
    m_consumed += static_cast<std::uint64_t>(next - m_pos);
    m_pos = next;
    ++m_line;
    if (length > m_maxLine) Fail("the line is longer than " + std::to_string(m_maxLine) + " characters");
    return true;
  }
}

void LineSource::Fail(const std::string& problem) const { throw ReadError(m_name, m_line, problem); }

void LineSource::FailAt(std::int64_t line, const std::string& problem) const {
  throw ReadError(m_name, line, problem);
}

Field IntField(std::string_view line, std::size_t pos, std::size_t width, std::int64_t& value) {
  if (pos >= line.size()) return Field::Blank;
  const char* p = line.data() + pos;
  const char* end = line.data() + std::min(line.size(), pos + width);
  while (p < end && *p == ' ') ++p;
  if (p == end) return Field::Blank;
  bool negative = false;
  if (*p == '-' || *p == '+') negative = *p++ == '-';
  if (p == end || *p < '0' || *p > '9') return Field::Bad;
  std::int64_t v = 0;
  int digits = 0;
  while (p < end && *p >= '0' && *p <= '9') {
    if (++digits > 18) return Field::Bad;
    v = v * 10 + (*p++ - '0');
  }
  while (p < end && *p == ' ') ++p;
  if (p != end) return Field::Bad;
  value = negative ? -v : v;
  return Field::Ok;
}

const char* ParseReal(const char* p, const char* end, double& value) {
  while (p < end && IsSpace(*p)) ++p;
  if (p < end && *p == '+') ++p;
  if (p == end) return nullptr;
  auto [stop, ec] = std::from_chars(p, end, value);
  if (ec == std::errc::result_out_of_range) {
    // Beyond double's range: an infinity of the number's sign, or zero for an underflow.
    bool negative = *p == '-';
    const char* e = p;
    while (e < stop && *e != 'e' && *e != 'E') ++e;
    bool tiny = e < stop - 1 && e[1] == '-';
    value = tiny ? 0.0 : (negative ? -HUGE_VAL : HUGE_VAL);
    return stop;
  }
  if (ec != std::errc()) return nullptr;
  return stop;
}

bool ParseFortranReal(std::string_view token, double& value) {
  if (token.empty()) return false;
  if (token.find_first_not_of('*') == std::string_view::npos) {
    value = std::numeric_limits<double>::quiet_NaN();
    return true;
  }
  const char* end = token.data() + token.size();
  const char* stop = ParseReal(token.data(), end, value);
  if (!stop) return false;
  if (stop == end) return true;
  // "0.1234567-100": a mantissa with a point and no exponent letter, then a signed exponent.
  std::string_view mantissa(token.data(), static_cast<std::size_t>(stop - token.data()));
  if ((*stop != '-' && *stop != '+') || mantissa.find('.') == std::string_view::npos ||
      mantissa.find_first_of("eEnNiI") != std::string_view::npos)
    return false;
  int exponent = 0;
  const char* e = *stop == '+' ? stop + 1 : stop;
  auto [estop, ec] = std::from_chars(e, end, exponent);
  if (ec != std::errc() || estop != end) return false;
  value *= std::pow(10.0, exponent);
  return true;
}

bool ParseInt(std::string_view token, std::int64_t& value) {
  if (token.empty()) return false;
  const char* p = token.data();
  if (*p == '+') ++p;
  auto [stop, ec] = std::from_chars(p, token.data() + token.size(), value);
  return ec == std::errc() && stop == token.data() + token.size();
}

float ToFloat(double value) {
  constexpr double kMax = std::numeric_limits<float>::max();
  if (value > kMax) return std::numeric_limits<float>::infinity();
  if (value < -kMax) return -std::numeric_limits<float>::infinity();
  return static_cast<float>(value);
}

std::string_view Trim(std::string_view text) {
  std::size_t b = 0, e = text.size();
  while (b < e && IsSpace(text[b])) ++b;
  while (e > b && IsSpace(text[e - 1])) --e;
  return text.substr(b, e - b);
}

std::string_view NextToken(std::string_view& text) {
  std::size_t b = 0;
  while (b < text.size() && IsSpace(text[b])) ++b;
  std::size_t e = b;
  while (e < text.size() && !IsSpace(text[e])) ++e;
  std::string_view token = text.substr(b, e - b);
  text.remove_prefix(e);
  return token;
}

}  // namespace ccx

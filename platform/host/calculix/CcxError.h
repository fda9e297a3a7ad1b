#pragma once
// The error the CalculiX host's readers throw for a file they cannot read: it names the file
// and the line the problem was found on, as "FILE:LINE: what is wrong".
#include <cstdint>
#include <stdexcept>
#include <string>

namespace ccx {

class ReadError : public std::runtime_error {
public:
  // line 0: the problem concerns the file as a whole (it cannot be opened, for one).
  ReadError(std::string file, std::int64_t line, const std::string& problem)
      : std::runtime_error(Compose(file, line, problem)), m_file(std::move(file)), m_line(line),
        m_problem(problem) {}

  const std::string& file() const { return m_file; }
  std::int64_t line() const { return m_line; }
  // The message without the file and line.
  const std::string& problem() const { return m_problem; }

private:
  static std::string Compose(const std::string& file, std::int64_t line, const std::string& problem) {
    return line > 0 ? file + ":" + std::to_string(line) + ": " + problem : file + ": " + problem;
  }

  std::string m_file;
  std::int64_t m_line;
  std::string m_problem;
};

}  // namespace ccx

// Study files and command lines from outside, run through the command-line program: each gives
// a valid document or a clear message and a non-zero exit; nothing is written outside the
// output folder, no scratch is left in the temporary folder, nothing aborts.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>

#include <nlohmann/json.hpp>

#include "tests/support/DocxTestKit.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

const std::string kProgram = std::string(ZP_BINARY_DIR) + "/zpreport";
const fs::path kSample = fs::path(ZP_SOURCE_DIR) / "examples/bracket";

struct ProgramRun {
  int exitCode = -1;
  bool noTerminal = false;  // the machine gave no pseudo-terminal to run on
  bool signalled = false;
  std::string out, err;
};

// A sandbox: study/ holds the inputs, out/ takes the report, tmp/ is TMPDIR. Everything the
// program may write lies in out/ (and, while it runs, tmp/).
class Sandbox {
public:
  Sandbox() {
    fs::create_directories(Study());
    fs::create_directories(Tmp());
    fs::copy(kSample / "pictures", Study() / "pictures", fs::copy_options::recursive);
    std::ifstream in(kSample / "study.json");
    sample = json::parse(in);
  }
  fs::path Root() const { return m_dir.Path(); }
  fs::path Study() const { return Root() / "study"; }
  fs::path Out() const { return Root() / "out"; }
  fs::path Tmp() const { return Root() / "tmp"; }

  std::string WriteStudy(const json& j, const std::string& name = "study.json") const {
    const fs::path p = Study() / name;
    std::ofstream(p) << j.dump(1);
    return p.string();
  }
  std::string WriteText(const std::string& text, const std::string& name) const {
    const fs::path p = Study() / name;
    std::ofstream(p) << text;
    return p.string();
  }

  // Runs zpreport with `args` in the sandbox, TMPDIR at tmp/ unless `tmpdir` is given. With
  // `interruptOn`, sends `signal` once stderr shows that text.
  ProgramRun Program(const std::vector<std::string>& args, const std::string& tmpdir = {},
              const std::string& interruptOn = {}, int signal = SIGINT) const {
    int outPipe[2], errPipe[2];
    if (pipe(outPipe) != 0 || pipe(errPipe) != 0) return {};
    const std::string tmp = tmpdir.empty() ? Tmp().string() : tmpdir;
    const pid_t pid = fork();
    if (pid == 0) {
      dup2(outPipe[1], 1);
      dup2(errPipe[1], 2);
      close(outPipe[0]);
      close(errPipe[0]);
      if (chdir(Root().c_str()) != 0) _exit(126);
      setenv("TMPDIR", tmp.c_str(), 1);
      std::vector<char*> argv{const_cast<char*>(kProgram.c_str()), const_cast<char*>("generate")};
      for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
      argv.push_back(nullptr);
      execv(kProgram.c_str(), argv.data());
      _exit(127);
    }
    close(outPipe[1]);
    close(errPipe[1]);
    ProgramRun run;
    bool sent = false;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(5);
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    int open = 2;
    while (open > 0 && std::chrono::steady_clock::now() < deadline) {
      if (poll(fds, 2, 1000) <= 0) continue;
      for (int k = 0; k < 2; ++k) {
        if (fds[k].fd < 0 || !(fds[k].revents & (POLLIN | POLLHUP))) continue;
        char buf[4096];
        const ssize_t n = read(fds[k].fd, buf, sizeof buf);
        if (n <= 0) {
          close(fds[k].fd);
          fds[k].fd = -1;
          --open;
          continue;
        }
        (k == 0 ? run.out : run.err).append(buf, static_cast<size_t>(n));
      }
      if (!sent && !interruptOn.empty() && run.err.find(interruptOn) != std::string::npos) {
        kill(pid, signal);
        sent = true;
      }
    }
    for (auto& f : fds)
      if (f.fd >= 0) close(f.fd);
    int status = 0;
    if (std::chrono::steady_clock::now() >= deadline) kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
    run.signalled = WIFSIGNALED(status);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
  }

  // Runs zpreport on a terminal of its own; each time the terminal shows the first text of the
  // next step of `script`, types its second.
  ProgramRun Terminal(const std::vector<std::string>& args,
                      std::vector<std::pair<std::string, std::string>> script) const {
    int terminal = -1;
    const pid_t pid = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (pid < 0) {
      ProgramRun none;
      none.noTerminal = true;
      return none;
    }
    if (pid == 0) {
      if (chdir(Root().c_str()) != 0) _exit(126);
      setenv("TMPDIR", Tmp().c_str(), 1);
      std::vector<char*> argv{const_cast<char*>(kProgram.c_str()), const_cast<char*>("generate")};
      for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
      argv.push_back(nullptr);
      execv(kProgram.c_str(), argv.data());
      _exit(127);
    }
    ProgramRun run;
    std::size_t next = 0, seen = 0;
    char buf[4096];
    for (ssize_t n; (n = read(terminal, buf, sizeof buf)) > 0;) {
      run.err.append(buf, static_cast<size_t>(n));
      if (next < script.size() && run.err.find(script[next].first, seen) != std::string::npos) {
        seen = run.err.size();
        if (write(terminal, script[next].second.data(), script[next].second.size()) < 0) break;
        ++next;
      }
    }
    close(terminal);
    int status = 0;
    waitpid(pid, &status, 0);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
  }

  // Every file below the sandbox but the inputs: what a run wrote.
  std::set<std::string> Written() const {
    std::set<std::string> files;
    for (auto it = fs::recursive_directory_iterator(Root()); it != fs::recursive_directory_iterator(); ++it) {
      const fs::path rel = fs::relative(it->path(), Root());
      if (*rel.begin() == "study") continue;
      if (!it->is_directory()) files.insert(rel.string());
    }
    return files;
  }
  // The run's documents in out/, and nothing else anywhere; tmp/ empty.
  void ExpectOnlyDocuments(const std::set<std::string>& documents) const {
    std::set<std::string> expected;
    for (const std::string& d : documents) expected.insert("out/" + d);
    EXPECT_EQ(Written(), expected);
    EXPECT_TRUE(fs::is_empty(Tmp())) << "scratch left in TMPDIR";
  }

  json sample;

private:
  docxtest::TempDir m_dir;
};

void ExpectValidDocument(const fs::path& path) {
  ASSERT_TRUE(fs::is_regular_file(path)) << path;
  const auto faults = docxtest::XmlFaults(path.string());
  EXPECT_TRUE(faults.empty()) << faults.front();
  EXPECT_NE(docxtest::BodyText(path.string()).find("Simulation of"), std::string::npos);
}

// A study whose bodies are many, so that a run takes long enough to be interrupted.
json ManyBodies(json study, int count) {
  json& solids = study["bodies"]["solids"]["bodies"];
  const json first = solids[0];
  for (int i = 0; i < count; ++i) {
    json body = first;
    body["values"][0] = "Body " + std::to_string(i);
    solids.push_back(body);
  }
  return study;
}

}  // namespace

TEST(HostilePaths, NamesNeverLeaveTheOutputFolder) {
  Sandbox box;
  struct Case {
    std::string model, study, name;
  } cases[] = {
      {"../../escape/x", "Static 1", ""},
      {std::string("../../escape/y") + '\0', "Static 1", ""},
      {"Bracket", "..", ""},
      {"CON", "nul", ""},
      {std::string(300, 'M'), std::string(300, 'S'), ""},
      {"Bracket", "Static 1", "../../escape/z"},
      {"Bracket", "Static 1", std::string(400, 'N') + "/../x"},
  };
  std::set<std::string> documents;
  for (const Case& c : cases) {
    json study = box.sample;
    study["model"]["name"] = c.model;
    study["study"]["name"] = c.study;
    std::vector<std::string> args{box.WriteStudy(study), "--out", "out"};
    if (!c.name.empty()) args.insert(args.end(), {"--name", c.name});
    const ProgramRun run = box.Program(args);
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const fs::path written = run.out.substr(0, run.out.find('\n'));
    EXPECT_EQ(written.parent_path(), fs::canonical(box.Out()));
    EXPECT_LE(written.filename().string().size(), 255u);
    ExpectValidDocument(written);
    documents.insert(written.filename().string());
  }
  EXPECT_EQ(documents.size(), std::size(cases)) << "every run has a file of its own";
  box.ExpectOnlyDocuments(documents);
  EXPECT_FALSE(fs::exists(box.Root().parent_path() / "escape"));

  // A backslash in --out is a separator, as the report code reads it.
  const ProgramRun run = box.Program({box.WriteStudy(box.sample), "--out", "out\\deeper", "--name", "B"});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_TRUE(fs::exists(box.Out() / "deeper" / "Bracket-B.docx"));
  EXPECT_NE(run.err.find("backslashes are read as folder separators"), std::string::npos) << run.err;
}

TEST(HostileResults, FailuresSayWhyAndLeaveWhatWasThere) {
  Sandbox box;
  const std::string study = box.WriteStudy(box.sample);
  ASSERT_EQ(box.Program({study, "--out", "out", "--name", "Old"}).exitCode, 0);
  const fs::path old = box.Out() / "Bracket-Old.docx";
  const auto oldTime = fs::last_write_time(old);

  {  // No template where the program looks: the old file stays, the exit says so.
    const ProgramRun run = box.Program({study, "--out", "out", "--name", "Old", "--templates", (box.Root() / "none").string()});
    EXPECT_EQ(run.exitCode, 3) << run.err;
    EXPECT_NE(run.err.find("SimulationReportTemplate_2007.dotx\" is missing"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("left as it was"), std::string::npos) << run.err;
    EXPECT_EQ(fs::last_write_time(old), oldTime);
  }
  {  // A damaged template: the message says what is wrong with it.
    const fs::path templates = box.Root() / "templates";
    fs::create_directories(templates);
    std::ofstream(templates / "SimulationReportTemplate_2007.dotx") << "not a zip at all";
    const ProgramRun run = box.Program({study, "--out", "out", "--name", "Old", "--templates", templates.string()});
    EXPECT_EQ(run.exitCode, 3) << run.err;
    EXPECT_NE(run.err.find("cannot be opened"), std::string::npos) << run.err;
    fs::remove_all(templates);
  }
  {  // A folder in the document's place.
    fs::create_directories(box.Out() / "Bracket-Taken.docx");
    const ProgramRun run = box.Program({study, "--out", "out", "--name", "Taken"});
    EXPECT_EQ(run.exitCode, 3) << run.err;
    EXPECT_NE(run.err.find("Is a directory"), std::string::npos) << run.err;
    fs::remove(box.Out() / "Bracket-Taken.docx");
  }
  if (geteuid() != 0) {  // A folder nobody may write to (root may write anywhere).
    fs::create_directories(box.Out() / "locked");
    fs::permissions(box.Out() / "locked", fs::perms::owner_read | fs::perms::owner_exec);
    const ProgramRun run = box.Program({study, "--out", "out/locked", "--name", "L"});
    EXPECT_EQ(run.exitCode, 3) << run.err;
    EXPECT_NE(run.err.find("could not be saved"), std::string::npos) << run.err;
    fs::permissions(box.Out() / "locked", fs::perms::owner_all);
    fs::remove(box.Out() / "locked");
  }
  {  // The study file is a folder, or missing.
    ProgramRun run = box.Program({box.Study().string(), "--out", "out"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("is a folder, not a study file"), std::string::npos) << run.err;
    run = box.Program({(box.Study() / "missing.json").string(), "--out", "out"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("no such study file"), std::string::npos) << run.err;
  }
  box.ExpectOnlyDocuments({"Bracket-Old.docx"});
}

TEST(HostileInput, NothingAborts) {
  Sandbox box;
  const std::string study = box.WriteStudy(box.sample);
  json unreadable = box.sample;
  unreadable["model"]["picture"] = "/proc/self/mem";
  const std::string unreadableStudy = box.WriteStudy(unreadable, "unreadable.json");
  struct Case {
    std::vector<std::string> args;
    std::string says;
  } cases[] = {
      {{box.WriteText(R"({"_x": 1e400})", "big.json"), "--out", "out"}, "number overflow"},
      {{box.WriteText(R"({"model": {"name": "\ud800"}})", "surrogate.json"), "--out", "out"}, "not valid JSON"},
      {{box.WriteText("", "empty.json"), "--out", "out"}, "not valid JSON"},
      {{box.WriteText(R"({"format": 1, "model": 7})", "type.json"), "--out", "out"}, "model: expected an object"},
      {{study, "--out", ""}, "--out: the output folder is empty"},
      {{study, "--out", "out/" + std::string(300, 'd')}, "cannot create the output folder"},
      {{unreadableStudy, "--out", "out"}, "model.picture: picture file \"/proc/self/mem\""},
  };
  for (const Case& c : cases) {
    const ProgramRun run = box.Program(c.args);
    EXPECT_FALSE(run.signalled) << run.err;
    EXPECT_EQ(run.exitCode, 2) << run.err;
    EXPECT_NE(run.err.find(c.says), std::string::npos) << run.err;
  }
  // An unusable TMPDIR is an error, not a run without pictures.
  for (const std::string& tmp : {std::string("relative"), "/" + std::string(300, 't'), (box.Study() / "study.json").string()}) {
    const ProgramRun run = box.Program({study, "--out", "out"}, tmp);
    EXPECT_EQ(run.exitCode, 2) << tmp;
    EXPECT_NE(run.err.find("TMPDIR="), std::string::npos) << run.err;
  }
  box.ExpectOnlyDocuments({});
}

TEST(HostileInput, WhatIsCutOrChangedIsSaid) {
  Sandbox box;
  json study = box.sample;
  study["report"]["description"] = std::string(700, 'd');
  study["report"]["comments"]["units"] = std::string(1500, 'c');
  study["images"][0]["name"] = "Analysed (side view)";
  const std::string text = R"({"format": 1, "format": 1, )" + study.dump().substr(1);
  const ProgramRun run = box.Program({box.WriteText(text, "study.json"), "--out", "out", "--name", "Said"});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_NE(run.err.find("report.description: 700 characters, cut to the 500"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("report.comments.units: 1500 characters, cut to the 1000"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("images[0].name"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("the key \"format\" stands twice"), std::string::npos) << run.err;
  // The image is in the report all the same, under its changed name.
  const std::string body = docxtest::BodyText((box.Out() / "Bracket-Said.docx").string());
  EXPECT_NE(body.find(study["images"][0]["caption"].get<std::string>()), std::string::npos);
  box.ExpectOnlyDocuments({"Bracket-Said.docx"});
}

TEST(HostileInput, InterruptsCleanUp) {
  Sandbox box;
  const std::string study = box.WriteStudy(ManyBodies(box.sample, 1500), "large.json");
  for (int signal : {SIGINT, SIGTERM}) {
    const ProgramRun run = box.Program({study, "--out", "out", "--name", "Stopped"}, {}, "Model Information", signal);
    EXPECT_FALSE(run.signalled) << run.err;
    EXPECT_EQ(run.exitCode, 4) << run.err;
    EXPECT_NE(run.err.find("cancelled"), std::string::npos) << run.err;
  }
  box.ExpectOnlyDocuments({});
}

TEST(HostileInput, CtrlCOnATerminalAsksFirst) {
  Sandbox box;
  const std::string study = box.WriteStudy(ManyBodies(box.sample, 1500), "large.json");
  const std::vector<std::string> args = {study, "--out", "out", "--name"};
  auto with = [&](const char* name) {
    std::vector<std::string> a = args;
    a.push_back(name);
    return a;
  };
  // No: the run goes on to its document.
  const ProgramRun no = box.Terminal(with("Asked"), {{"Model Information", "\x03"}, {"[y/N] ", "n\n"}});
  if (no.noTerminal) GTEST_SKIP() << "this machine gives no pseudo-terminal (is /dev/pts mounted?)";
  EXPECT_EQ(no.exitCode, 0) << no.err;
  ExpectValidDocument(box.Out() / "Bracket-Asked.docx");
  // A second Ctrl-C at the question cancels.
  const ProgramRun twice = box.Terminal(with("Stopped"), {{"Model Information", "\x03"}, {"[y/N] ", "\x03"}});
  EXPECT_EQ(twice.exitCode, 4) << twice.err;
  EXPECT_NE(twice.err.find("cancelled"), std::string::npos) << twice.err;
  box.ExpectOnlyDocuments({"Bracket-Asked.docx"});
}

// Runs the real kroveld binary with KROVELD_HOME set to a temporary folder and collects its exit
// status, stdout and stderr.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/test_support.h"

namespace kroveld::testing {

struct RunResult {
  int status = -1;  // exit status, or 128 + signal
  std::string out;
  std::string err;
};

// A kroveld process started in the background; its stdout and stderr go to files of `io`.
struct Started {
  pid_t pid = -1;
  std::shared_ptr<TempDir> io = std::make_shared<TempDir>();
};

inline Started StartKroveld(const std::string& home, const std::vector<std::string>& args,
                            const std::string& cwd = {}) {
  Started s;
  const std::string outPath = s.io->File("stdout"), errPath = s.io->File("stderr");
  s.pid = fork();
  if (s.pid == 0) {
    setenv("KROVELD_HOME", home.c_str(), 1);
    if (!cwd.empty() && chdir(cwd.c_str()) != 0) _exit(127);
    const int o = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int e = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(o, 1);
    dup2(e, 2);
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(KROVELD_BINARY));
    for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(KROVELD_BINARY, argv.data());
    _exit(127);
  }
  return s;
}

inline RunResult WaitKroveld(const Started& s) {
  int raw = 0;
  waitpid(s.pid, &raw, 0);
  RunResult r;
  r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
  r.out = ReadFile(s.io->File("stdout"));
  r.err = ReadFile(s.io->File("stderr"));
  return r;
}

// Starts kroveld with `args` in `cwd`; `whileRunning` (if given) is called with the child's pid
// and may signal it. Waits for the end.
inline RunResult RunKroveld(const std::string& home, const std::vector<std::string>& args,
                            const std::string& cwd = {},
                            const std::function<void(pid_t)>& whileRunning = {}) {
  const Started s = StartKroveld(home, args, cwd);
  if (whileRunning) whileRunning(s.pid);
  return WaitKroveld(s);
}

// A work folder with an application folder of its own ("home"), holding the report, recipe and
// export definition of a shipped example; the binary runs in the work folder.
struct ExampleWork {
  TempDir dir;
  std::string home = dir.File("home");
  explicit ExampleWork(const std::string& example) {
    std::filesystem::create_directories(home);
    CopyExample(example);
  }
  // Copies NAME.txt, NAME.rcp and NAME.krs from the examples folder.
  void CopyExample(const std::string& example) const {
    for (const char* ext : {".txt", ".rcp", ".krs"}) {
      std::filesystem::copy_file(std::string(KROVELD_SOURCE_DIR) + "/examples/" + example + ext,
                                 dir.File(example + ext));
    }
  }
  std::string F(const std::string& rel) const { return dir.File(rel); }
  RunResult Run(const std::vector<std::string>& args) const {
    return RunKroveld(home, args, dir.path());
  }
};

// The last line of a program's output, without its line end.
inline std::string LastLine(const std::string& text) {
  const std::size_t end = text.find_last_not_of('\n');
  const std::size_t start = text.rfind('\n', end);
  return text.substr(start == std::string::npos ? 0 : start + 1, end - start);
}

// Waits (up to `tries` milliseconds) until an entry whose name begins with `prefix` is in `folder`.
inline void AwaitEntry(const std::string& folder, const std::string& prefix, int tries) {
  for (int i = 0; i < tries; ++i) {
    for (const auto& e : std::filesystem::directory_iterator(folder)) {
      if (e.path().filename().string().starts_with(prefix)) return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

// The path with every "/" turned into "\", as the slash syntax wants it.
inline std::string Backslashed(std::string path) {
  for (char& c : path) c = c == '/' ? '\\' : c;
  return path;
}

}  // namespace kroveld::testing

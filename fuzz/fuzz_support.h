// Shared pieces of the fuzz harnesses: a user-interface port that answers every question with No
// and shows nothing, one scratch folder per fuzzing process for the files a harness writes, and
// the set-up that makes a report the one input of a context's recipe.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "engine/context.h"
#include "util/ui_port.h"

namespace kroveld::fuzz {

class QuietPort final : public UiPort {
 public:
  void ShowMessage(std::string_view, Icon, std::string_view) override { ++messages; }
  bool Ask(std::string_view, Icon, std::string_view) override { return false; }
  void Status(int, std::string_view) override {}
  std::string Caption() const override { return {}; }
  void SetCaption(std::string_view) override {}
  void Beep() override {}
  void ProcessEvents() override {}
  int messages = 0;
};

// A folder made once per process, in memory where the system offers one (/dev/shm), else under
// TMPDIR (or /tmp); the harnesses overwrite their files in it. In memory, the application files,
// reports and outputs written per input cost no disk writes and their flushes are free.
inline const std::string& ScratchFolder() {
  // Never destroyed, so that the clean-up at exit can still read it.
  static const std::string* const folder = [] {
    const char* base = getenv("KROVELD_FUZZ_SCRATCH");
    if (!base || !*base) base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : getenv("TMPDIR");
    auto* path =
        new std::string(std::string(base && *base ? base : "/tmp") + "/kroveld-fuzz-XXXXXX");
    if (!mkdtemp(path->data())) abort();
    return path;
  }();
  // Removed when the process ends normally (each job of a fork-mode run is a process).
  static const int cleanup = std::atexit([] {
    std::error_code ignored;
    std::filesystem::remove_all(*folder, ignored);
  });
  (void)cleanup;
  return *folder;
}

inline std::string WriteScratch(const std::string& name, const std::uint8_t* data,
                                std::size_t size) {
  const std::string path = ScratchFolder() + "/" + name;
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) abort();
  if (size && std::fwrite(data, 1, size, f) != size) abort();
  std::fclose(f);
  return path;
}

// The report is the recipe's only input file (period 1) and the context's current input.
inline void UseReport(Context& ctx, const std::string& report) {
  ctx.recipe.InputFileNames[0] = report;
  ctx.recipe.InputFileFirst = 1;
  ctx.recipe.InputFileLast = 1;
  ctx.currentInput = report;
}

}  // namespace kroveld::fuzz

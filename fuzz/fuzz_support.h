// Shared pieces of the fuzz harnesses: a user-interface port that answers every question with No
// and shows nothing, one scratch folder per fuzzing process for the files a harness writes, and
// the set-up that makes a report the one input of a context's recipe.
#pragma once

#include <stdlib.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "engine/context.h"
#include "util/ui_port.h"

namespace kroveld::fuzz {

class QuietPort final : public UiPort {
 public:
  void Message(std::string_view, Icon, std::string_view) override { ++messages; }
  bool AskYesNo(std::string_view, Icon, std::string_view) override { return false; }
  void Status(int, std::string_view) override {}
  std::string Caption() const override { return {}; }
  void SetCaption(std::string_view) override {}
  void Beep() override {}
  void ProcessEvents() override {}
  int messages = 0;
};

// A folder made once per process under TMPDIR (or /tmp); the harnesses overwrite their files in it.
inline const std::string& ScratchFolder() {
  static const std::string folder = [] {
    const char* base = getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/kroveld-fuzz-XXXXXX";
    if (!mkdtemp(pattern.data())) abort();
    return pattern;
  }();
  return folder;
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

// A temporary file beside an output, for the codecs whose libraries write by file name: the
// library writes the temporary name, Commit() renames it over the output, and a TempOutput that
// is not committed removes its file, so the old output stays as it was.
#pragma once

#include <string>

namespace kroveld {

class TempOutput {
 public:
  TempOutput() = default;
  ~TempOutput();
  TempOutput(const TempOutput&) = delete;
  TempOutput& operator=(const TempOutput&) = delete;

  // Creates an empty temporary file in the folder of `target`. False with `error` on failure.
  bool Create(const std::string& target, std::string& error);
  const std::string& Path() const { return temp_; }
  // Renames the temporary file over the target. False with `error` on failure.
  bool Commit(std::string& error);

 private:
  std::string target_;
  std::string temp_;
};

}  // namespace kroveld

// The conventional command line (-i/--input, -o/--output, -r/--recipe, ...), parsed by CLI11 into
// the same options record as the slash syntax. Paths are taken relative to the current directory
// and made absolute. "--check -r RECIPE [-i REPORT]" asks for the recipe check instead of a
// conversion, "--suggest -i REPORT [-r SHORT-RECIPE]" for the row filters proposed for its tables.
#pragma once

#include <string>
#include <vector>

#include "engine/conversion_options.h"

namespace kroveld {

struct CliParseResult {
  bool job = false;      // a conversion is to run
  bool check = false;    // --check: the recipe is to be checked instead (job is false)
  bool suggest = false;  // --suggest: row filters are to be proposed instead (job is false)
  int exitCode = 0;      // when there is no job: 0 after --help/--version, 2 for a rejected line
  std::string out;       // text for stdout (help, version)
  std::string err;       // text for stderr (the parser's complaint)
};

// `args` are the arguments after the program name.
CliParseResult ParseConventionalCommandLine(const std::vector<std::string>& args,
                                            clsConversionOptions& options);

// The path made absolute against the current directory (empty stays empty).
std::string AbsolutePath(const std::string& path);

}  // namespace kroveld

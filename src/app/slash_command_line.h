// The command line of the slash syntax (modParseCommandLine): "/I input /O output /R recipe ...",
// fields split at "/", switch letters in any case, values trimmed. A value with a backslash is a
// path as it stands (quotes removed); any other value names a file in the application folder.
#pragma once

#include <string>
#include <string_view>

#include "engine/conversion_options.h"

namespace kroveld {

struct SlashParseResult {
  bool job = false;  // a conversion is to run (any non-empty text)
  bool commandLineMode = false;
  bool helpRequested = false;  // "/?" was given
};

// Fills `options` from `text` (the arguments joined with blanks). Never reports anything.
SlashParseResult ParseCommandLine(std::string_view text, clsConversionOptions& options,
                                  const std::string& appFolder);

// One more than the number of delimiters in the text.
int CountFields(std::string_view text, char delimiter);
// Field `n` (1-based): its key is its first character, blanks trimmed, upper-cased; the value is
// the rest, blanks trimmed.
std::string GetField(int n, std::string_view text, char delimiter, std::string* key);
std::string RemoveQuotes(std::string_view text);
// Creates the folder and every missing folder above it; failures are ignored.
void MakeFolderPath(const std::string& path);

}  // namespace kroveld

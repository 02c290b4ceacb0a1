#include "app/slash_command_line.h"

#include "util/files.h"
#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// A value with a backslash is a path as typed, quotes removed; any other value is a name in the
// application folder, taken exactly as it stands.
std::string SwitchPath(const std::string& value, const std::string& appFolder) {
  if (value.find('\\') != std::string::npos) return RemoveQuotes(value);
  return appFolder + "\\" + value;
}

}  // namespace

int CountFields(std::string_view text, char delimiter) {
  int count = 1;
  for (char c : text) count += c == delimiter;
  return count;
}

std::string GetField(int n, std::string_view text, char delimiter, std::string* key) {
  std::size_t start = 0;
  for (int i = 1; i < n; ++i) {
    const std::size_t next = text.find(delimiter, start);
    if (next == std::string_view::npos) {
      start = text.size();
      break;
    }
    start = next + 1;
  }
  std::size_t end = text.find(delimiter, start);
  if (end == std::string_view::npos) end = text.size();
  const std::string_view field = text.substr(start, end - start);
  if (key) *key = field.empty() ? std::string() : UpperAscii(Trim(field.substr(0, 1)));
  return field.empty() ? std::string() : std::string(Trim(field.substr(1)));
}

std::string RemoveQuotes(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (c != '"') out += c;
  }
  return out;
}

void MakeFolderPath(const std::string& path) {
  if (path.empty() || FolderExists(path)) return;
  CreateFolderTree(path);
}

SlashParseResult ParseCommandLine(std::string_view text, clsConversionOptions& options,
                                  const std::string& appFolder) {
  SlashParseResult result;
  if (text.empty()) return result;
  result.commandLineMode = true;
  result.job = true;

  const int count = CountFields(text, '/');
  std::string key;
  for (int n = 2; n <= count; ++n) {
    const std::string value = GetField(n, text, '/', &key);
    if (key.empty()) continue;
    // Any other letter is ignored.
    switch (key[0]) {
      case 'C':
        options.bClearOutputFileBeforeProcessing = false;
        break;
      case 'E':
        options.bShowExcel = true;
        break;
      case 'G':
        options.bSaveInOriginalFolder = true;
        break;
      case 'I':
        options.sInputFile = SwitchPath(value, appFolder);
        break;
      case 'L':
        options.sLogFile = SwitchPath(value, appFolder);
        MakeFolderPath(NativePath(ParentFolderName(options.sLogFile)));
        break;
      case 'O':
        options.sOutputFile = SwitchPath(value, appFolder);
        break;
      case 'R':
        options.sRecipeFile = SwitchPath(value, appFolder);
        options.bUseRecipe = true;
        break;
      case 'S':
        options.bDoSubfolders = true;
        break;
      case 'T': {
        int size = 0;
        if (ParseLong(value, size)) options.lTabSize = size;
        break;
      }
      case 'W':
        options.sSheetTarget = RemoveQuotes(value);
        break;
      case 'V':
        options.bVerbose = true;
        break;
      case '?':
        result.helpRequested = true;
        break;
    }
  }
  return result;
}

}  // namespace kroveld

#include "engine/recipe.h"

#include <cctype>

#include "util/files.h"
#include "util/private_profile.h"
#include "util/profile.h"
#include "util/strings.h"
#include "util/text_file.h"
#include "util/utf8_text.h"

namespace kroveld {

namespace {

constexpr std::string_view kOutputFile = "Output File";
constexpr std::string_view kInputFiles = "Input Files";
constexpr std::string_view kInputEncoding = "InputEncoding";

bool IsAbsolute(std::string_view name) {
  if (name.empty()) return false;
  if (IsSeparator(name[0])) return true;
  return name.size() >= 2 && name[1] == ':' && std::isalpha(static_cast<unsigned char>(name[0]));
}

// A key of the top of the file, looked up without a section name (from the first line up to the
// first line holding "[").
std::string TopOfFileValue(const std::string& path, std::string_view key) {
  TextFile file;
  file.Open(path);
  return GetProfileValue(file, "", key, "");
}

}  // namespace

std::string ResolveRelativeTo(const std::string& owner, const std::string& name) {
  if (name.empty() || IsAbsolute(name)) return name;
  return FolderOfPath(owner) + name;
}

void clsRecipe::Reset() {
  OutputFileTitle.clear();
  OutputFileName.clear();
  WriteDataFormat.clear();
  Sheet1Name.clear();
  Sheet2Name.clear();
  InputEncoding.clear();
  InputFileFirst = 1;
  InputFileLast = 1;
  ExportSpecFileName.clear();
  for (std::string& title : InputFileTitles) title.clear();
  for (std::string& name : InputFileNames) name.clear();
  ExportSpecs.Clear();
}

void clsRecipe::LoadFromFile(UiPort& ui, const std::string& path) {
  LoadFromFile(ui, path, path);
}

void clsRecipe::LoadFromFile(UiPort& ui, const std::string& path, const std::string& standsFor) {
  if (!FileExists(path)) {
    // The missing file is reported twice and nothing is reset: the export specification of the
    // recipe loaded before (if any) is looked for below.
    ui.Message("Cannot find recipe file: " + standsFor, Icon::None);
    ui.Message("Cannot find recipe file: " + standsFor, Icon::None);
  } else {
    Reset();
    Path = standsFor;
    if (CheckFileHeader(ui, path, "KRO", "RECIPE", "1.1")) {
      ui.Message("invalid header in recipe file: " + standsFor, Icon::None);
    }
    OutputFileTitle = GetProfileValueFromFile(path, kOutputFile, "OutputFileTitle", "");
    OutputFileName = GetProfileValueFromFile(path, kOutputFile, "OutputFileName", "");
    int value = 0;
    if (ParseLong(GetProfileValueFromFile(path, kOutputFile, "InputFileFirst", ""), value)) {
      InputFileFirst = value;
    }
    if (ParseLong(GetProfileValueFromFile(path, kOutputFile, "InputFileLast", ""), value)) {
      InputFileLast = value;
    }
    ExportSpecFileName =
        std::string(Trim(GetProfileValueFromFile(path, kOutputFile, "ExportSpecFileName", "")));
    const std::string format(
        Trim(GetProfileValueFromFile(path, kOutputFile, "WriteDataFormat", "")));
    if (format == "NearestDollar" || format == "NearestCent") WriteDataFormat = format;
    // Looked up from the top of the file, not in "Output File": a recipe written by SaveToFile
    // therefore reads its sheet names back empty.
    Sheet1Name = TopOfFileValue(path, "Sheet1Name");
    Sheet2Name = TopOfFileValue(path, "Sheet2Name");
    InputEncoding =
        std::string(Trim(GetProfileValueFromFile(path, kOutputFile, kInputEncoding, "")));
    if (::kroveld::InputEncoding encoding; !ParseInputEncoding(InputEncoding, encoding)) {
      ui.Message("Error in Output File : InputEncoding must be " +
                     std::string(kInputEncodingChoices) + ", not \"" + InputEncoding + "\"!",
                 Icon::Critical);
    }
    for (int n = 1; n <= kInputSlots; ++n) {
      const std::string number = ToText(n);
      InputFileTitles[static_cast<std::size_t>(n - 1)] =
          GetProfileValueFromFile(path, kInputFiles, number + "Title", "");
      InputFileNames[static_cast<std::size_t>(n - 1)] =
          GetProfileValueFromFile(path, kInputFiles, number + "FileName", "");
    }
  }

  const std::string specPath = ExportSpecPath();
  if (FileExists(specPath)) {
    ExportSpecs.ReadFromFile(ui, specPath);
  } else {
    ui.Message("Cannot find Export Specs file: " + ExportSpecFileName, Icon::None);
  }
}

bool clsRecipe::SaveToFile(UiPort& ui, const std::string& path) const {
  // Refused before anything is written, so an existing recipe is not left pointing at nothing.
  if (Trim(ExportSpecFileName).empty()) {
    ui.Message("Cannot save the export specification of " + path +
                   ": the recipe names no ExportSpecFileName!",
               Icon::Critical);
    return false;
  }
  PrivateProfile file;
  if (!file.Load(path)) {
    ui.Message("Cannot read recipe file: " + path + " (" + file.Error() + ")", Icon::Critical);
    return false;
  }
  file.Set("Header", "Product", "KRO");
  file.Set("Header", "FileType", "RECIPE");
  file.Set("Header", "FileFormat", "1.1");
  file.Set(kOutputFile, "OutputFileTitle", OutputFileTitle);
  file.Set(kOutputFile, "OutputFileName", OutputFileName);
  file.Set(kOutputFile, "InputFileFirst", ToText(InputFileFirst));
  file.Set(kOutputFile, "InputFileLast", ToText(InputFileLast));
  file.Set(kOutputFile, "ExportSpecFileName", ExportSpecFileName);
  file.Set(kOutputFile, "WriteDataFormat", WriteDataFormat);
  file.Set(kOutputFile, "Sheet1Name", Sheet1Name);
  file.Set(kOutputFile, "Sheet2Name", Sheet2Name);
  // Written only by a recipe that names an encoding (or that named one when it was read), so a
  // recipe without it is written back as it was.
  if (!InputEncoding.empty() || file.Get(kOutputFile, kInputEncoding, "\x01") != "\x01") {
    file.Set(kOutputFile, kInputEncoding, InputEncoding);
  }
  for (int n = 1; n <= kInputSlots; ++n) {
    const std::string number = ToText(n);
    file.Set(kInputFiles, number + "Title", InputFileTitles[static_cast<std::size_t>(n - 1)]);
    file.Set(kInputFiles, number + "FileName", InputFileNames[static_cast<std::size_t>(n - 1)]);
  }
  if (!file.Save(path)) {
    ui.Message("Cannot write recipe file: " + path + " (" + file.Error() + ")", Icon::Critical);
    return false;
  }
  // A relative name is taken from the folder of the recipe being written.
  return ExportSpecs.WriteToFile(ui, ResolveRelativeTo(path, ExportSpecFileName));
}

const std::string& clsRecipe::InputFileName(int n) const {
  static const std::string kEmpty;
  if (n < 1 || n > kInputSlots) return kEmpty;
  return InputFileNames[static_cast<std::size_t>(n - 1)];
}

std::string clsRecipe::InputFilePath(int n) const {
  return ResolveRelativeTo(Path, InputFileName(n));
}

std::string clsRecipe::ExportSpecPath() const {
  return ResolveRelativeTo(Path, ExportSpecFileName);
}

void AppendInWriteDataFormat(std::string& out, Fixed4 value, std::string_view writeDataFormat) {
  if (writeDataFormat == "NearestDollar") {
    AppendGrouped(out, value, 0);
  } else if (writeDataFormat == "NearestCent") {
    AppendGrouped(out, value, 2);
  } else {
    AppendPlain(out, value);
  }
}

}  // namespace kroveld

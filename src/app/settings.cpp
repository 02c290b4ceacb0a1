#include "app/settings.h"

#include <charconv>

#include "util/files.h"
#include "util/private_profile.h"
#include "util/profile.h"
#include "util/strings.h"
#include "util/ui_port.h"
#include "util/utf8_text.h"

namespace kroveld {

namespace {

constexpr std::string_view kGeneral = "General";
constexpr std::string_view kFrame = "frmMainMDI";
constexpr std::string_view kInputEncodingKey = "sInputEncoding";
// The read buffer of a value holds 500 characters with its terminating NUL.
constexpr std::size_t kMaxValue = 499;

std::string Value(const PrivateProfile& ini, std::string_view section, std::string_view key,
                  std::string_view def) {
  std::string value = ini.Get(section, key, def);
  if (const auto nul = value.find('\0'); nul != std::string::npos) value.resize(nul);
  if (value.size() > kMaxValue) value.resize(kMaxValue);
  return value;
}

bool Flag(const PrivateProfile& ini, std::string_view key, std::string_view def) {
  return UpperAscii(Value(ini, kGeneral, key, def)) != "FALSE";
}

// A whole decimal number, blanks around it allowed; anything else keeps `fallback`.
int Number(std::string_view text, int fallback) {
  text = Trim(text);
  int value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  return ec == std::errc() && end == text.data() + text.size() && !text.empty() ? value : fallback;
}

const char* TrueFalse(bool value) {
  return value ? "TRUE" : "FALSE";
}

}  // namespace

FramePlacement FramePlacement::Read(const std::string& configPath) {
  PrivateProfile ini;
  ini.Load(configPath);
  FramePlacement p;
  p.windowState = Number(ini.Get(kFrame, "WindowState", ""), p.windowState);
  p.left = Number(ini.Get(kFrame, "Left", ""), p.left);
  p.top = Number(ini.Get(kFrame, "Top", ""), p.top);
  p.width = Number(ini.Get(kFrame, "Width", ""), p.width);
  p.height = Number(ini.Get(kFrame, "Height", ""), p.height);
  return p;
}

bool FramePlacement::Write(const std::string& configPath) const {
  PrivateProfile ini;
  if (!ini.Load(configPath)) return false;
  ini.Set(kFrame, "WindowState", ToText(windowState));
  if (windowState == 0) {
    ini.Set(kFrame, "Left", ToText(left));
    ini.Set(kFrame, "Top", ToText(top));
    ini.Set(kFrame, "Width", ToText(width));
    ini.Set(kFrame, "Height", ToText(height));
  }
  return ini.Save(configPath);
}

bool Settings::Read(UiPort& ui) {
  if (!FileExists(path_)) {
    ui.Message(path_ + " can not be found!", Icon::Critical);
    return false;
  }
  if (CheckFileHeader(ui, path_, "KRO_B", "CONFIG", "1.0")) return false;
  PrivateProfile ini;
  ini.Load(path_);  // a file that cannot be read gives every default
  warned_ = Flag(ini, "bWarnedAboutTabsInFile", "FALSE");
  bShowExcel = Flag(ini, "bShowExcel", "TRUE");
  bClearOutputFileBeforeProcessing = Flag(ini, "bClearOutputFileBeforeProcessing", "TRUE");
  sSheetTarget = Value(ini, kGeneral, "sSheetTarget", "1");
  lTabSize = Number(Value(ini, kGeneral, "lTabSize", "8"), 8);
  useRecipeFile = UpperAscii(Trim(Value(ini, kGeneral, "UseRecipeFile", "NO"))) == "YES";
  // A value no run understands is as good as none.
  sInputEncoding = LowerAscii(Trim(Value(ini, kGeneral, kInputEncodingKey, "")));
  if (InputEncoding e; !ParseInputEncoding(sInputEncoding, e)) sInputEncoding.clear();
  inputs.Setup(clsMRU::kSlots, path_, "mruInputFile", ini);
  outputs.Setup(clsMRU::kSlots, path_, "mruOutputFile", ini);
  recipes.Setup(clsMRU::kSlots, path_, "mruRecipeFile", ini);
  read_ = true;
  return true;
}

bool Settings::Save() {
  PrivateProfile ini;
  if (!ini.Load(path_)) return false;
  ini.Set(kGeneral, "bWarnedAboutTabsInFile", TrueFalse(warned_));
  ini.Set(kGeneral, "bShowExcel", TrueFalse(bShowExcel));
  ini.Set(kGeneral, "bClearOutputFileBeforeProcessing",
          TrueFalse(bClearOutputFileBeforeProcessing));
  ini.Set(kGeneral, "sSheetTarget", sSheetTarget);
  ini.Set(kGeneral, "lTabSize", ToText(lTabSize));
  ini.Set(kGeneral, "UseRecipeFile", useRecipeFile ? "YES" : "NO");
  if (!sInputEncoding.empty() || ini.Get(kGeneral, kInputEncodingKey, "\x01") != "\x01") {
    ini.Set(kGeneral, kInputEncodingKey, sInputEncoding);
  }
  if (!ini.Save(path_)) return false;
  bool ok = true;
  for (clsMRU* list : {&inputs, &outputs, &recipes}) ok = list->WriteCollectionToIniFile() && ok;
  return ok;
}

void Settings::SetWarnedAboutTabsInFile() {
  warned_ = true;
  if (read_) WritePrivateProfileString(path_, kGeneral, "bWarnedAboutTabsInFile", "TRUE");
}

}  // namespace kroveld

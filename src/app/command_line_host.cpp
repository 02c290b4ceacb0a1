#include "app/command_line_host.h"

namespace kroveld {

CommandLineHost::CommandLineHost(const std::string& configPath, const clsConversionOptions& typed)
    : ConfigIniHost(configPath),
      input_(typed.sInputFile),
      output_(typed.sOutputFile),
      recipe_(typed.sRecipeFile) {}

bool CommandLineHost::ReadIniFile(UiPort& ui) {
  if (!ReadSettings(ui)) return false;
  inputs_.Setup(clsMRU::kSlots, ConfigPath(), "mruInputFile");
  outputs_.Setup(clsMRU::kSlots, ConfigPath(), "mruOutputFile");
  recipes_.Setup(clsMRU::kSlots, ConfigPath(), "mruRecipeFile");
  return true;
}

void CommandLineHost::UpdateMRUs() {
  inputs_.AddUniqueItemToCollection(input_);
  outputs_.AddUniqueItemToCollection(output_);
  recipes_.AddUniqueItemToCollection(recipe_);
}

}  // namespace kroveld

#include "app/command_line_host.h"

#include "util/private_profile.h"

namespace kroveld {

CommandLineHost::CommandLineHost(const std::string& configPath, const clsConversionOptions& typed)
    : ConfigIniHost(configPath),
      input_(typed.sInputFile),
      output_(typed.sOutputFile),
      recipe_(typed.sRecipeFile) {}

bool CommandLineHost::ReadIniFile(UiPort& ui) {
  // config.ini is read once: the settings and the three lists come from the same copy.
  PrivateProfile ini;
  if (!ReadSettings(ui, ini)) return false;
  inputs_.Setup(clsMRU::kSlots, ConfigPath(), "mruInputFile", ini);
  outputs_.Setup(clsMRU::kSlots, ConfigPath(), "mruOutputFile", ini);
  recipes_.Setup(clsMRU::kSlots, ConfigPath(), "mruRecipeFile", ini);
  return true;
}

void CommandLineHost::UpdateMRUs() {
  inputs_.AddUniqueItemToCollection(input_);
  outputs_.AddUniqueItemToCollection(output_);
  recipes_.AddUniqueItemToCollection(recipe_);
}

}  // namespace kroveld

#include "app/command_line_host.h"

namespace kroveld {

CommandLineHost::CommandLineHost(const std::string& configPath, const clsConversionOptions& typed)
    : ConfigIniHost(configPath),
      input_(typed.sInputFile),
      output_(typed.sOutputFile),
      recipe_(typed.bUseRecipe ? typed.sRecipeFile : std::string()) {}

void CommandLineHost::UpdateMRUs() {
  if (!loaded_) {
    inputs_.Setup(clsMRU::kSlots, ConfigPath(), "mruInputFile");
    outputs_.Setup(clsMRU::kSlots, ConfigPath(), "mruOutputFile");
    recipes_.Setup(clsMRU::kSlots, ConfigPath(), "mruRecipeFile");
    loaded_ = true;
  }
  inputs_.AddUniqueItemToCollection(input_);
  outputs_.AddUniqueItemToCollection(output_);
  recipes_.AddUniqueItemToCollection(recipe_);
  changed_ = true;
}

void CommandLineHost::SaveMRUs() {
  if (!changed_) return;
  inputs_.ShutDown();
  outputs_.ShutDown();
  recipes_.ShutDown();
  changed_ = false;
}

}  // namespace kroveld

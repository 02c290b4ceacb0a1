// The conversion host of a command-line run, standing in for the hidden main window: it reads the
// main window's settings from config.ini (the tab note's flag and the most-recently-used lists),
// and after each conversion adds the input, output and recipe texts to the lists in memory. A
// command-line run never writes the lists back; only the tab note's flag is kept in config.ini.
#pragma once

#include <string>

#include "app/mru.h"
#include "engine/conversion_options.h"
#include "jobs/conversion_job.h"

namespace kroveld {

class CommandLineHost final : public ConfigIniHost {
 public:
  // `typed` holds the texts as the command line gave them (a wildcard stays a wildcard).
  CommandLineHost(const std::string& configPath, const clsConversionOptions& typed);
  // ReadIniFile of the main window: the settings, then the three lists (capacity 20).
  bool ReadIniFile(UiPort& ui);
  void UpdateMRUs() override;

  const clsMRU& InputList() const { return inputs_; }
  const clsMRU& OutputList() const { return outputs_; }
  const clsMRU& RecipeList() const { return recipes_; }

 private:
  std::string input_, output_, recipe_;
  clsMRU inputs_, outputs_, recipes_;
};

}  // namespace kroveld

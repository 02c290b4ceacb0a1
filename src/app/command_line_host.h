// The conversion host of a command-line run: the tab note's flag lives in config.ini, and the
// input, output and recipe of the command line go into the most-recently-used lists, written once
// when the run ends.
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
  void UpdateMRUs() override;
  // Writes the three lists to config.ini (only when a conversion updated them).
  void SaveMRUs();

 private:
  std::string input_, output_, recipe_;
  clsMRU inputs_, outputs_, recipes_;
  bool loaded_ = false;
  bool changed_ = false;
};

}  // namespace kroveld

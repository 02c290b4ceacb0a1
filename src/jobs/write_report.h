// The output phase of one conversion (WriteReport): opens the output (a CSV file or a workbook),
// runs the export definition's pass into it, saves it and puts the caption back. Every step's
// failure is ignored and the sequence goes on; an output that cannot be written is reported once
// with its path and the reason.
#pragma once

#include <string>

#include "engine/context.h"

namespace kroveld {

inline constexpr const char* kCsvCaption = "Writing report to CSV file. Please wait...";
inline constexpr const char* kWorkbookCaption = "Writing data to Microsoft Excel. Please wait...";
inline constexpr const char* kExcelAlreadyOpen =
    " Microsoft Excel is already open. Please close it then retry";

// Writes ctx.currentOutput from the loaded recipe of `ctx`.
void WriteReport(Context& ctx, bool csv);
// Flushes the outputs written by WriteReport to the disk: syncs the file system that holds the
// folder of `anyOutput`. Run once at the end of a batch.
void SyncOutputs(const std::string& anyOutput);

}  // namespace kroveld

// Reads an existing .xlsx (OOXML) file into a workbook so that a conversion can write into it:
// sheet names, text and number cells (a formula cell keeps its last computed value), the number
// formats the model knows (any other becomes General) and the default font.
#pragma once

#include <string>

#include "jobs/workbook/workbook.h"

namespace kroveld {

// Replaces `book`'s sheets with the file's. False with `error` when the file is not a readable
// .xlsx (not a zip, no workbook part, broken XML).
bool ReadXlsx(const std::string& path, Workbook& book, std::string& error);

}  // namespace kroveld

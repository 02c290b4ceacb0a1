// Fuzzes the readers of an existing output: the bytes are written once as an .xlsx and once as an
// .xls file and read into a workbook; either reader may refuse them but must not fail otherwise.
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "jobs/workbook/xls_reader.h"
#include "jobs/workbook/xlsx_reader.h"

using namespace kroveld;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string error;
  {
    Workbook book;
    ReadXlsx(fuzz::WriteScratch("in.xlsx", data, size), book, error);
  }
  {
    Workbook book;
    ReadXls(fuzz::WriteScratch("in.xls", data, size), book, error);
  }
  return 0;
}

// Reports read as UTF-8: a table cut by printed columns (the fast CSV path for its ASCII lines,
// the line processor for the others).
#include <gtest/gtest.h>

#include "support/extract_support.h"

namespace kroveld::testing {
namespace {

TEST(Utf8Report, TableCutByPrintedColumns) {
  const std::string report = CrLf({
      "\xEF\xBB\xBFSTART",  // a byte order mark: no part of the text
      "A004 ÖZTÜRK ÇAĞ  451.25",
      "A005 SMITH JOHN   12.00",  // ASCII: the fast CSV path
      "B002 x山田太郎山田 5.00",  // 山 takes columns 15 and 16: it stays with the name
      "C001 M\xFCLLER     3.00",  // an 8-bit ü: one column, U+FFFD
      "C002 山\xC4R\t9.00",       // the tab stops at column 17 as printed
      "END",
  });
  const std::vector<std::string> rows = {
      "STAR, ,",
      "A004,ÖZTÜRK ÇAĞ,  451.25",
      "A005,SMITH JOHN,   12.00",
      "B002,x山田太郎山,田 5.00",
      "C001,M\uFFFDLLER    , 3.00 ",
      "C002,山\uFFFDR      , 9.00 ",
  };
  ExtractFixture f;
  f.ui.SetAlwaysDue(false);  // lets the ASCII rows take the fast path
  const std::string path = f.UseReport(report);
  f.ctx->lineProcessor.SetUtf8(true);
  clsTable table =
      MakeTable("START", 0, "END", -1,
                {MakeColumn(1, 4, "A"), MakeColumn(6, 15, "B"), MakeColumn(16, 23, "C")});
  f.Run(table, true);
  EXPECT_EQ(f.sink.rows, rows);
  // Two lines hold invalid bytes: one note, naming the report.
  EXPECT_EQ(f.ui.Texts(), std::vector<std::string>{"The report " + path +
                                                   " is not valid UTF-8 throughout: each invalid "
                                                   "byte counts as one character and is written "
                                                   "as U+FFFD"});
}

}  // namespace
}  // namespace kroveld::testing

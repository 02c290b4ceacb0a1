// Columns with Type and DateFormat: reading and checking the keys, and what a table with typed
// columns writes to cells and CSV rows, with its one note per column on values kept as text.
#include <gtest/gtest.h>

#include "engine/section_map.h"
#include "support/extract_support.h"
#include "util/text_file.h"

namespace kroveld::testing {
namespace {

// A [Table 1] of the given columns, each given as the lines after its PeriodOperator.
std::string TableText(const std::vector<std::vector<std::string>>& extra) {
  std::string s =
      "[Table 1]\r\nReadStartLine=TOP\r\nReadStartLineOffset=1\r\nReadEndLine=END\r\n"
      "ReadEndLineOffset=-1\r\nTotalColumns=" +
      std::to_string(extra.size()) + "\r\n";
  const char* spans[][2] = {{"1", "8"}, {"10", "20"}, {"22", "31"}, {"33", "42"}};
  for (std::size_t c = 0; c < extra.size(); ++c) {
    s += "[Table 1 Col " + std::to_string(c + 1) + "]\r\nReadColumnStart=" + spans[c][0] +
         "\r\nReadColumnEnd=" + spans[c][1] + "\r\nWriteColumn=" + std::string(1, 'A' + c) +
         "\r\nPeriodOperator=\r\n";
    for (const std::string& line : extra[c]) s += line + "\r\n";
  }
  return s;
}

// Reads Table 1 from `text` as the export specification reader does: the fixed keys in order
// from the open file, the optional ones from the map of the whole file.
bool ReadTable(ExtractFixture& f, const std::string& text, clsTable& table) {
  const std::string path = f.dir.Write("spec.krs", text);
  SectionMap keys;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t end = text.find("\r\n", at);
    keys.Note(std::string_view(text).substr(at, end - at));
    at = end + 2;
  }
  TextFile file;
  EXPECT_TRUE(file.Open(path));
  return table.ReadFromFileSequentially(f.ui, file, 1, &keys);
}

TEST(TypedColumnRead, BadValuesAreErrorsOfTheColumn) {
  const struct {
    std::vector<std::string> keys;
    std::string message;  // "" when accepted
  } cases[] = {
      {{"Type= text ; trimmed, any case"}, ""},
      {{"Type=DATE", "DateFormat=dd.mm.yy"}, ""},
      {{"DateFormat=MM/DD/YYYY", "Type=Date"}, ""},  // the order of the two does not matter
      {{"Type=Numeric"}, "Error in Table 1 Col 1 : Type must be Number, Text or Date!"},
      {{"Type=Date"}, "Error in Table 1 Col 1 : Type Date needs a DateFormat such as MM/DD/YYYY!"},
      {{"Type=Date", "DateFormat=DD.MM"},
       "Error in Table 1 Col 1 : DateFormat must be DD, MM and YY or YYYY in some order, separated "
       "by . / - or a blank (such as MM/DD/YYYY or DD.MM.YY)!"},
      {{"Type=Number", "DateFormat=DD.MM.YY"},
       "Error in Table 1 Col 1 : DateFormat is only for Type Date!"},
      {{"DateFormat=DD.MM.YY"}, "Error in Table 1 Col 1 : DateFormat is only for Type Date!"},
  };
  for (const auto& c : cases) {
    ExtractFixture f;
    clsTable table;
    const bool ok = ReadTable(f, TableText({c.keys}), table);
    SCOPED_TRACE(c.keys[0]);
    EXPECT_EQ(ok, c.message.empty());
    if (c.message.empty()) {
      EXPECT_TRUE(f.ui.messages.empty());
      EXPECT_TRUE(table.Columns[0].IsTyped());
    } else {
      ASSERT_EQ(f.ui.Texts(), std::vector<std::string>{c.message});
      EXPECT_EQ(f.ui.messages[0].icon, Icon::Critical);
    }
  }
}

// A block of four report lines (3..6) between TOP and END.
constexpr const char* kReport =
    "report\r\nTOP\r\n"
    "A-1      Cash         1,554.73- 05.03.23  \r\n"
    "         Rent               n/a 31.02.23  \r\n"
    "A-3                     (12.00) 29.02.24  \r\n"
    "         Loan                 x 31.04.24  \r\n"
    "END\r\n";

class TypedTable : public ::testing::Test {
 protected:
  void SetUp() override {
    f.UseReport(kReport);
    ASSERT_TRUE(ReadTable(
        f, TableText({{"Type=Text"}, {}, {"Type=Number"}, {"Type=Date", "DateFormat=DD.MM.YY"}}),
        table));
    table.Number = 1;
  }
  ExtractFixture f;
  clsTable table;
};

// The clean CSV values and the note texts are checked on the binary's output; a second run of
// the same table notes afresh, not adding to the first run's count.
TEST_F(TypedTable, EachRunNotesItsOwnValuesKeptAsText) {
  f.Run(table, true);
  EXPECT_EQ(f.ui.messages.size(), 2u);
  EXPECT_FALSE(f.Failed());
  f.ui.Clear();
  f.ctx->recipe.ExportSpecs.WritePointer1 = 1;
  f.Run(table, true);
  EXPECT_EQ(f.ui.messages.size(), 2u);
  EXPECT_NE(f.ui.Texts()[0].find("as is 1 more"), std::string::npos);
}

// Numbers and dates in cells are read back by independent readers in the end-to-end test; here
// the cells that stay text or empty.
TEST_F(TypedTable, CellsKeptAsTextOrEmpty) {
  f.Run(table);
  using K = CellValue::Kind;
  const struct {
    int row, column;
    K kind;
    std::string text;
  } cells[] = {
      {1, 1, K::kText, "A-1"},
      {2, 1, K::kEmpty, ""},
      {2, 3, K::kText, "n/a"},
      {2, 4, K::kText, "31.02.23"},
  };
  for (const auto& c : cells) {
    SCOPED_TRACE(std::to_string(c.row) + "," + std::to_string(c.column));
    const auto it = f.sink.typed.find({1, c.row, c.column});
    ASSERT_NE(it, f.sink.typed.end());
    EXPECT_EQ(it->second.first, c.kind);
    EXPECT_EQ(f.sink.At(c.row, c.column), c.text);
  }
  // The untyped column goes on as text through SetCell, padding and all.
  EXPECT_EQ(f.sink.At(1, 2), "Cash       ");
  EXPECT_EQ(f.sink.typed.count({1, 1, 2}), 0u);
  EXPECT_EQ(f.ui.messages.size(), 2u);
}

TEST(TypedTableFastPath, GivesTheRowsAndNotesOfTheRowByRowPath) {
  // Rows of every kind, short lines and an equal sign among them, many times over.
  const char* lines[] = {
      "A-1      Cash         1,554.73- 05.03.23  ",
      "         Rent               n/a 31.02.23  ",
      "A-3                     (12.00) 29.02.24",
      "",
      "=B       Short",
      "         Loan         1.5E3     010324",
      "X        \"quoted\",       1,000 1.1.24",
  };
  std::string report = "TOP\r\n";
  for (int i = 0; i < 300; ++i) report += std::string(lines[i % std::size(lines)]) + "\r\n";
  report += "END\r\n";
  std::vector<std::string> rows[2], texts[2];
  for (int rowByRow = 0; rowByRow < 2; ++rowByRow) {
    ExtractFixture f;
    f.ui.SetAlwaysDue(rowByRow == 1);
    f.UseReport(report);
    clsTable table;
    ASSERT_TRUE(ReadTable(
        f, TableText({{"Type=Text"}, {}, {"Type=Number"}, {"Type=Date", "DateFormat=DD.MM.YY"}}),
        table));
    table.Number = 1;
    f.Run(table, true);
    rows[rowByRow] = f.sink.rows;
    texts[rowByRow] = f.ui.Texts();
  }
  ASSERT_EQ(rows[0].size(), 300u);
  EXPECT_EQ(rows[0], rows[1]);
  EXPECT_EQ(texts[0], texts[1]);
  EXPECT_EQ(std::vector<std::string>(rows[0].begin() + 3, rows[0].begin() + 7),
            (std::vector<std::string>{",,,", "=B,Short ,,", ",Loan       ,1500,010324",
                                      "X,\"\"\"quoted\"\",  \",1000,.1.24"}));
  // The notes of the two paths (compared above) name the first value kept as text.
  EXPECT_EQ(texts[0].back().substr(0, 40), "Table 1 Col 4 : \"31.02.23\" on line 3 is ");
}

}  // namespace
}  // namespace kroveld::testing

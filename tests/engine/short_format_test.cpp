#include "engine/short_format.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <tuple>
#include <vector>

#include "engine/context.h"
#include "engine/export_specs.h"
#include "engine/recipe.h"
#include "support/extract_support.h"
#include "support/recording_port.h"
#include "support/test_support.h"
#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::DataFile;
using testing::ReadFile;
using testing::RecordingPort;
using testing::TempDir;

// ---- the line-span search ----

TEST(FindLineSpan, FindsBlocksOneAfterTheOther) {
  TempDir dir;
  TextFile file(
      dir.Write("t.txt", CrLf({"x", "<<a", "tmpl", "y", ">>b", " <<", "<", "<<c", "t2", "z"})));
  const auto next = [](TextFile& f) {
    const LineSpan s = FindLineSpan(f, "<<", ">>");
    return std::make_tuple(s.start, s.text, s.end);
  };
  EXPECT_EQ(std::make_tuple(2, std::string("tmpl"), 5), next(file));
  // From the current position on: " <<" and "<" do not begin with the key; no end follows.
  EXPECT_EQ(std::make_tuple(3, std::string("t2"), 0), next(file));
  EXPECT_EQ(std::make_tuple(0, std::string(), 0), next(file));
  // A start on the last line has no template text.
  TextFile last(dir.Write("last.txt", CrLf({"a", "<<"})));
  EXPECT_EQ(std::make_tuple(2, std::string(), 0), next(last));
}

// ---- FileCreateShort ----

struct ShortFixture : ::testing::Test {
  RecordingPort ui;
  TempDir dir;
  Context ctx{ui, dir.path()};

  std::string CreateShort(std::string_view marked) {
    const std::string in = dir.Write("marked.txt", marked);
    const std::string out = dir.File("short.rcp");
    FileCreateShort(ctx, in, out);
    return ReadFile(out);
  }
};

const std::string kShortHeader =
    CrLf({"[Header]", "Product=KRO-B", "FileType=RECIPE", "FileFormat=1.0"});

std::string ShortTable(int n, std::string_view tmpl) {
  const std::string k = ToText(n);
  return CrLf({"", "[Table " + k + "]", "ReadStartLine=>>" + k, "ReadStartLineOffset=2",
               "ReadEndLine=<<" + k, "ReadEndLineOffset=-1", "Parsing=" + std::string(tmpl),
               "WriteColumn=A"});
}

// The recipe written for the marked-up report of the user page is checked by the page's own test
// (tests/engine/table_parser_test.cpp).

// The tables read up to the first block that cannot be read, and the message that says why; "@"
// stands for the marked report's path.
TEST_F(ShortFixture, MarkedBlocksBecomeTablesUntilOneCannotBeRead) {
  const struct {
    const char* what;
    std::string marked;
    std::string recipe;
    std::string message;
  } cases[] = {
      {"a template keeps its leading blanks",
       CrLf({">>1", "h", "row", "<<1", "   ----  ----", ">>"}),
       kShortHeader + ShortTable(1, "   ----  ----"), ""},
      {"an empty template ends the recipe",
       CrLf({">>1", "h", "r1", "<<1", "---", ">>2", "h", "r2", "<<2", "", ">>3", "h", "r3", "<<3",
             "---", ">>"}),
       kShortHeader + ShortTable(1, "---"),
       "Table 2: the template line (line 10 of @) is empty; this table and the ones after it are "
       "not read."},
      {"no closing marker after a template",
       CrLf({">>1", "h", "r1", "<<1", "---", ">>2", "h", "r2", "<<2", "--- ---"}),
       kShortHeader + ShortTable(1, "---"),
       "Table 2: no line beginning with \">>\" after its template (line 10 of @); this table is "
       "not read."},
      {"no blocks at all", CrLf({"A plain report", "1001  Cash  12.00"}), kShortHeader,
       "No table markers found in @: mark table n with a line \">>n\" two lines above its first "
       "row and a line \"<<n\" right after its last row, followed by its template line and a line "
       "beginning with \">>\"."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ui.Clear();
    EXPECT_EQ(c.recipe, CreateShort(c.marked));
    std::string message = c.message;
    if (const std::size_t at = message.find('@'); at != std::string::npos) {
      message.replace(at, 1, dir.File("marked.txt"));
    }
    EXPECT_EQ(message.empty() ? std::vector<std::string>{} : std::vector<std::string>{message},
              ui.Texts());
    for (const auto& m : ui.messages) EXPECT_EQ(Icon::Exclamation, m.icon);
  }
}

TEST_F(ShortFixture, UnreadableTemplateFileStillWritesTheHeader) {
  FileCreateShort(ctx, dir.File("missing.txt"), dir.File("short.rcp"));
  EXPECT_EQ(kShortHeader, ReadFile(dir.File("short.rcp")));
  ASSERT_EQ(1u, ui.messages.size());
  EXPECT_TRUE(ui.messages[0].text.starts_with("Cannot read template file: "));
  EXPECT_NE(std::string::npos, ui.messages[0].text.find("missing.txt"));
}

// ---- FileConvertShortToLong and LoadFromFileShort ----

std::string LongHeader() {
  return CrLf({"[Header]", "Product=KRO", "FileType=EXPORT SPEC", "FileFormat=1.1", "", "[General]",
               "Name="});
}

TEST_F(ShortFixture, AutomaticRoadEndToEnd) {
  // The marked-up report is the template text and the report being converted at once.
  const std::string report = DataFile("auto-marked-report.txt");
  const std::string shortPath = dir.File("_AutoRecipe.rcp");
  FileCreateShort(ctx, report, shortPath);
  ctx.currentInput = report;
  ctx.statusPrefix = "report";
  LoadFromFileShort(ctx, ctx.recipe, shortPath);
  EXPECT_TRUE(ui.messages.empty()) << ui.messages[0].text;

  const std::string longPath = ctx.AppFile("_ExportSpecs.krs");
  EXPECT_EQ(longPath, ctx.recipe.ExportSpecFileName);
  EXPECT_EQ(report, ctx.recipe.InputFileNames[0]);
  // The columns of both tables are those the user page draws for this report (its own test), and
  // the rows they cut are checked through the binary; here that both tables reached the file.
  EXPECT_EQ("4", GetProfileValueFromFile(longPath, "Table 1", "TotalColumns", ""));
  EXPECT_EQ("SUM", GetProfileValueFromFile(longPath, "Table 2 Col 3", "PeriodOperator", ""));
  // One status text per table, and a yield after each.
  EXPECT_EQ((std::vector<std::pair<int, std::string>>{{1, "report - Scanning Table 1"},
                                                      {1, "report - Scanning Table 2"}}),
            ui.statuses);
  EXPECT_EQ(2, ui.events);
}

// A report with two tables between plain key texts.
const char* const kTwoTables =
    "SALES\r\n"
    "  North    10   20   30   40\r\n"
    "  South     1    2    3    4\r\n"
    "END SALES\r\n"
    "COSTS\r\n"
    "  Rent    100\r\n"
    "END COSTS\r\n";

struct ConvertFixture : ShortFixture {
  std::string input;
  std::string longPath;
  ConvertFixture() {
    input = dir.Write("report.txt", kTwoTables);
    longPath = dir.File("long.krs");
  }
  std::string Convert(std::string_view shortText) {
    const std::string shortPath = dir.Write("short.rcp", shortText);
    FileConvertShortToLong(ctx, shortPath, longPath, input);
    return ReadFile(longPath);
  }
  std::string Key(const std::string& section, const std::string& key) {
    return GetProfileValueFromFile(longPath, section, key, "<absent>");
  }
};

std::string ShortSection(int n, std::string_view top, std::string_view bottom,
                         std::string_view tmpl, std::string_view column) {
  return CrLf({"[Table " + ToText(n) + "]", "ReadStartLine=" + std::string(top),
               "ReadStartLineOffset=1", "ReadEndLine=" + std::string(bottom),
               "ReadEndLineOffset=-1", "Parsing=" + std::string(tmpl),
               "WriteColumn=" + std::string(column)});
}

TEST_F(ConvertFixture, ColumnsWritten) {
  const struct {
    const char* what;
    std::string shortText;
    std::vector<std::array<const char*, 3>> keys;  // section, key, value
  } cases[] = {
      // The fixed template is shorter than the rows: the last column reaches their end (28).
      {"four columns from Y",
       kShortHeader + ShortSection(1, "SALES", "END SALES", "-------  ---  ---  ---", "y"),
       {{"Table 1", "TotalColumns", "4"},
        {"Table 1 Col 1", "WriteColumn", "Y"},
        {"Table 1 Col 3", "WriteColumn", "AA"},
        {"Table 1 Col 4", "WriteColumn", "AB"},
        {"Table 1 Col 4", "ReadColumnStart", "19"},
        {"Table 1 Col 4", "ReadColumnEnd", "28"}}},
      // Only codes and templates with "=" look the table up; a fixed one is taken as drawn and
      // the missing key is reported when the report is converted.
      {"a fixed template needs no table",
       kShortHeader + ShortSection(1, "PROFITS", "END PROFITS", "---- ---", "A"),
       {{"Table 1", "TotalColumns", "2"},
        {"Table 1 Col 2", "ReadColumnStart", "6"},
        {"Table 1 Col 2", "ReadColumnEnd", "8"}}},
      {"no WriteColumn means A",
       CrLf({"[Table 1]", "ReadStartLine=COSTS", "ReadStartLineOffset=1", "ReadEndLine=END COSTS",
             "ReadEndLineOffset=-1", "Parsing=-"}),
       {{"Table 1 Col 1", "WriteColumn", "A"}, {"Table 1 Col 2", "WriteColumn", "B"}}},
  };
  for (const auto& c : cases) {
    ui.Clear();
    Convert(c.shortText);
    EXPECT_TRUE(ui.messages.empty()) << c.what;
    for (const auto& [section, key, value] : c.keys) {
      EXPECT_EQ(value, Key(section, key)) << c.what << ": [" << section << "] " << key;
    }
  }
}

TEST_F(ConvertFixture, TableNotFoundStopsTheLaterTables) {
  Convert(kShortHeader + ShortSection(1, "SALES", "END SALES", "=", "A") +
          ShortSection(2, "PROFITS", "END PROFITS", "=", "A") +
          ShortSection(3, "COSTS", "END COSTS", "=", "A"));
  ASSERT_EQ(1u, ui.messages.size());
  EXPECT_EQ("Table 2 not found!", ui.messages[0].text);
  EXPECT_EQ(Icon::Exclamation, ui.messages[0].icon);
  EXPECT_EQ("5", Key("Table 1", "TotalColumns"));
  EXPECT_EQ("<absent>", Key("Table 2", "ReadStartLine"));
  EXPECT_EQ("<absent>", Key("Table 3", "ReadStartLine"));
}

TEST_F(ConvertFixture, HeaderIsNotValidated) {
  const std::string text =
      Convert(CrLf({"[Header]", "Product=SOMETHING", "FileType=ELSE", "FileFormat=9"}) +
              ShortSection(1, "COSTS", "END COSTS", "+", "C"));
  EXPECT_TRUE(ui.messages.empty());
  EXPECT_TRUE(text.starts_with(LongHeader())) << text;
  EXPECT_EQ("13", Key("Table 1 Col 1", "ReadColumnEnd"));
  EXPECT_EQ("SUM", Key("Table 1 Col 1", "PeriodOperator"));
}

TEST_F(ConvertFixture, BadShortRecipes) {
  struct Case {
    const char* what;
    std::string shortText;
    std::string message;
  };
  const Case cases[] = {
      {"no Parsing key", CrLf({"[Table 1]", "ReadStartLine=SALES", "ReadEndLine=END SALES"}),
       "Table 1 not found!"},
      {"no ReadEndLine", CrLf({"[Table 1]", "ReadStartLine=SALES", "Parsing=-"}),
       "Error in Table 1 : Invalid ReadEndLine!"},
      {"no ReadStartLine", CrLf({"[Table 1]", "ReadEndLine=END SALES", "Parsing=-"}),
       "Error in Table 1 : Invalid ReadStartLine!"},
      {"offset not a number",
       CrLf({"[Table 1]", "ReadStartLine=SALES", "ReadStartLineOffset=two", "ReadEndLine=END",
             "Parsing=-"}),
       "Error in Table 1 : ReadStartLineOffset must be a whole number!"},
      {"inferred template on a block of blank lines",
       ShortSection(1, "END SALES", "COSTS", "=", "A"), "Table 1 not found!"},
      {"write columns running past ZZ", ShortSection(1, "SALES", "END SALES", "--- ---", "ZZ"),
       "unexpected number code in xl.NumToAlpha2!"},
  };
  for (const Case& c : cases) {
    ui.Clear();
    const std::string text = Convert(c.shortText);
    EXPECT_EQ(std::vector<std::string>{c.message}, ui.Texts()) << c.what;
    EXPECT_EQ(LongHeader(), text) << c.what;
  }
}

TEST_F(ShortFixture, LoadFromMissingShortRecipe) {
  const std::string longPath = ctx.AppFile("_ExportSpecs.krs");
  testing::WriteFile(longPath, CrLf({"[Table 9]", "ReadStartLine=old"}));
  ctx.currentInput = dir.File("report.txt");
  ctx.recipe.OutputFileTitle = "left over";
  LoadFromFileShort(ctx, ctx.recipe, dir.File("nothing.rcp"));
  ASSERT_EQ(2u, ui.messages.size());
  EXPECT_EQ("Cannot find recipe file: " + dir.File("nothing.rcp"), ui.messages[0].text);
  EXPECT_EQ(Icon::None, ui.messages[0].icon);
  EXPECT_EQ("short format recipe file does not exist!", ui.messages[1].text);
  EXPECT_EQ(Icon::None, ui.messages[1].icon);
  // The old long form is gone: only the header and the name are left.
  EXPECT_EQ(LongHeader(), ReadFile(longPath));
  EXPECT_EQ("", ctx.recipe.OutputFileTitle);
  EXPECT_EQ(dir.File("report.txt"), ctx.recipe.InputFileNames[0]);
  EXPECT_EQ(longPath, ctx.recipe.ExportSpecFileName);
}

}  // namespace
}  // namespace kroveld

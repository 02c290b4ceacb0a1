// The recipe key lookup, sequential section reading, the header check and heading counts, all
// on real files.
#include "util/profile.h"

#include <gtest/gtest.h>

#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::RecordingPort;
using testing::TempDir;

class ProfileLookup : public ::testing::Test {
 protected:
  std::string Lookup(std::string_view content, std::string_view section, std::string_view key,
                     std::string_view def = "DEF", int trim = kTrimBoth) {
    const std::string path = dir_.Write("lookup.krs", content);
    TextFile f(path);
    EXPECT_TRUE(f.IsOpen());
    return GetProfileValue(f, section, key, def, trim);
  }
  TempDir dir_;
};

TEST_F(ProfileLookup, KeyLookupRules) {
  struct Case {
    const char* what;
    std::string content;
    std::string section;
    std::string key;
    std::string expected;
  };
  const Case cases[] = {
      {"plain", CrLf({"[Table 1]", "ReadStartLine=ACCOUNT"}), "Table 1", "ReadStartLine",
       "ACCOUNT"},
      {"first match wins", CrLf({"[S]", "K=one", "K=two"}), "S", "K", "one"},
      {"comment after ';'", CrLf({"[S]", "K=val ; note"}), "S", "K", "val"},
      {"all comment gives default", CrLf({"[S]", "K= ;x"}), "S", "K", "DEF"},
      {"blank value gives default", CrLf({"[S]", "K=   "}), "S", "K", "DEF"},
      {"'[' ends the section", CrLf({"[S]", "A=x[1]", "K=v"}), "S", "K", "DEF"},
      {"next section ends it", CrLf({"[S]", "A=1", "[T]", "K=v"}), "S", "K", "DEF"},
      {"section name is case-sensitive", CrLf({"[table 1]", "K=v"}), "Table 1", "K", "DEF"},
      {"blanks inside the brackets", CrLf({"[  Table 1 ]", "K=v"}), "Table 1", "K", "v"},
      {"heading needs a ']'", CrLf({"[S", "K=v"}), "S", "K", "DEF"},
      {"missing section", CrLf({"[S]", "K=v"}), "X", "K", "DEF"},
      {"blanks around key", CrLf({"[S]", "   K  =  v w  "}), "S", "K", "v w"},
      {"line without '=' is skipped", CrLf({"[S]", "K is here", "K=v"}), "S", "K", "v"},
      {"prefix key after longer key", CrLf({"[S]", "ReadStartLineOffset=2", "ReadStartLine=X"}),
       "S", "ReadStartLine", "DEF"},
      {"longer key after prefix key", CrLf({"[S]", "ReadStartLine=X", "ReadStartLineOffset=2"}),
       "S", "ReadStartLineOffset", "2"},
      {"key found inside a value decides", CrLf({"[S]", "Other=Key", "Key=v"}), "S", "Key", "DEF"},
      {"value keeps later '='", CrLf({"[S]", "K=a=b"}), "S", "K", "a=b"},
      {"LF-only file", "[S]\nK=v\n", "S", "K", "v"},
      {"empty section starts here", CrLf({"K=top", "[S]", "K=v"}), "", "K", "top"},
      {"empty section stops at first '['", CrLf({"[S]", "K=v"}), "", "K", "DEF"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Lookup(c.content, c.section, c.key), c.expected) << c.what;
  }
}

TEST_F(ProfileLookup, TrimModes) {
  const std::string content = CrLf({"[S]", "K=  v  ;c"});
  EXPECT_EQ(Lookup(content, "S", "K", "D", kTrimLeading), "v  ");
  EXPECT_EQ(Lookup(content, "S", "K", "D", kTrimTrailing), "  v");
  EXPECT_EQ(Lookup(content, "S", "K", "D", kTrimBoth), "v");
  EXPECT_EQ(Lookup(content, "S", "K", "D", 0), "v");
}

TEST_F(ProfileLookup, SequentialReadingContinuesAfterThePreviousMatch) {
  const std::string path = dir_.Write(
      "seq.krs", CrLf({"[Title 1]", "WriteSheet=1", "WriteColumn=B", "TotalLines=2", "1Text=one",
                       "2Text=two", "[Title 2]", "WriteSheet=2", "TotalLines=1", "WriteColumn=C"}));
  TextFile f(path);
  ASSERT_TRUE(f.IsOpen());
  EXPECT_EQ(GetProfileValue(f, "Title 1", "WriteSheet", kMissing), "1");
  EXPECT_EQ(GetProfileValue(f, "", "WriteColumn", kMissing), "B");
  EXPECT_EQ(GetProfileValue(f, "", "TotalLines", kMissing), "2");
  EXPECT_EQ(GetProfileValue(f, "", "1Text", kMissing, kTrimTrailing), "one");
  EXPECT_EQ(GetProfileValue(f, "", "2Text", kMissing, kTrimTrailing), "two");
  // The next section: keys out of order read as missing.
  EXPECT_EQ(GetProfileValue(f, "Title 2", "WriteSheet", kMissing), "2");
  EXPECT_EQ(GetProfileValue(f, "", "WriteColumn", kMissing), "C");
  EXPECT_EQ(GetProfileValue(f, "", "TotalLines", kMissing), kMissing);

  TextFile closed;
  EXPECT_EQ(GetProfileValue(closed, "Title 1", "WriteSheet", "D"), "D");
}

TEST_F(ProfileLookup, FromFileOpensAfreshEachTime) {
  const std::string path = dir_.Write("r.rcp", CrLf({"[A]", "X=1", "[B]", "X=2"}));
  EXPECT_EQ(GetProfileValueFromFile(path, "B", "X", "D"), "2");
  EXPECT_EQ(GetProfileValueFromFile(path, "A", "X", "D"), "1");
  EXPECT_EQ(GetProfileValueFromFile(dir_.File("none.rcp"), "A", "X", "D"), "D");
}

TEST(CheckFileHeader, ThreeMessagesInOrder) {
  TempDir dir;
  struct Case {
    std::string content;
    const char* message;  // nullptr: passes
  };
  const Case cases[] = {
      {CrLf({"[Header]", "Product=KRO", "FileType=RECIPE", "FileFormat=1.1"}), nullptr},
      {CrLf({"[Header]", "Product= kro ", "FileType=recipe", "FileFormat=1.1"}), nullptr},
      {CrLf({"[Header]", "Product=KRO-B", "FileType=X", "FileFormat=9"}),
       "Incorrect product code!"},
      {CrLf({"[Header]", "Product=KRO", "FileType=EXPORT SPEC", "FileFormat=1.1"}),
       "Incorrect file type!"},
      {CrLf({"[Header]", "Product=KRO", "FileType=RECIPE", "FileFormat=1.0"}),
       "Incorrect file format!"},
      {CrLf({"[Header]", "Product=KRO", "FileType=RECIPE"}), "Incorrect file format!"},
      {"", "Incorrect product code!"},
  };
  int n = 0;
  for (const Case& c : cases) {
    RecordingPort ui;
    const std::string path = dir.Write("h" + std::to_string(n++) + ".rcp", c.content);
    const bool failed = CheckFileHeader(ui, path, "KRO", "RECIPE", "1.1");
    EXPECT_EQ(failed, c.message != nullptr) << c.content;
    if (c.message == nullptr) {
      EXPECT_TRUE(ui.messages.empty());
    } else {
      ASSERT_EQ(ui.messages.size(), 1u);
      EXPECT_EQ(ui.messages[0].text, c.message);
      EXPECT_EQ(ui.messages[0].icon, Icon::Critical);
    }
  }
  // A missing file fails on the product.
  RecordingPort ui;
  EXPECT_TRUE(CheckFileHeader(ui, dir.File("missing.rcp"), "KRO", "RECIPE", "1.1"));
  EXPECT_EQ(ui.Texts(), std::vector<std::string>{"Incorrect product code!"});
}

TEST(CountSectionHeadings, CountsWithExclusion) {
  TempDir dir;
  const std::string path =
      dir.Write("c.krs", CrLf({"[Header]", "[Title 1]", "[Title 2]", "[Title 4]", "[Table 1]",
                               "[Table 1 Col 1]", "[Table 1 Col 2]", "[Table 2]", "[Consolidate 1]",
                               "[Con 1 Dept 1]", "1Text=[Title 9]"}));
  EXPECT_EQ(CountSectionHeadings(path, "[Title ", ""), 4);  // counts the text line too
  EXPECT_EQ(CountSectionHeadings(path, "[Table ", "Col"), 2);
  EXPECT_EQ(CountSectionHeadings(path, "[Table ", ""), 4);
  EXPECT_EQ(CountSectionHeadings(path, "[Consolidate ", ""), 1);
  EXPECT_EQ(CountSectionHeadings(dir.File("missing.krs"), "[Title ", ""), 0);
}

TEST(ParseLong, IntegersThatFit) {
  const std::pair<const char*, int> good[] = {{"12", 12},
                                              {"  -7 ", -7},
                                              {"+3", 3},
                                              {"2147483647", 2147483647},
                                              {"-2147483648", -2147483647 - 1}};
  for (const auto& [text, value] : good) {
    int v = 424242;
    EXPECT_TRUE(ParseLong(text, v)) << text;
    EXPECT_EQ(v, value) << text;
  }
  for (const char* text :
       {"2147483648", "99999999999999999999", "1.5", "12abc", "", "-", "1 2", "--1"}) {
    int v = 424242;
    EXPECT_FALSE(ParseLong(text, v)) << text;
    EXPECT_EQ(v, 424242) << text;  // left alone
  }
}

}  // namespace
}  // namespace kroveld

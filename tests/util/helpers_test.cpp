// Column letters, WriteLines and the elapsed-seconds text.
#include <gtest/gtest.h>

#include "support/recording_port.h"
#include "support/test_support.h"
#include "util/column_letters.h"
#include "util/lines_io.h"
#include "util/timing.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::ReadFile;
using testing::RecordingPort;
using testing::TempDir;

TEST(ColumnLetters, TwoLetterRange) {
  RecordingPort ui;
  const std::pair<int, const char*> cases[] = {{1, "A"},   {26, "Z"},   {27, "AA"},  {52, "AZ"},
                                               {53, "BA"}, {676, "YZ"}, {677, "ZA"}, {702, "ZZ"}};
  for (const auto& [n, letters] : cases) {
    EXPECT_EQ(NumToAlpha2(ui, n), letters) << n;
    EXPECT_EQ(AlphaToNum2(ui, letters), n) << letters;
  }
  EXPECT_TRUE(ui.messages.empty());
  EXPECT_EQ(AlphaToNum2(ui, "ab"), 28);
  EXPECT_EQ(AlphaToNum2(ui, "z"), 26);

  for (int bad : {0, -1, 703}) {
    RecordingPort port;
    EXPECT_EQ(NumToAlpha2(port, bad), "");
    ASSERT_EQ(port.messages.size(), 1u);
    EXPECT_EQ(port.messages[0].text, "unexpected number code in xl.NumToAlpha2!");
    EXPECT_EQ(port.messages[0].icon, Icon::Critical);
  }
  for (const char* bad : {"", "ABC"}) {
    RecordingPort port;
    EXPECT_EQ(AlphaToNum2(port, bad), 0);
    EXPECT_EQ(port.Texts(), std::vector<std::string>{"unexpected letter code in xl.AlphaToNum2!"});
    EXPECT_EQ(port.messages[0].icon, Icon::Critical);
  }
  RecordingPort port;
  EXPECT_EQ(AlphaToNum2(port, "A1"), 26);  // the bad letter counts as 0
  EXPECT_EQ(port.Texts(),
            std::vector<std::string>{"unexpected Letter code in utilities.AlphaToNum!"});
}

TEST(WriteLines, ReplaceAndAppend) {
  TempDir dir;
  const std::string path = dir.File("out.txt");
  std::string error;
  ASSERT_TRUE(WriteLines(path, {"a", "b", "c"}, 2, false, &error)) << error;
  EXPECT_EQ(ReadFile(path), CrLf({"a", "b"}));
  ASSERT_TRUE(WriteLines(path, {"c"}, 1, true, &error)) << error;
  EXPECT_EQ(ReadFile(path), CrLf({"a", "b", "c"}));
  ASSERT_TRUE(WriteLines(path, {"z"}, 5, false, &error));  // count beyond the array
  EXPECT_EQ(ReadFile(path), CrLf({"z"}));
  EXPECT_FALSE(WriteLines(dir.File("no/folder/x.txt"), {"a"}, 1, false, &error));
  EXPECT_NE(error.find("no/folder/x.txt"), std::string::npos) << error;
}

TEST(Timing, SecondsToOneDecimal) {
  EXPECT_EQ(FormatSeconds(0), "0.0");
  EXPECT_EQ(FormatSeconds(1234), "1.2");
  EXPECT_EQ(FormatSeconds(123456), "123.5");
  EXPECT_EQ(FormatSeconds(49), "0.0");
  EXPECT_EQ(FormatSeconds(50), "0.1");
}

// What is held back with ShowFirst comes before the next message, note or question, once, in
// the order it was held; a withdrawn owner's never comes.
TEST(UiPortShowFirst, HeldTextsComeFirstOnceInOrder) {
  for (const int next : {0, 1, 2}) {
    SCOPED_TRACE(next);
    RecordingPort ui;
    int runs = 0;
    const int owners[3] = {};
    for (int h = 0; h < 3; ++h) {
      ui.ShowFirst(&owners[h], [&ui, &runs, h] {
        ++runs;
        ui.Note("held " + std::to_string(h));  // showing from inside does not run it again
      });
    }
    ui.Withdraw(&owners[1]);
    if (next == 0) ui.Message("next", Icon::Exclamation);
    if (next == 1) ui.Note("next");
    ui.Settle();
    std::vector<std::string> expected = {"held 0", "held 2"};
    if (next != 2) expected.push_back("next");
    EXPECT_EQ(ui.Texts(), expected);
    EXPECT_EQ(runs, 2);
  }
}

}  // namespace
}  // namespace kroveld

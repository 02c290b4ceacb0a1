#include <gtest/gtest.h>

#include <cstdio>

#include "app/console_port.h"

namespace kroveld {
namespace {

std::string Captured(std::FILE* f) {
  std::fflush(f);
  std::rewind(f);
  std::string s;
  char buf[512];
  while (std::size_t n = std::fread(buf, 1, sizeof buf, f)) s.append(buf, n);
  return s;
}

// The batch's file lines, notes and the terminate question are checked through the binary.
TEST(ConsolePort, QuestionsOtherThanTerminateAreAnsweredNo) {
  std::FILE* f = std::tmpfile();
  ConsolePort port(f, false);
  EXPECT_FALSE(port.AskYesNo("Overwrite everything?"));
  EXPECT_FALSE(port.TerminateConfirmed());
  EXPECT_EQ(Captured(f), "kroveld: Overwrite everything? No\n");
  std::fclose(f);
}

TEST(ConsolePort, ProgressLineIsErasedBeforeAMessage) {
  std::FILE* f = std::tmpfile();
  {
    ConsolePort port(f, true);
    port.Status(3, "/in/a.txt   [1 of 2 files]");
    port.Message("oops", Icon::Critical);
  }
  const std::string out = Captured(f);
  EXPECT_EQ(out, "\r\033[K/in/a.txt   [1 of 2 files]\r\033[Kkroveld: error: oops\n");
  std::fclose(f);
}

// Once the run gives its numbers, the line is drawn from them: the file of the batch (not the
// panel's "[1 of 0 files]"), the table's row and the phase; the panel texts no longer shape it.
TEST(ConsolePort, ProgressLineIsDrawnFromTheRunsNumbers) {
  std::FILE* f = std::tmpfile();
  {
    ConsolePort port(f, true);
    port.Progress({1, 1, 0, 0, 0, {}});
    port.Status(3, "/in/a.txt   [1 of 0 files]");
    port.Progress({1, 1, 2, 12345, 100000, "writing"});
  }
  const std::string out = Captured(f);
  EXPECT_EQ(out.find("[1 of 0 files]"), std::string::npos) << out;
  EXPECT_EQ(out.rfind("\r\033[Kfile 1 of 1  (0 s)", 0), 0u) << out;
  std::fclose(f);

  f = std::tmpfile();
  {
    ConsolePort port(f, true);
    port.Progress({3, 1200, 2, 12345, 100000, "writing"});
  }
  // Drawn, then erased when the port goes.
  EXPECT_EQ(Captured(f),
            "\r\033[Kfile 3 of 1,200  Table 2 row 12,345 of 100,000  writing  (0 s)\r\033[K");
  std::fclose(f);
}

}  // namespace
}  // namespace kroveld

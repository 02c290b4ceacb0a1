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

TEST(ConsolePort, OneLinePerMessageWithTheIconPrefix) {
  std::FILE* f = std::tmpfile();
  ASSERT_NE(f, nullptr);
  {
    ConsolePort port(f, false);
    port.Message("bad", Icon::Critical);
    port.Message("careful", Icon::Exclamation);
    port.Message("fyi", Icon::Information);
    port.Message("plain");
    port.Message("a\r\n\r\nb\nc", Icon::Information, "Title");
    port.Status(3, "never shown without a terminal");
    EXPECT_TRUE(port.MessageShown());
  }
  EXPECT_EQ(Captured(f),
            "kroveld: error: bad\nkroveld: warning: careful\nkroveld: note: fyi\nkroveld: plain\n"
            "kroveld: note: a b c\n");
  std::fclose(f);
}

TEST(ConsolePort, NoteDoesNotCountAndTerminateIsAnsweredYes) {
  std::FILE* f = std::tmpfile();
  ConsolePort port(f, false);
  port.Note("NOTE: tabs.\nchange the options.");
  EXPECT_FALSE(port.MessageShown());
  EXPECT_FALSE(port.AskYesNo("Overwrite everything?"));
  EXPECT_FALSE(port.TerminateConfirmed());
  EXPECT_TRUE(port.AskYesNo("Do you want to terminate the process?"));
  EXPECT_TRUE(port.TerminateConfirmed());
  EXPECT_EQ(Captured(f),
            "kroveld: note: NOTE: tabs. change the options.\n"
            "kroveld: Overwrite everything? No\n"
            "kroveld: Do you want to terminate the process? Yes\n");
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

}  // namespace
}  // namespace kroveld

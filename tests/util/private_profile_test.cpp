// INI files: reading with the usual semantics, writing in place, round trips.
#include "util/private_profile.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::CrLf;
using testing::ReadFile;
using testing::TempDir;

TEST(PrivateProfile, ReadsWithoutRegardToCaseBlanksAndQuotes) {
  TempDir dir;
  const std::string path = dir.Write("config.ini",
                                     "; comment\n[Settings]\n  TabSize = 4 \n"
                                     "Name=\"  quoted  \"\nSingle='x'\n"
                                     "Half=\"open\nEmpty=\n[Other]\nTabSize=9\n");
  PrivateProfile p;
  ASSERT_TRUE(p.Load(path)) << p.Error();
  EXPECT_EQ(p.Get("settings", "TABSIZE", "8"), "4");
  EXPECT_EQ(p.Get("SETTINGS", "name", ""), "  quoted  ");
  EXPECT_EQ(p.Get("Settings", "Single", ""), "x");
  EXPECT_EQ(p.Get("Settings", "Half", ""), "\"open");
  EXPECT_EQ(p.Get("Settings", "Empty", "def"), "");  // present but empty
  EXPECT_EQ(p.Get("Settings", "Missing", "def"), "def");
  EXPECT_EQ(p.Get("Nowhere", "TabSize", "def"), "def");
  EXPECT_EQ(p.Get("Other", "TabSize", ""), "9");
}

TEST(PrivateProfile, WritesInPlaceAppendsKeysAndSections) {
  TempDir dir;
  const std::string path =
      dir.Write("config.ini", "[A]\nx=1\ny=2\n\n[B]\nz=3\n");  // LF only, not ours
  ASSERT_TRUE(WritePrivateProfileString(path, "a", "Y", "two"));
  ASSERT_TRUE(WritePrivateProfileString(path, "A", "new", "n;[x]=y"));
  ASSERT_TRUE(WritePrivateProfileString(path, "C", "k", "v"));
  ASSERT_TRUE(WritePrivateProfileString(path, "B", "w", ""));
  EXPECT_EQ(ReadFile(path),
            CrLf({"[A]", "x=1", "y=two", "new=n;[x]=y", "", "[B]", "z=3", "w=", "", "[C]", "k=v"}));
  EXPECT_EQ(ReadPrivateProfileString(path, "A", "NEW", ""), "n;[x]=y");
}

TEST(PrivateProfile, NewFileAndRoundTripOfAForeignFile) {
  TempDir dir;
  const std::string path = dir.File("sub/new.rcp");
  // The folder does not exist: the write fails and says why.
  EXPECT_FALSE(WritePrivateProfileString(path, "Header", "Product", "KRO"));

  const std::string fresh = dir.File("new.rcp");
  ASSERT_TRUE(WritePrivateProfileString(fresh, "Header", "Product", "KRO"));
  ASSERT_TRUE(WritePrivateProfileString(fresh, "Header", "FileType", "RECIPE"));
  ASSERT_TRUE(WritePrivateProfileString(fresh, "Output File", "OutputFileName", "C:\\out\\x.xls"));
  EXPECT_EQ(ReadFile(fresh), CrLf({"[Header]", "Product=KRO", "FileType=RECIPE", "",
                                   "[Output File]", "OutputFileName=C:\\out\\x.xls"}));

  // Load and Save without changes keeps every line (comments, blanks, odd spacing).
  const std::string foreign = dir.Write("f.ini", "  ; top\r\n[S]\r\n k = v \r\n\r\nloose line\r\n");
  PrivateProfile p;
  ASSERT_TRUE(p.Load(foreign));
  ASSERT_TRUE(p.Save(foreign)) << p.Error();
  EXPECT_EQ(ReadFile(foreign), "  ; top\r\n[S]\r\n k = v \r\n\r\nloose line\r\n");
  p.Set("s", "K", "w");
  ASSERT_TRUE(p.Save(foreign));
  EXPECT_EQ(ReadFile(foreign), "  ; top\r\n[S]\r\nk=w\r\n\r\nloose line\r\n");
}

TEST(PrivateProfile, LoadOfAFolderFails) {
  TempDir dir;
  PrivateProfile p;
  EXPECT_FALSE(p.Load(dir.path()));
  EXPECT_FALSE(p.Error().empty());
  EXPECT_TRUE(p.Load(dir.File("missing.ini")));  // missing: an empty document
  EXPECT_TRUE(p.Lines().empty());
}

}  // namespace
}  // namespace kroveld

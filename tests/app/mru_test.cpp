#include <gtest/gtest.h>

#include "app/mru.h"
#include "support/test_support.h"
#include "util/private_profile.h"

namespace kroveld {
namespace {

using testing::TempDir;

std::string Slot(const std::string& path, int n) {
  return ReadPrivateProfileString(path, "mruInputFile", "mruInputFile" + std::to_string(n), "?");
}

TEST(Mru, SamePathInOtherCaseLeavesOneEntryInTheNewerSpelling) {
  TempDir dir;
  clsMRU mru;
  mru.Setup(20, dir.File("config.ini"), "mruInputFile");
  mru.AddUniqueItemToCollection("/data/June.txt");
  mru.AddUniqueItemToCollection("/data/other.txt");
  mru.AddUniqueItemToCollection("/DATA/june.TXT");
  mru.AddUniqueItemToCollection("");
  EXPECT_EQ(mru.Items(), (std::vector<std::string>{"/data/other.txt", "/DATA/june.TXT"}));
}

TEST(Mru, TwentyReadAndOneAddedDropsTheOldest) {
  TempDir dir;
  const std::string path = dir.File("config.ini");
  PrivateProfile ini;
  for (int n = 1; n <= 20; ++n)
    ini.Set("mruInputFile", "mruInputFile" + std::to_string(n), "p" + std::to_string(n));
  ASSERT_TRUE(ini.Save(path));

  clsMRU mru;
  mru.Setup(20, path, "mruInputFile");
  ASSERT_EQ(mru.Count(), 20);
  mru.AddUniqueItemToCollection("new");
  EXPECT_EQ(mru.Count(), 21);  // not trimmed until written
  ASSERT_TRUE(mru.WriteCollectionToIniFile());
  EXPECT_EQ(Slot(path, 20), "new");
  EXPECT_EQ(Slot(path, 19), "p20");
  EXPECT_EQ(Slot(path, 1), "p2");

  clsMRU again;
  again.Setup(20, path, "mruInputFile");
  EXPECT_EQ(again.Count(), 20);
  EXPECT_EQ(again.Items().front(), "p2");
  EXPECT_EQ(again.Items().back(), "new");
}

TEST(Mru, ThreeEntriesFillTopSlotsAndLeaveLowerOnesAsTheyWere) {
  TempDir dir;
  const std::string path = dir.File("config.ini");
  ASSERT_TRUE(WritePrivateProfileString(path, "mruInputFile", "mruInputFile1", "stale"));
  clsMRU mru;
  mru.Setup(20, path, "mruInputFile");
  // The stale entry was read, so four entries are written: 17..20.
  mru.AddUniqueItemToCollection("a");
  mru.AddUniqueItemToCollection("b");
  mru.AddUniqueItemToCollection("c");
  ASSERT_TRUE(mru.WriteCollectionToIniFile());
  EXPECT_EQ(Slot(path, 20), "c");
  EXPECT_EQ(Slot(path, 19), "b");
  EXPECT_EQ(Slot(path, 18), "a");
  EXPECT_EQ(Slot(path, 17), "stale");
  EXPECT_EQ(Slot(path, 1), "stale");  // left in place, not cleared
  EXPECT_EQ(Slot(path, 16), "?");

  clsMRU fresh;
  fresh.Setup(20, path, "mruInputFile");
  EXPECT_EQ(fresh.Items(), (std::vector<std::string>{"stale", "a", "b", "c"}));
}

TEST(Mru, DefaultMarkerIsNeverLoadedAndRepeatsLoadOnceAtTheLaterSlot) {
  TempDir dir;
  const std::string path = dir.File("config.ini");
  PrivateProfile ini;
  ini.Set("mruInputFile", "mruInputFile1", "+-!#");
  ini.Set("mruInputFile", "mruInputFile2", "x");
  ini.Set("mruInputFile", "mruInputFile3", "y");
  ini.Set("mruInputFile", "mruInputFile7", "X");
  ASSERT_TRUE(ini.Save(path));
  clsMRU mru;
  mru.Setup(20, path, "mruInputFile");
  EXPECT_EQ(mru.Items(), (std::vector<std::string>{"y", "X"}));
}

}  // namespace
}  // namespace kroveld

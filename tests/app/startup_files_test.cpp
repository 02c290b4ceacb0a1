#include <gtest/gtest.h>

#include "app/startup_files.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::ReadFile;
using testing::TempDir;

TEST(DefaultConfig, ElevenLinesByteForByte) {
  TempDir dir;
  const std::string path = dir.File("config.ini");
  testing::WriteFile(path, "old content that must go\r\n");
  ASSERT_TRUE(CreateDefaultConfig(path));
  EXPECT_EQ(ReadFile(path),
            "[Header]\r\nProduct=KRO_B\r\nFileType=CONFIG\r\nFileFormat=1.0\r\n\r\n[General]\r\n"
            "DefaultInputFile=\r\nDefaultOutputFile=\r\nUseRecipeFile=\r\nDefaultRecipeFile=\r\n"
            "\r\n");
}

}  // namespace
}  // namespace kroveld

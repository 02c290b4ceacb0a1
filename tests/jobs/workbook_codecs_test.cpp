// The codec table: every entry saves under its own suffix, recognises what it wrote by its
// signature and reads it back, so an entry with a wrong signature or a swapped function fails.
#include "jobs/workbook/workbook_codecs.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace kroveld {
namespace {

TEST(WorkbookCodecs, EachEntrySavesRecognisesAndReadsItsOwnFiles) {
  testing::TempDir dir;
  Workbook book;
  book.GetSheet(1).SetText(2, 3, "cell");
  for (const WorkbookCodec& codec : WorkbookCodecs()) {
    SCOPED_TRACE(std::string(codec.suffix));
    const std::string path = dir.File("out" + std::string(codec.suffix));
    EXPECT_EQ(&CodecForSaving(path), &codec);
    EXPECT_TRUE(NamesWorkbook(path));
    std::string error;
    ASSERT_TRUE(codec.write(book, path, error, {})) << error;
    const std::string head = testing::ReadFile(path).substr(0, codec.signature.size());
    EXPECT_EQ(CodecForSignature(head), &codec);
    Workbook back;
    ASSERT_TRUE(codec.read(path, back, error)) << error;
    EXPECT_EQ(back.GetSheet(1).Get(2, 3).text, "cell");
  }
  // Any other workbook name is saved as OOXML; a file of no known kind has no codec.
  EXPECT_EQ(CodecForSaving("out.xls.bak").suffix, ".xlsx");
  EXPECT_EQ(CodecForSaving("OUT.XLS").suffix, ".xls");
  EXPECT_EQ(CodecForSignature("plain text"), nullptr);
}

}  // namespace
}  // namespace kroveld

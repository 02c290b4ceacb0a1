// Title sections: the block written at the sheet's write pointer. Reading and validation are tested
// through the export definition (export_specs_test).
#include <gtest/gtest.h>

#include "engine/context.h"
#include "engine/title.h"
#include "support/cell_sink.h"
#include "support/recording_port.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::CellSink;
using testing::RecordingPort;
using testing::TempDir;

class TitleProcess : public ::testing::Test {
 protected:
  TitleProcess() : ctx(ui, dir.path()) { ctx.sink = &sink; }

  static clsTitle Make(int sheet, std::string column, std::vector<std::string> lines) {
    clsTitle t;
    t.WriteSheet = sheet;
    t.WriteColumn = std::move(column);
    t.Lines = std::move(lines);
    return t;
  }

  TempDir dir;
  RecordingPort ui;
  CellSink sink;
  Context ctx;
};

TEST_F(TitleProcess, BlocksStackPerSheetEmptyLinesTakeARowBadSheetsWriteNothing) {
  ctx.recipe.ExportSpecs.WritePointer1 = 5;
  clsTitle a = Make(1, "C", {"one", "", "three"});
  clsTitle b = Make(2, "b", {"b1"});
  clsTitle c = Make(1, "C", {"c1"});
  clsTitle d = Make(2, "AA", {"d1", "d2"});
  clsTitle bad = Make(3, "A", {"x"});  // reported, writes nothing and moves no pointer
  for (clsTitle* t : {&a, &b, &bad, &c, &d}) t->Process(ctx);
  EXPECT_EQ(ui.Texts(),
            (std::vector<std::string>{"Invalid sheet number in clsExportSpecs.getWritePointer!",
                                      "Invalid sheet number in clsExportSpecs.setWritePointer!"}));
  EXPECT_EQ(sink.Cell(1, 5, 3), "one");
  EXPECT_EQ(sink.cells.count({1, 6, 3}), 0u);  // the empty line writes nothing
  EXPECT_EQ(sink.Cell(1, 7, 3), "three");
  EXPECT_EQ(sink.Cell(1, 8, 3), "c1");  // the sheet-2 title did not move sheet 1
  EXPECT_EQ(sink.Cell(2, 1, 2), "b1");
  EXPECT_EQ(sink.Cell(2, 2, 27), "d1");  // "AA" is column 27
  EXPECT_EQ(sink.Cell(2, 3, 27), "d2");
  EXPECT_EQ(sink.cellWrites, 6);
  EXPECT_EQ(ctx.recipe.ExportSpecs.WritePointer1, 9);
  EXPECT_EQ(ctx.recipe.ExportSpecs.WritePointer2, 4);
}

}  // namespace
}  // namespace kroveld

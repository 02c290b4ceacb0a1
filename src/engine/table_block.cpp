// The key search of a table and the checks on the block it gives.
#include "engine/table_block.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <vector>

#include "engine/context.h"
#include "engine/pattern.h"
#include "engine/section_keys.h"
#include "engine/table.h"
#include "util/byte_scan.h"
#include "util/strings.h"

namespace kroveld {

void FailTable(Context& ctx, const std::string& text) {
  ctx.ui.Message(text, Icon::Critical);
  ctx.recipe.ExportSpecs.Failed = true;
}

namespace {

// One key of a search that holds a pattern: the pattern when it has one, else its key text, which
// a line must contain.
struct KeyTest {
  const Pattern* pattern;
  std::string_view text;
  bool Matches(std::string_view line) const {
    return pattern->Empty() ? line.find(text) != std::string_view::npos : pattern->Matches(line);
  }
};

// The first line (from 1) that passes each test, in one pass. A mapped report is searched where
// it lies, and a line found there carries its byte offset, so reading the rows can start at it;
// otherwise the file is read anew and the offset is not known (-1): reading starts from line 1.
void FindFirstLinesMatching(const std::string& path, TextFile* mapped, const KeyTest keys[2],
                            KeyLine found[2], const std::function<void()>& afterBlock) {
  int wanted = 2;
  std::int64_t number = 0;
  const auto test = [&](std::string_view line, std::int64_t offset) {
    ++number;
    for (int k = 0; k < 2; ++k) {
      if (found[k].line == 0 && keys[k].Matches(line)) {
        found[k] = KeyLine{number, offset};
        --wanted;
      }
    }
    if ((number & 0xFFFF) == 0) afterBlock();
  };
  if (mapped != nullptr && mapped->IsMapped()) {
    // Lines end as TextFile ends them: CR LF, LF or a lone CR; a long line is cut as it cuts it.
    const std::string_view bytes = mapped->MappedBytes();
    const char* const begin = bytes.data();
    const char* const end = begin + bytes.size();
    for (const char* p = begin; wanted > 0 && p < end;) {
      const char* const eol = scan::FindCrOrLf(p, end);
      test(std::string_view(
               p, std::min<std::size_t>(static_cast<std::size_t>(eol - p), kMaxLineBytes)),
           p - begin);
      p = eol;
      if (p < end && *p++ == '\r' && p < end && *p == '\n') ++p;
    }
    return;
  }
  TextFile file;
  if (!file.Open(path)) return;
  std::string_view line;
  while (wanted > 0 && file.ReadLine(line)) test(line, -1);
}

}  // namespace

bool LocateTableBlock(Context& ctx, const clsTable& table, TextFile* keyText, LocatedBlock& block) {
  UiPort& ui = ctx.ui;
  const std::string section = "Table " + ToText(static_cast<long long>(table.Number));
  // A pattern key takes the place of its key text.
  Pattern patterns[2];
  const std::string* patternTexts[2] = {&table.ReadStartPattern, &table.ReadEndPattern};
  const char* patternNames[2] = {"ReadStartPattern", "ReadEndPattern"};
  for (int k = 0; k < 2; ++k) {
    std::string why;
    if (!patterns[k].Compile(*patternTexts[k], why)) {
      FailTable(ctx, PatternError(section, patternNames[k], *patternTexts[k], why));
      return false;
    }
  }
  // A block of the search takes a millisecond or two: the window stays live through it.
  const auto afterBlock = [&ui, &ctx, &table] {
    RunProgress& progress = ctx.run.progress;
    progress.table = table.Number;
    progress.row = progress.rows = 0;
    progress.phase = "reading";
    ui.Progress(progress);
    ui.ProcessEvents();
  };
  // Both keys are searched from line 1 of the first input file taking part, in one pass that
  // stops as soon as both are found.
  block.keyFile = ctx.recipe.InputFilePath(ctx.recipe.InputFileFirst);
  KeyLine found[2];
  if (patterns[0].Empty() && patterns[1].Empty()) {
    const std::string_view texts[] = {table.ReadStartLine, table.ReadEndLine};
    const std::vector<KeyLine> lines =
        keyText != nullptr && keyText->IsMapped()
            ? FindFirstLinesContaining(keyText->MappedBytes(), texts,
                                       [&afterBlock, keyText](std::int64_t searched) {
                                         keyText->ReleaseBefore(searched);
                                         afterBlock();
                                       })
            : FindFirstLinesContaining(block.keyFile, texts, afterBlock);
    found[0] = lines[0];
    found[1] = lines[1];
  } else {
    // A pattern key and a key text are searched together, line by line.
    const KeyTest keys[2] = {{&patterns[0], table.ReadStartLine},
                             {&patterns[1], table.ReadEndLine}};
    FindFirstLinesMatching(block.keyFile, keyText, keys, found, afterBlock);
  }
  block.top = found[0];
  block.bottom = found[1];
  block.startLine = block.endLine = 0;
  if (block.top.line != 0 && block.bottom.line != 0) {
    block.startLine = block.top.line + table.ReadStartLineOffset;
    block.endLine = block.bottom.line + table.ReadEndLineOffset;
  }
  if (ctx.observer != nullptr) {
    ctx.observer->TableKeysSearched(
        table, TableBlock{block.top.line, block.bottom.line, block.startLine, block.endLine});
  }
  // The messages name the pattern when the key is one.
  const std::string topName = patterns[0].Empty() ? "ReadStartLine" : "ReadStartPattern";
  const std::string& topText = patterns[0].Empty() ? table.ReadStartLine : table.ReadStartPattern;
  const std::string bottomName = patterns[1].Empty() ? "ReadEndLine" : "ReadEndPattern";
  const std::string& bottomText = patterns[1].Empty() ? table.ReadEndLine : table.ReadEndPattern;
  if (block.top.line == 0) {
    FailTable(ctx, "Error in Table specs: Can not find " + topName + ": " + topText);
    NoteMissingKey(ui, section, topName, topText);
    return false;
  }
  if (block.bottom.line == 0) {
    FailTable(ctx, "Error in Table specs: Can not find " + bottomName + ": " + bottomText);
    NoteMissingKey(ui, section, bottomName, bottomText);
    return false;
  }
  if (block.endLine < block.startLine) {
    FailTable(ctx, "Error in Table specs: " + KeyWords(bottomName, bottomText) +
                       " was found before " + KeyWords(topName, topText));
    return false;
  }
  // The end lies at or after the start: a block that ends before line 1 starts there too.
  if (block.startLine < 1) {
    if (ctx.options.bVerbose) {
      ui.Note(section + " skipped: it would start on line " +
              ToText(static_cast<long long>(block.startLine)) +
              ", before the first line of the report (ReadStartLine found on line " +
              ToText(static_cast<long long>(block.top.line)) + ", ReadStartLineOffset " +
              ToText(static_cast<long long>(table.ReadStartLineOffset)) + ")");
    }
    return false;
  }
  return true;
}

}  // namespace kroveld

// Consolidation: departments collect their account rows from sheet 1, the consolidate section
// lists each account once on sheet 2 and adds the later departments' rows into it.
#include <algorithm>
#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "engine/con.h"
#include "engine/context.h"
#include "engine/pattern.h"
#include "engine/section_keys.h"
#include "util/column_letters.h"
#include "util/numbers.h"
#include "util/strings.h"

namespace kroveld {

namespace {

// First row in first..last (clipped to the sheet) of `column` on `sheet` whose text contains
// `key` (case-sensitive); 0 when none does.
// With a pattern that is not empty, the first row whose text matches it instead.
int FindKeyRow(OutputSink& sink, int sheet, int column, long long first, long long last,
               std::string_view key, const Pattern& pattern) {
  if (column < 1) return 0;
  first = std::max<long long>(first, 1);
  last = std::min<long long>(last, kMaxSheetRow);
  for (long long row = first; row <= last; ++row) {
    const std::string text = sink.GetCell(sheet, static_cast<int>(row), column);
    if (pattern.Empty() ? text.find(key) != std::string::npos : pattern.Matches(text)) {
      return static_cast<int>(row);
    }
  }
  return 0;
}

// The department's key as its messages name it: the pattern when it has one, else the key text.
struct DepartmentKey {
  std::string name;  // "ReadStartLine" or "ReadStartPattern", ...
  std::string text;
  Pattern pattern;
};

bool PrepareKey(Context& ctx, DepartmentKey& key, std::string_view line, const std::string& text,
                std::string_view patternName, const std::string& patternText) {
  key.name = patternText.empty() ? std::string(line) : std::string(patternName);
  key.text = patternText.empty() ? text : patternText;
  std::string why;
  if (key.pattern.Compile(patternText, why)) return true;
  ctx.ui.Message(PatternError("The department", patternName, patternText, why), Icon::Critical);
  return false;
}

std::string FoundBeforeMessage(const DepartmentKey& top, const DepartmentKey& bottom) {
  return "Error in Table specs: " + KeyWords(bottom.name, bottom.text) + " was found before " +
         KeyWords(top.name, top.text);
}

std::string AccountKey(std::string_view name) {
  return UpperAscii(Trim(name));
}

// A sheet-2 row computed from the write pointer; rows past the sheet are never written.
int SheetRow(long long row) {
  return static_cast<int>(std::clamp<long long>(row, 0, kMaxSheetRow + 1LL));
}

// Moves one sheet-1 row into a sheet-2 row, column by column. Text sources replace the target;
// numeric sources replace it when copying and are added into it when adding.
class RowTransfer {
 public:
  RowTransfer(Context& ctx, const std::vector<int>& columns)
      : ctx_(ctx), columns_(columns), format_(ctx.recipe.WriteDataFormat) {}

  void Move(int sourceRow, int targetRow, bool adding) {
    if (sourceRow < 1 || targetRow < 1 || targetRow > kMaxSheetRow) return;
    for (int column : columns_) {
      if (column < 1) continue;
      const std::string source = ctx_.sink->GetCell(1, sourceRow, column);
      Fixed4 sourceValue;
      const NumberParse sourceParse = ParseFixed(source, sourceValue);
      if (sourceParse == NumberParse::kNotNumeric) {
        ctx_.sink->SetCell(2, targetRow, column, source);
        continue;
      }
      const std::string target = ctx_.sink->GetCell(2, targetRow, column);
      Fixed4 targetValue;
      NumberParse targetParse = NumberParse::kOk;
      if (!Trim(target).empty()) {
        targetParse = ParseFixed(target, targetValue);
        if (targetParse == NumberParse::kNotNumeric) {
          ctx_.ui.Message(
              "Error: Unexpected non-numeric field! (Sheet 2, Row " + ToText(targetRow) + ")",
              Icon::Critical);
          targetValue = Fixed4{};
          targetParse = NumberParse::kOk;
        }
      }
      if (!adding) {
        ctx_.sink->SetCell(2, targetRow, column, source);
        continue;
      }
      Fixed4 sum;
      if (sourceParse != NumberParse::kOk || targetParse != NumberParse::kOk ||
          !AddFixed(targetValue, sourceValue, sum)) {
        ctx_.ui.Message("Error: Number too large to add! (Sheet 2, Row " + ToText(targetRow) + ")",
                        Icon::Critical);
        continue;  // the target keeps its value
      }
      text_.clear();
      AppendInWriteDataFormat(text_, sum, format_);
      ctx_.sink->SetCell(2, targetRow, column, text_);
    }
  }

 private:
  Context& ctx_;
  const std::vector<int>& columns_;
  const std::string& format_;
  std::string text_;
};

}  // namespace

void clsDepartment::Process(Context& ctx, int firstRow, int lastRow,
                            const std::string& accountColumn) {
  AccountNames.clear();
  AccountRows.clear();
  const int column = AlphaToNum2(ctx.ui, accountColumn);

  DepartmentKey top;
  DepartmentKey bottom;
  if (!PrepareKey(ctx, top, "ReadStartLine", ReadStartLine, "ReadStartPattern", ReadStartPattern) ||
      !PrepareKey(ctx, bottom, "ReadEndLine", ReadEndLine, "ReadEndPattern", ReadEndPattern)) {
    return;
  }

  const int startFound =
      FindKeyRow(*ctx.sink, 1, column, firstRow, lastRow, ReadStartLine, top.pattern);
  if (startFound == 0) {
    ctx.ui.Message("Error in Department specs: Can not find " + top.name + ": " + top.text,
                   Icon::Critical);
    NoteMissingKey(ctx.ui, "The department", top.name, top.text);
    return;
  }
  const long long startRow = static_cast<long long>(startFound) + ReadStartLineOffset;
  const int endFound =
      FindKeyRow(*ctx.sink, 1, column, firstRow, lastRow, ReadEndLine, bottom.pattern);
  if (endFound == 0) {
    ctx.ui.Message("Error in Department specs: Can not find " + bottom.name + ": " + bottom.text,
                   Icon::Critical);
    NoteMissingKey(ctx.ui, "The department", bottom.name, bottom.text);
    return;
  }
  // The bottom key's row is compared before its offset is added (tables compare after).
  if (endFound < startRow) {
    ctx.ui.Message(FoundBeforeMessage(top, bottom), Icon::Critical);
    return;
  }
  const long long endRow = static_cast<long long>(endFound) + ReadEndLineOffset;
  ReadAccountNames(ctx, static_cast<int>(std::clamp<long long>(startRow, 0, kMaxSheetRow + 1LL)),
                   static_cast<int>(std::clamp<long long>(endRow, 0, kMaxSheetRow)), accountColumn);
}

void clsDepartment::ReadAccountNames(Context& ctx, int startRow, int endRow,
                                     const std::string& accountColumn) {
  const int column = AlphaToNum2(ctx.ui, accountColumn);
  if (column < 1) return;
  // Rows outside the sheet hold nothing and are not read.
  const int first = std::max(startRow, 1);
  const int last = std::min(endRow, kMaxSheetRow);
  for (int row = first; row <= last; ++row) {
    AccountNames.push_back(ctx.sink->GetCell(1, row, column));
    AccountRows.push_back(row);
  }
}

void clsCon::Process(Context& ctx) {
  clsExportSpecs& specs = ctx.recipe.ExportSpecs;
  UiPort& ui = ctx.ui;

  if (Table < 1 || static_cast<std::size_t>(Table) > specs.Tables.size()) {
    ui.Message("Can not consolidate table " + ToText(Table) + ". Table does not exist!",
               Icon::Critical);
    specs.Failed = true;
    return;
  }
  const clsTable& table = specs.Tables[static_cast<std::size_t>(Table - 1)];
  if (ReadAccountsColumn > table.TotalColumns || ReadAccountsColumn < 1 ||
      static_cast<std::size_t>(ReadAccountsColumn) > table.Columns.size()) {
    ui.Message("Error in Consolidate: Table " + ToText(Table) + " does not have " +
                   ToText(ReadAccountsColumn) + " columns!",
               Icon::Critical);
    specs.Failed = true;
    return;
  }
  const std::string accountColumn =
      table.Columns[static_cast<std::size_t>(ReadAccountsColumn - 1)].WriteColumn;

  for (clsDepartment& department : Departments) {
    department.Process(ctx, table.FirstRowWritten, table.LastRowWritten, accountColumn);
  }

  const int base = specs.getWritePointer(ui, 2);
  FirstRowWritten = base;
  if (Departments.empty()) {
    ui.Message("No Departments to consolidate in clsCon!", Icon::Critical);
    return;
  }
  AccNames.clear();
  AccReadRowNumbers.clear();
  DupAccReadRowNumbers.clear();
  DupAccTargetRows.clear();

  // Account keys (trimmed, upper case) to their first position in AccNames.
  std::unordered_map<std::string, int> firstIndex;
  const clsDepartment& first = Departments.front();
  for (std::size_t i = 0; i < first.AccountNames.size(); ++i) {
    AccNames.push_back(first.AccountNames[i]);
    AccReadRowNumbers.push_back(first.AccountRows[i]);
    firstIndex.emplace(AccountKey(first.AccountNames[i]), static_cast<int>(AccNames.size()));
  }
  for (std::size_t d = 1; d < Departments.size(); ++d) {
    const clsDepartment& department = Departments[d];
    for (std::size_t i = 0; i < department.AccountNames.size(); ++i) {
      const std::string& name = department.AccountNames[i];
      // A new account takes the next position; a known one keeps its first.
      const auto [found, added] =
          firstIndex.try_emplace(AccountKey(name), static_cast<int>(AccNames.size()) + 1);
      if (added) {
        AccNames.push_back(name);
        AccReadRowNumbers.push_back(department.AccountRows[i]);
      } else {
        DupAccReadRowNumbers.push_back(department.AccountRows[i]);
        DupAccTargetRows.push_back(SheetRow(static_cast<long long>(base) + found->second - 1));
      }
    }
  }

  std::vector<int> columns;
  columns.reserve(table.Columns.size());
  for (const clsColumn& column : table.Columns) {
    columns.push_back(AlphaToNum2(ui, column.WriteColumn));
  }
  RowTransfer transfer(ctx, columns);
  for (std::size_t j = 0; j < AccNames.size(); ++j) {
    transfer.Move(AccReadRowNumbers[j],
                  SheetRow(static_cast<long long>(base) + static_cast<long long>(j)), false);
  }
  for (std::size_t k = 0; k < DupAccReadRowNumbers.size(); ++k) {
    transfer.Move(DupAccReadRowNumbers[k], DupAccTargetRows[k], true);
  }
  const long long next = static_cast<long long>(base) + static_cast<long long>(AccNames.size());
  specs.setWritePointer(ui, 2, static_cast<int>(std::min<long long>(next, INT32_MAX)));
}

}  // namespace kroveld

#include "jobs/preview/preview_text.h"

#include <algorithm>
#include <vector>

#include "jobs/preview/cell_text.h"
#include "util/strings.h"

namespace kroveld {

namespace {

std::string Num(long long n) {
  return ToText(n);
}

// Characters of UTF-8 text (continuation bytes do not count).
std::size_t Width(std::string_view text) {
  std::size_t n = 0;
  for (const char c : text) {
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++n;
  }
  return n;
}

void Pad(std::string& out, std::string_view text, std::size_t width, bool right) {
  const std::size_t w = Width(text);
  const std::string fill(width > w ? width - w : 0, ' ');
  if (right) out += fill;
  out += text;
  if (!right) out += fill;
}

std::string Letters(int column) {
  std::string letters;
  for (int n = column; n > 0; n = (n - 1) / 26) {
    letters.insert(letters.begin(), static_cast<char>('A' + (n - 1) % 26));
  }
  return letters;
}

void AppendTable(std::string& out, const PreviewTable& table) {
  out += "Table " + Num(table.number) + ": ";
  if (table.topKeyLine == 0) {
    out += "top key text not found\n";
  } else if (table.bottomKeyLine == 0) {
    out += "top key on line " + Num(table.topKeyLine) + ", bottom key text not found\n";
  } else {
    out += "lines " + Num(table.startLine) + "-" + Num(table.endLine) + " (top key on line " +
           Num(table.topKeyLine) + ", bottom key on line " + Num(table.bottomKeyLine) + ")";
    if (table.lastRow >= table.firstRow && table.firstRow > 0) {
      out += ", sheet 1 rows " + Num(table.firstRow) + "-" + Num(table.lastRow);
    }
    if (table.linesFiltered > 0) {
      out += ", " + Num(table.linesFiltered) + (table.linesFiltered == 1 ? " line" : " lines") +
             " of the block filtered out";
    }
    out += "\n";
  }
  for (const PreviewColumn& column : table.columns) {
    out += "  Col " + Num(column.number) + ": characters " + Num(column.start) + "-" +
           Num(column.end) + " -> column " + column.writeColumn + "\n";
  }
}

void AppendSheet(std::string& out, const Sheet& sheet, int number, int maxRows) {
  const int rows = std::min(sheet.MaxRow(), maxRows);
  out += "Sheet " + Num(number) + " (" + sheet.Name() + "): ";
  if (sheet.MaxRow() == 0) {
    out += "empty\n";
    return;
  }
  out += Num(sheet.MaxRow()) + " rows";
  if (rows < sheet.MaxRow()) out += ", the first " + Num(rows) + " shown";
  out += "\n";
  const int columns = sheet.MaxColumn();
  std::vector<std::vector<std::string>> text(static_cast<std::size_t>(rows));
  std::vector<std::vector<bool>> numeric(static_cast<std::size_t>(rows));
  std::vector<std::size_t> widths(static_cast<std::size_t>(columns) + 1, 0);
  widths[0] = Num(rows).size();
  for (int c = 1; c <= columns; ++c) widths[static_cast<std::size_t>(c)] = Letters(c).size();
  for (int r = 1; r <= rows; ++r) {
    auto& cells = text[static_cast<std::size_t>(r - 1)];
    auto& isNumber = numeric[static_cast<std::size_t>(r - 1)];
    for (int c = 1; c <= columns; ++c) {
      const CellView cell = sheet.Get(r, c);
      cells.push_back(CellDisplayText(cell));
      isNumber.push_back(cell.type == CellType::kNumber);
      widths[static_cast<std::size_t>(c)] =
          std::max(widths[static_cast<std::size_t>(c)], Width(cells.back()));
    }
  }
  std::string line;
  Pad(line, "", widths[0], true);
  for (int c = 1; c <= columns; ++c) {
    line += " | ";
    Pad(line, Letters(c), widths[static_cast<std::size_t>(c)], false);
  }
  while (!line.empty() && line.back() == ' ') line.pop_back();
  out += line + "\n";
  for (int r = 1; r <= rows; ++r) {
    line.clear();
    Pad(line, Num(r), widths[0], true);
    for (int c = 1; c <= columns; ++c) {
      line += " | ";
      const std::size_t i = static_cast<std::size_t>(c - 1);
      Pad(line, text[static_cast<std::size_t>(r - 1)][i], widths[static_cast<std::size_t>(c)],
          numeric[static_cast<std::size_t>(r - 1)][i]);
    }
    while (!line.empty() && line.back() == ' ') line.pop_back();
    out += line + "\n";
  }
}

}  // namespace

std::string PreviewText(const PreviewResult& result, int maxRows) {
  std::string out;
  for (const std::string& note : result.notes) out += "Note: " + note + "\n";
  for (const PreviewTitle& title : result.titles) {
    const long long last = title.firstRow + static_cast<long long>(title.lines.size()) - 1;
    out += "Title " + Num(title.number) + ": sheet " + Num(title.sheet) +
           (last > title.firstRow ? " rows " + Num(title.firstRow) + "-" + Num(last)
                                  : " row " + Num(title.firstRow)) +
           ", column " + title.writeColumn + "\n";
  }
  for (const PreviewTable& table : result.tables) AppendTable(out, table);
  for (int sheet = 1; sheet <= std::min(2, result.workbook.SheetCount()); ++sheet) {
    out += "\n";
    AppendSheet(out, result.workbook.GetSheet(sheet), sheet, maxRows);
  }
  return out;
}

}  // namespace kroveld

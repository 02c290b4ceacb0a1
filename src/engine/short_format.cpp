#include "engine/short_format.h"

#include <string>
#include <vector>

#include "engine/context.h"
#include "engine/export_specs.h"
#include "engine/recipe.h"
#include "engine/section_keys.h"
#include "engine/table_parser.h"
#include "util/column_letters.h"
#include "util/files.h"
#include "util/private_profile.h"
#include "util/profile.h"
#include "util/strings.h"

namespace kroveld {

namespace {

bool BeginsWith(std::string_view line, std::string_view key) {
  return line.size() >= key.size() && line.substr(0, key.size()) == key;
}

std::string TableName(int n) {
  return "Table " + ToText(n);
}

// The template keeps its leading blanks (they place the fields); only trailing blanks go.
std::string ReadTemplate(const std::string& path, const std::string& section) {
  TextFile file;
  if (!file.Open(path)) return std::string();
  return GetProfileValue(file, section, "Parsing", "", kTrimTrailing);
}

// An offset key: absent reads as 0. False for text that is not a whole number.
bool ReadOffset(const std::string& path, const std::string& section, std::string_view key,
                int& value) {
  return ParseLong(GetProfileValueFromFile(path, section, key, "0"), value);
}

}  // namespace

LineSpan FindLineSpan(TextFile& file, std::string_view startKey, std::string_view endKey) {
  LineSpan span;
  std::string_view line;
  std::int64_t n = 0;
  bool found = false;
  while (file.ReadLine(line)) {
    ++n;
    if (BeginsWith(line, startKey)) {
      found = true;
      break;
    }
  }
  if (!found) return span;
  span.start = n;
  if (file.ReadLine(line)) span.text.assign(line);
  std::int64_t m = 0;
  while (file.ReadLine(line)) {
    ++m;
    if (BeginsWith(line, endKey)) {
      span.end = span.start + 1 + m;
      return span;
    }
  }
  return span;
}

void FileCreateShort(Context& ctx, const std::string& templatePath, const std::string& shortPath) {
  UiPort& ui = ctx.ui;
  PrivateProfile out;
  out.Set("Header", "Product", "KRO-B");
  out.Set("Header", "FileType", "RECIPE");
  out.Set("Header", "FileFormat", "1.0");

  TextFile in;
  if (!in.Open(templatePath)) {
    ui.Message("Cannot read template file: " + in.Error(), Icon::Exclamation);
  } else {
    int n = 0;
    std::int64_t consumed = 0;  // lines read before the current position
    for (;;) {
      // A block: "<<" line, the template line, then the next line beginning with ">>". The keys
      // written are the other way round: the table starts two lines below ">>n" and ends on the
      // line above "<<n".
      const LineSpan span = FindLineSpan(in, "<<", ">>");
      if (span.start == 0) {
        if (n == 0) {
          // Without this the run would end with an empty output and no word why.
          ui.Message("No table markers found in " + templatePath +
                         ": mark table n with a line \">>n\" two lines above its first row and "
                         "a line \"<<n\" right after its last row, followed by its template "
                         "line and a line beginning with \">>\".",
                     Icon::Exclamation);
        }
        break;
      }
      const std::int64_t templateLine = consumed + span.start + 1;
      if (span.text.empty()) {
        ui.Message(TableName(n + 1) + ": the template line (line " + ToText(templateLine) + " of " +
                       templatePath + ") is empty; this table and the ones after it are not read.",
                   Icon::Exclamation);
        break;
      }
      if (span.end == 0) {
        ui.Message(TableName(n + 1) + ": no line beginning with \">>\" after its template (line " +
                       ToText(templateLine) + " of " + templatePath + "); this table is not read.",
                   Icon::Exclamation);
        break;
      }
      ++n;
      const std::string section = TableName(n);
      out.Set(section, "ReadStartLine", ">>" + ToText(n));
      out.Set(section, "ReadStartLineOffset", "2");
      out.Set(section, "ReadEndLine", "<<" + ToText(n));
      out.Set(section, "ReadEndLineOffset", "-1");
      out.Set(section, "Parsing", span.text);
      out.Set(section, "WriteColumn", "A");
      consumed += span.end;
    }
    in.Close();
  }

  if (!out.Save(shortPath))
    ui.Message("Cannot write " + shortPath + ": " + out.Error(), Icon::Critical);
}

void FileConvertShortToLong(Context& ctx, const std::string& shortPath, const std::string& longPath,
                            const std::string& inputPath) {
  UiPort& ui = ctx.ui;
  if (!FileExists(shortPath)) ui.Message("short format recipe file does not exist!");

  PrivateProfile out;
  out.Set("Header", "Product", "KRO");
  out.Set("Header", "FileType", "EXPORT SPEC");
  out.Set("Header", "FileFormat", "1.1");
  out.Set("General", "Name", "");

  const int count = CountSectionHeadings(shortPath, "[Table ", "Col");
  clsTableParser parser;
  std::vector<ColumnSpan> spans;
  for (int n = 1; n <= count; ++n) {
    const std::string section = TableName(n);
    ui.Status(1, ctx.statusPrefix + " - Scanning " + section);

    clsTable table;
    table.ReadStartLine = GetProfileValueFromFile(shortPath, section, "ReadStartLine", kMissing);
    const bool startOffsetOk =
        ReadOffset(shortPath, section, "ReadStartLineOffset", table.ReadStartLineOffset);
    table.ReadEndLine = GetProfileValueFromFile(shortPath, section, "ReadEndLine", kMissing);
    const bool endOffsetOk =
        ReadOffset(shortPath, section, "ReadEndLineOffset", table.ReadEndLineOffset);
    const std::string tmpl = ReadTemplate(shortPath, section);
    std::string writeColumn = GetProfileValueFromFile(shortPath, section, "WriteColumn", kMissing);
    if (writeColumn == kMissing) writeColumn = "A";

    // A missing key text would silently match the first non-empty line of the report.
    if (table.ReadStartLine == kMissing) {
      ShowSectionError(ui, section, " : Invalid ReadStartLine!");
      break;
    }
    if (table.ReadEndLine == kMissing) {
      ShowSectionError(ui, section, " : Invalid ReadEndLine!");
      break;
    }
    if (!startOffsetOk || !endOffsetOk) {
      ShowOffsetError(ui, section, startOffsetOk ? "ReadEndLineOffset" : "ReadStartLineOffset");
      break;
    }

    const std::string code = UpperAscii(Trim(tmpl));
    const bool special = code == "=R" || code == "=L" || code == "=" || code == "-";
    if (special || tmpl.find('=') != std::string::npos) {
      if (!parser.TestGetTemplate(ui, inputPath, table.ReadStartLine, table.ReadStartLineOffset,
                                  table.ReadEndLine, table.ReadEndLineOffset, ctx.tabSize,
                                  ctx.lineProcessor.Utf8())) {
        ui.Message(section + " not found!", Icon::Exclamation);
        break;
      }
    } else {
      // A fixed template needs no table, but when the table is there its last column is
      // stretched to the longest row so that nothing right of the template is dropped.
      parser.Locate(inputPath, table.ReadStartLine, table.ReadStartLineOffset, table.ReadEndLine,
                    table.ReadEndLineOffset, ctx.tabSize, ctx.lineProcessor.Utf8());
    }
    std::string working = tmpl;
    if (code == "=L") working = parser.MarkedTemplate('L');
    if (code == "=R") working = parser.MarkedTemplate('R');
    if (!parser.analyze_template(ui, working, spans)) {
      ui.Message(section + " not found!", Icon::Exclamation);
      break;
    }

    const int first = AlphaToNum2(ui, writeColumn);
    if (first == 0) break;
    bool lettersOk = true;
    table.Columns.reserve(spans.size());
    for (std::size_t k = 0; k < spans.size(); ++k) {
      clsColumn column;
      column.ReadColumnStart = spans[k].start;
      column.ReadColumnEnd = spans[k].end;
      column.WriteColumn = NumToAlpha2(ui, first + static_cast<int>(k));
      column.PeriodOperator = spans[k].sum ? "SUM" : "";
      if (column.WriteColumn.empty()) {
        lettersOk = false;
        break;
      }
      table.Columns.push_back(std::move(column));
    }
    if (!lettersOk) break;
    table.TotalColumns = static_cast<int>(table.Columns.size());
    table.WriteToFile(out, n);
    ui.ProcessEvents();
  }

  if (!out.Save(longPath))
    ui.Message("Cannot write " + longPath + ": " + out.Error(), Icon::Critical);
}

void LoadFromFileShort(Context& ctx, clsRecipe& recipe, const std::string& path) {
  if (!FileExists(path)) ctx.ui.Message("Cannot find recipe file: " + path);
  recipe.Reset();
  // The input named below is the job's own, taken as the job gives it, not relative to the
  // short recipe's folder.
  recipe.Path.clear();
  const std::string longPath = ctx.AppFile("_ExportSpecs.krs");
  if (FileExists(longPath)) DeleteFile(longPath);
  recipe.InputFileNames[0] = ctx.currentInput;
  recipe.ExportSpecFileName = longPath;
  FileConvertShortToLong(ctx, path, longPath, ctx.currentInput);
}

}  // namespace kroveld

#include "engine/export_specs.h"

#include <cstdint>

#include "engine/context.h"
#include "engine/section_keys.h"
#include "util/private_profile.h"
#include "util/profile.h"
#include "util/strings.h"
#include "util/text_file.h"
#include "util/timing.h"

namespace kroveld {

namespace {

// For each section number 1..count of the three kinds, the first line that could hold its
// heading: a line with "[" that contains the kind word, a blank and the number. A section whose
// heading cannot be in the file reads with every key missing without scanning the file; a section
// whose first possible heading lies after the lines already read continues on the open file
// (which finds the same heading as reopening it would), so a file in order is read in one pass.
struct HeadingIndex {
  std::vector<std::int64_t> titles, tables, cons;

  // Numbers above the section limit are never looked up: a file with that many sections of a
  // kind is refused.
  static void Note(std::string_view line, std::string_view word, std::int64_t lineNumber,
                   std::vector<std::int64_t>& first) {
    for (std::size_t pos = line.find(word); pos != std::string_view::npos;
         pos = line.find(word, pos + 1)) {
      std::size_t p = pos + word.size();
      if (p >= line.size() || line[p] == '0') continue;  // names never have leading zeros
      long long n = 0;
      for (int digits = 0; p < line.size() && line[p] >= '0' && line[p] <= '9' && digits < 10;
           ++p, ++digits) {
        n = n * 10 + (line[p] - '0');
        if (n > kMaxSectionsPerKind) break;
        const auto at = static_cast<std::size_t>(n);
        if (at >= first.size()) first.resize(at + 1, 0);
        if (first[at] == 0) first[at] = lineNumber;
      }
    }
  }

  void Note(std::string_view line, std::int64_t lineNumber) {
    Note(line, "Title ", lineNumber, titles);
    Note(line, "Table ", lineNumber, tables);
    Note(line, "Consolidate ", lineNumber, cons);
  }
};

// The kind a line adds to the section sequence, or none: the first of "[Title ", "[Table " and
// "[Consolidate " it contains, unless it is a column heading (holds "Col").
const char* SequenceKind(std::string_view line) {
  if (line.find("Col") != std::string_view::npos) return nullptr;
  if (line.find("[Title ") != std::string_view::npos) return "Title";
  if (line.find("[Table ") != std::string_view::npos) return "Table";
  if (line.find("[Consolidate ") != std::string_view::npos) return "Consolidate";
  return nullptr;
}

// What one pass over a file gives: the heading counts of the three kinds (as CountSectionHeadings
// counts them), the section sequence and the heading index.
struct SectionScan {
  std::int64_t titles = 0, tables = 0, cons = 0;
  std::vector<std::string> sequence;
  HeadingIndex index;

  explicit SectionScan(const std::string& path) {
    // The sequence never has more entries than the three counts together, so once it is longer
    // than three full kinds the file is refused anyway and further entries are not kept.
    constexpr std::size_t kSequenceLimit = 3 * static_cast<std::size_t>(kMaxSectionsPerKind) + 1;
    TextFile file;
    if (!file.Open(path)) return;
    std::string_view line;
    std::int64_t number = 0;
    while (file.ReadLine(line)) {
      ++number;
      if (line.find('[') == std::string_view::npos) continue;  // every heading holds one
      const bool column = line.find("Col") != std::string_view::npos;
      if (line.find("[Title ") != std::string_view::npos) ++titles;
      if (!column && line.find("[Table ") != std::string_view::npos) ++tables;
      if (line.find("[Consolidate ") != std::string_view::npos) ++cons;
      if (const char* kind = SequenceKind(line); kind && sequence.size() < kSequenceLimit) {
        sequence.emplace_back(kind);
      }
      index.Note(line, number);
    }
  }
};

// Keeps one file open across the sections of a kind; see HeadingIndex.
class SectionReader {
 public:
  explicit SectionReader(const std::string& path) : path_(path) {}

  // The file to read a section from whose heading may first stand on `firstLine` (0: nowhere).
  TextFile& For(std::int64_t firstLine) {
    if (firstLine == 0) return closed_;
    if (!file_.IsOpen() || file_.LinesRead() >= firstLine) {
      file_.Close();
      file_.Open(path_);
    }
    return file_;
  }

 private:
  const std::string& path_;
  TextFile file_;
  TextFile closed_;
};

// Sections 1..count of one kind, each read from the file SectionReader gives for the first line
// that could hold its heading.
template <typename Section, typename Read>
void ReadSections(const std::string& path, int count, const std::vector<std::int64_t>& firstLines,
                  std::vector<Section>& into, Read read) {
  into.reserve(static_cast<std::size_t>(count));
  SectionReader reader(path);
  for (int n = 1; n <= count; ++n) {
    const auto at = static_cast<std::size_t>(n);
    Section section;
    read(section, reader.For(at < firstLines.size() ? firstLines[at] : 0), n);
    into.push_back(std::move(section));
  }
}

std::string TooManySections(const std::string& path, std::string_view kind) {
  return "Error in export specification " + path + " : more than " + ToText(kMaxSectionsPerKind) +
         " " + std::string(kind) + " sections!";
}

}  // namespace

std::vector<std::string> ReadSectionSequence(const std::string& path, int total) {
  std::vector<std::string> sequence;
  TextFile file;
  if (!file.Open(path)) return sequence;
  std::string_view line;
  // At the end of the file the rest of the sequence stays absent.
  while (static_cast<int>(sequence.size()) < total && file.ReadLine(line)) {
    if (const char* kind = SequenceKind(line)) sequence.emplace_back(kind);
  }
  return sequence;
}

int clsExportSpecs::getWritePointer(UiPort& ui, int sheet) const {
  if (sheet == 1) return WritePointer1;
  if (sheet == 2) return WritePointer2;
  ui.Message("Invalid sheet number in clsExportSpecs.getWritePointer!", Icon::Critical);
  return 0;
}

void clsExportSpecs::setWritePointer(UiPort& ui, int sheet, int row) {
  if (sheet == 1) {
    WritePointer1 = row;
  } else if (sheet == 2) {
    WritePointer2 = row;
  } else {
    ui.Message("Invalid sheet number in clsExportSpecs.setWritePointer!", Icon::Critical);
  }
}

void clsExportSpecs::Clear() {
  Name.clear();
  SectionSequenceCollection.clear();
  Titles.clear();
  Tables.clear();
  Consolidates.clear();
  TitleCount = 0;
  TableCount = 0;
  ConsolidateCount = 0;
  WritePointer1 = 1;
  WritePointer2 = 1;
  TablesProcessed = 0;
  Failed = false;
}

void clsExportSpecs::ReadFromFile(UiPort& ui, const std::string& path) {
  Clear();
  if (CheckFileHeader(ui, path, "KRO", "EXPORT SPEC", "1.1")) return;
  Name = GetProfileValueFromFile(path, "General", "Name", "");

  SectionScan scan(path);
  const struct {
    std::int64_t count;
    std::string_view kind;
  } counts[] = {{scan.titles, "Title"}, {scan.tables, "Table"}, {scan.cons, "Consolidate"}};
  for (const auto& c : counts) {
    if (c.count > kMaxSectionsPerKind) {
      ui.Message(TooManySections(path, c.kind), Icon::Critical);
      Clear();
      return;
    }
  }
  TitleCount = static_cast<int>(scan.titles);
  TableCount = static_cast<int>(scan.tables);
  ConsolidateCount = static_cast<int>(scan.cons);
  SectionSequenceCollection = std::move(scan.sequence);

  const HeadingIndex& index = scan.index;
  ReadSections(path, TitleCount, index.titles, Titles, [&](clsTitle& title, TextFile& file, int n) {
    title.ReadFromFileSequentially(ui, file, n);
  });
  ReadSections(path, TableCount, index.tables, Tables, [&](clsTable& table, TextFile& file, int n) {
    table.ReadFromFileSequentially(ui, file, n);
  });
  ReadSections(path, ConsolidateCount, index.cons, Consolidates,
               [&](clsCon& con, TextFile& file, int n) {
                 con.ReadFromFileSequentially(ui, file, n, TableCount);
               });
}

bool clsExportSpecs::WriteToFile(UiPort& ui, const std::string& path) const {
  // The file is written whole from an empty document: sections of an older version of the file
  // (a title since removed, the old order) must not survive, or the renumbered file would read
  // back with more sections, or in another order, than were written.
  PrivateProfile file;
  file.Set("Header", "Product", Product);
  file.Set("Header", "FileType", FileType);
  file.Set("Header", "FileFormat", FileFormat);
  file.Set("General", "Name", Name);

  std::size_t title = 0;
  std::size_t table = 0;
  std::size_t con = 0;
  for (const std::string& kind : SectionSequenceCollection) {
    if (kind == "Title" && title < Titles.size()) {
      Titles[title].WriteToFile(file, static_cast<int>(title + 1));
      ++title;
    } else if (kind == "Table" && table < Tables.size()) {
      Tables[table].WriteToFile(file, static_cast<int>(table + 1));
      ++table;
    } else if (kind == "Consolidate" && con < Consolidates.size()) {
      Consolidates[con].WriteToFile(file, static_cast<int>(con + 1));
      ++con;
    } else {
      ui.Message("Invalid item in SectionSequenceCollection!", Icon::Critical);
    }
  }
  if (!file.Save(path)) {
    ui.Message("Cannot write export specification file: " + path + " (" + file.Error() + ")",
               Icon::Critical);
    return false;
  }
  return true;
}

void clsExportSpecs::Process(Context& ctx) {
  UiPort& ui = ctx.ui;
  const std::size_t expected = static_cast<std::size_t>(TitleCount) +
                               static_cast<std::size_t>(TableCount) +
                               static_cast<std::size_t>(ConsolidateCount);
  if (SectionSequenceCollection.size() != expected) {
    ui.Message("Error in csExportSpecs: Invalid Section Count!", Icon::Critical);
    return;
  }

  const bool cells = ctx.sink->HoldsCells();
  if (cells) {
    const std::string* names[2] = {&ctx.recipe.Sheet1Name, &ctx.recipe.Sheet2Name};
    for (int sheet = 1; sheet <= 2; ++sheet) {
      const std::string_view name = Trim(*names[sheet - 1]);
      if (name.empty()) continue;
      ctx.sink->RenameSheet(sheet, std::string(name) + " (P" + ctx.periodLabel + ")");
    }
    ctx.sink->SetStandardFont("Courier New");
  }

  setWritePointer(ui, 1, 1);
  setWritePointer(ui, 2, 1);
  TablesProcessed = 0;
  Failed = false;
  ctx.run.running = true;

  std::size_t t = 0;
  std::size_t n = 0;
  std::size_t c = 0;
  for (const std::string& kind : SectionSequenceCollection) {
    ui.Status(2, FormatSeconds(TickCount() - ctx.run.jobStartTick));
    if (kind == "Title" && t < Titles.size()) {
      ++t;
      ui.ProcessEvents();
      ctx.statusPrefix = "Writing Title " + ToText(static_cast<long long>(t)) + "  Please wait...";
      ui.Status(1, ctx.statusPrefix);
      if (ctx.observer != nullptr) ctx.observer->SectionStarts(kind, static_cast<int>(t));
      Titles[t - 1].Process(ctx);
    } else if (kind == "Table" && n < Tables.size()) {
      ++n;
      ui.ProcessEvents();
      ctx.statusPrefix = " Exporting Table " + ToText(static_cast<long long>(n)) + ":";
      ui.Status(1, ctx.statusPrefix);
      if (ctx.observer != nullptr) ctx.observer->SectionStarts(kind, static_cast<int>(n));
      Tables[n - 1].Process(ctx);
      ++TablesProcessed;
    } else if (kind == "Consolidate" && c < Consolidates.size()) {
      ++c;
      if (ctx.observer != nullptr) ctx.observer->SectionStarts(kind, static_cast<int>(c));
      // A CSV file holds table rows only: there are no cells to read back and add up, so a
      // consolidation contributes nothing to it.
      if (cells) Consolidates[c - 1].Process(ctx);
    } else {
      ui.Message("invalid section type in clsExportSpecs.Process!", Icon::Critical);
      break;
    }
    if (Failed) break;
  }
  ctx.run.running = false;
}

std::string clsExportSpecs::PropertyPrintCons() const {
  std::string out;
  for (const clsCon& con : Consolidates) out += con.PropertyPrint();
  return out;
}

std::string clsExportSpecs::PropertyPrintTables() const {
  std::string out;
  for (const clsTable& table : Tables) out += table.PropertyPrint();
  return out;
}

}  // namespace kroveld

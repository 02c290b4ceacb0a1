#include "engine/export_specs.h"

#include <cstdint>
#include <functional>
#include <iterator>

#include "engine/context.h"
#include "engine/section_keys.h"
#include "engine/section_map.h"
#include "util/private_profile.h"
#include "util/profile.h"
#include "util/strings.h"
#include "util/text_file.h"
#include "util/timing.h"

namespace kroveld {

namespace {

// What the export definition does with one kind of section. The sections of every kind are read,
// written and run through this table, in the order of the file's section sequence; a new kind of
// section is one more entry (and its own class).
struct SectionKind {
  std::string_view word;      // the entry of the section sequence: "Title"
  std::string_view heading;   // what a heading line of the kind holds: "[Title "
  std::string_view numbered;  // what stands before the section number in a heading: "Title "
  bool columnsCount;          // a heading that holds "Col" counts as a section of the kind too
  int clsExportSpecs::*count;
  std::size_t (*size)(const clsExportSpecs& specs);
  // Reads sections 1..count; `sectionFile(n)` gives the file to read section n from.
  // `keys` holds every key of the file by section.
  void (*read)(clsExportSpecs& specs, UiPort& ui, int count,
               const std::function<TextFile&(int)>& sectionFile, const SectionMap& keys);
  void (*write)(const clsExportSpecs& specs, PrivateProfile& file, std::size_t at);
  // Runs section at (0-based) of a pass into ctx.sink.
  void (*process)(clsExportSpecs& specs, Context& ctx, std::size_t at);
};

template <typename Section, typename Read>
void ReadNumbered(std::vector<Section>& into, int count,
                  const std::function<TextFile&(int)>& sectionFile, Read read) {
  into.reserve(static_cast<std::size_t>(count));
  for (int n = 1; n <= count; ++n) {
    Section section;
    read(section, sectionFile(n), n);
    into.push_back(std::move(section));
  }
}

// The order of the entries decides which kind a heading that names two of them belongs to.
const SectionKind kSectionKinds[] = {
    {"Title", "[Title ", "Title ", true, &clsExportSpecs::TitleCount,
     [](const clsExportSpecs& specs) { return specs.Titles.size(); },
     [](clsExportSpecs& specs, UiPort& ui, int count, const std::function<TextFile&(int)>& at,
        const SectionMap&) {
       ReadNumbered(specs.Titles, count, at, [&ui](clsTitle& title, TextFile& file, int n) {
         title.ReadFromFileSequentially(ui, file, n);
       });
     },
     [](const clsExportSpecs& specs, PrivateProfile& file, std::size_t at) {
       specs.Titles[at].WriteToFile(file, static_cast<int>(at + 1));
     },
     [](clsExportSpecs& specs, Context& ctx, std::size_t at) {
       ctx.ui.ProcessEvents();
       ctx.statusPrefix =
           "Writing Title " + ToText(static_cast<long long>(at + 1)) + "  Please wait...";
       ctx.ui.Status(1, ctx.statusPrefix);
       specs.Titles[at].Process(ctx);
     }},
    {"Table", "[Table ", "Table ", false, &clsExportSpecs::TableCount,
     [](const clsExportSpecs& specs) { return specs.Tables.size(); },
     [](clsExportSpecs& specs, UiPort& ui, int count, const std::function<TextFile&(int)>& at,
        const SectionMap& keys) {
       ReadNumbered(specs.Tables, count, at, [&ui, &keys](clsTable& table, TextFile& file, int n) {
         table.ReadFromFileSequentially(ui, file, n, &keys);
       });
     },
     [](const clsExportSpecs& specs, PrivateProfile& file, std::size_t at) {
       specs.Tables[at].WriteToFile(file, static_cast<int>(at + 1));
     },
     [](clsExportSpecs& specs, Context& ctx, std::size_t at) {
       ctx.ui.ProcessEvents();
       ctx.statusPrefix = " Exporting Table " + ToText(static_cast<long long>(at + 1)) + ":";
       ctx.ui.Status(1, ctx.statusPrefix);
       specs.Tables[at].Process(ctx);
       ++specs.TablesProcessed;
     }},
    {"Consolidate", "[Consolidate ", "Consolidate ", true, &clsExportSpecs::ConsolidateCount,
     [](const clsExportSpecs& specs) { return specs.Consolidates.size(); },
     [](clsExportSpecs& specs, UiPort& ui, int count, const std::function<TextFile&(int)>& at,
        const SectionMap& keys) {
       // Read after the tables are counted: a consolidation names the table it adds up.
       const int tables = specs.TableCount;
       ReadNumbered(specs.Consolidates, count, at,
                    [&ui, tables, &keys](clsCon& con, TextFile& file, int n) {
                      con.ReadFromFileSequentially(ui, file, n, tables, &keys);
                    });
     },
     [](const clsExportSpecs& specs, PrivateProfile& file, std::size_t at) {
       specs.Consolidates[at].WriteToFile(file, static_cast<int>(at + 1));
     },
     [](clsExportSpecs& specs, Context& ctx, std::size_t at) {
       // A CSV file holds table rows only: there are no cells to read back and add up, so a
       // consolidation contributes nothing to it.
       if (ctx.sink->HoldsCells()) specs.Consolidates[at].Process(ctx);
     }},
};
constexpr std::size_t kKinds = std::size(kSectionKinds);

// The entry of a section-sequence word; null for a word no kind has.
const SectionKind* KindNamed(std::string_view word) {
  for (const SectionKind& kind : kSectionKinds) {
    if (kind.word == word) return &kind;
  }
  return nullptr;
}

// For each section number 1..count of every kind, the first line that could hold its heading: a
// line with "[" that contains the kind word, a blank and the number. A section whose heading
// cannot be in the file reads with every key missing without scanning the file; a section whose
// first possible heading lies after the lines already read continues on the open file (which finds
// the same heading as reopening it would), so a file in order is read in one pass.
struct HeadingIndex {
  std::vector<std::int64_t> first[kKinds];

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
    for (std::size_t k = 0; k < kKinds; ++k)
      Note(line, kSectionKinds[k].numbered, lineNumber, first[k]);
  }
};

// The kind a line adds to the section sequence, or none: the first kind whose heading it
// contains, unless it is a column heading (holds "Col").
const SectionKind* SequenceKind(std::string_view line) {
  if (line.find("Col") != std::string_view::npos) return nullptr;
  for (const SectionKind& kind : kSectionKinds) {
    if (line.find(kind.heading) != std::string_view::npos) return &kind;
  }
  return nullptr;
}

// What one pass over a file gives: the heading counts of every kind (as CountSectionHeadings
// counts them), the section sequence, the heading index and every key by section.
struct SectionScan {
  std::int64_t counts[kKinds] = {};
  std::vector<std::string> sequence;
  HeadingIndex index;
  SectionMap keys;

  explicit SectionScan(const std::string& path) {
    // The sequence never has more entries than the counts together, so once it is longer than
    // every kind full the file is refused anyway and further entries are not kept.
    constexpr std::size_t kSequenceLimit =
        kKinds * static_cast<std::size_t>(kMaxSectionsPerKind) + 1;
    TextFile file;
    if (!file.Open(path)) return;
    std::string_view line;
    std::int64_t number = 0;
    while (file.ReadLine(line)) {
      ++number;
      keys.Note(line);
      if (line.find('[') == std::string_view::npos) continue;  // every heading holds one
      const bool column = line.find("Col") != std::string_view::npos;
      for (std::size_t k = 0; k < kKinds; ++k) {
        const SectionKind& kind = kSectionKinds[k];
        if ((kind.columnsCount || !column) && line.find(kind.heading) != std::string_view::npos) {
          ++counts[k];
        }
      }
      if (const SectionKind* kind = SequenceKind(line); kind && sequence.size() < kSequenceLimit) {
        sequence.emplace_back(kind->word);
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

std::string TooManySections(const std::string& path, std::string_view kind) {
  return "Error in export specification " + path + " : more than " + ToText(kMaxSectionsPerKind) +
         " " + std::string(kind) + " sections!";
}

}  // namespace

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
  for (std::size_t k = 0; k < kKinds; ++k) {
    if (scan.counts[k] > kMaxSectionsPerKind) {
      ui.Message(TooManySections(path, kSectionKinds[k].word), Icon::Critical);
      Clear();
      return;
    }
  }
  for (std::size_t k = 0; k < kKinds; ++k)
    this->*kSectionKinds[k].count = static_cast<int>(scan.counts[k]);
  SectionSequenceCollection = std::move(scan.sequence);

  for (std::size_t k = 0; k < kKinds; ++k) {
    const std::vector<std::int64_t>& firstLines = scan.index.first[k];
    SectionReader reader(path);
    kSectionKinds[k].read(
        *this, ui, this->*kSectionKinds[k].count,
        [&](int n) -> TextFile& {
          const auto at = static_cast<std::size_t>(n);
          return reader.For(at < firstLines.size() ? firstLines[at] : 0);
        },
        scan.keys);
  }
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

  std::size_t written[kKinds] = {};
  for (const std::string& word : SectionSequenceCollection) {
    const SectionKind* kind = KindNamed(word);
    const std::size_t k = kind == nullptr ? 0 : static_cast<std::size_t>(kind - kSectionKinds);
    if (kind != nullptr && written[k] < kind->size(*this)) {
      kind->write(*this, file, written[k]++);
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
  std::size_t expected = 0;
  for (const SectionKind& kind : kSectionKinds)
    expected += static_cast<std::size_t>(this->*kind.count);
  if (SectionSequenceCollection.size() != expected) {
    ui.Message("Error in csExportSpecs: Invalid Section Count!", Icon::Critical);
    return;
  }

  if (ctx.sink->HoldsCells()) {
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

  std::size_t run[kKinds] = {};
  for (const std::string& word : SectionSequenceCollection) {
    ui.Status(2, FormatSeconds(TickCount() - ctx.run.jobStartTick));
    const SectionKind* kind = KindNamed(word);
    const std::size_t k = kind == nullptr ? 0 : static_cast<std::size_t>(kind - kSectionKinds);
    if (kind == nullptr || run[k] >= kind->size(*this)) {
      ui.Message("invalid section type in clsExportSpecs.Process!", Icon::Critical);
      break;
    }
    if (ctx.observer != nullptr) {
      ctx.observer->SectionStarts(kind->word, static_cast<int>(run[k]) + 1);
    }
    kind->process(*this, ctx, run[k]++);
    if (Failed) break;
  }
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

// The recipe lint: the loaders' key lookups replayed over the lines of a file, remembering which
// line each lookup read, where it stopped and which lines it passed over; then a note for every
// line that was not read as its writer meant it to be, and for the values the loaders ignore.
#include "jobs/recipe_lint.h"

#include "jobs/recipe_layout.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <unordered_map>

#include "engine/pattern.h"
#include "engine/section_keys.h"
#include "util/profile.h"
#include "util/strings.h"
#include "util/text_file.h"

namespace kroveld {

namespace {

constexpr int kInputSlots = 12;

struct Line {
  std::string_view text;
  bool bracket = false;       // holds "[": ends a section for the key lookup
  bool headingForm = false;   // the lookup takes it for a heading ("[" ... "]")
  bool heading = false;       // ... and it is meant as one (no "=" before the "[")
  std::string_view name;      // the heading's name
  bool valueBracket = false;  // a "Key=Value" line whose value holds "["
  int owner = -1;             // the heading line it stands under; -1 above the first heading
  bool headingRead = false;   // a section lookup stopped on this heading
  int readBy = -1;            // the scan that took its value
  int passedBy = -1;          // the first scan that examined it without taking its value
  int decided = -1;           // the scan it stopped with another key left of its "="
  int consumedBy = -1;        // the scan whose key search ended on it ("[") without a match
  int failedSearch = -1;      // the last failed column or department search that ran past it
};

// One key lookup: the lines it examined [from, to), and what it met.
struct Scan {
  std::string key;
  std::string sectionName;               // the section looked up by name, when the lookup named one
  int section = -1;                      // heading line of the section the key belongs to
  std::size_t headFrom = 0, headTo = 0;  // lines passed looking for the section's heading
  std::size_t from = 0, to = 0;
  int found = -1;    // the line read (its value may be blank)
  int decider = -1;  // the line that mentioned the key with another key left of "="
  std::string value;
  bool optional = false;  // a key whose absence is normal: never listed as read as missing
};

// Why the reading of a section ended early (a failed check), if it did.
struct SectionState {
  std::string kind;               // "Title", "Table", "Col", "Consolidate", "Dept", or a fixed name
  std::string stoppedAt;          // the key whose check failed
  int count = -1;                 // TotalLines / TotalColumns / TotalDepartments as read
  std::vector<std::string> keys;  // the keys in the order they are read
};

class Linter {
 public:
  Linter(std::vector<std::string> lines, std::string file, RecipeFileKind kind)
      : storage_(std::move(lines)), file_(std::move(file)), kind_(kind) {
    lines_.resize(storage_.size());
    int owner = -1;
    for (std::size_t i = 0; i < storage_.size(); ++i) {
      Line& l = lines_[i];
      l.text = storage_[i];
      l.bracket = l.text.find('[') != std::string_view::npos;
      const std::size_t eq = l.text.find('=');
      l.valueBracket = l.bracket && eq != std::string_view::npos && eq < l.text.find('[');
      l.headingForm = HeadingName(l.text, l.name);
      l.heading = l.headingForm && !l.valueBracket;
      if (l.headingForm) first_heading_.try_emplace(l.name, i);
      if (l.heading) owner = static_cast<int>(i);
      l.owner = l.heading ? -1 : owner;
    }
  }

  std::vector<RecipeNote> Run() {
    switch (kind_) {
      case RecipeFileKind::Recipe:
        ReadRecipe();
        break;
      case RecipeFileKind::ExportSpec:
        ReadExportSpec();
        break;
      case RecipeFileKind::ShortRecipe:
        ReadShortRecipe();
        break;
    }
    NoteHeadings();
    NoteLines();
    std::stable_sort(notes_.begin(), notes_.end(),
                     [](const RecipeNote& a, const RecipeNote& b) { return a.line < b.line; });
    return std::move(notes_);
  }

 private:
  // ---- replaying the loaders -------------------------------------------------------------

  // The key lookup from `cursor`, as GetProfileValue does it; records what it met.
  const Scan& Lookup(std::size_t& cursor, std::string_view section, std::string_view key,
                     std::string_view def, int& currentSection, int trim = kTrimBoth) {
    const int index = static_cast<int>(scans_.size());
    Scan scan;
    scan.key = std::string(key);
    scan.sectionName = std::string(section);
    scan.value = std::string(def);
    const std::size_t n = lines_.size();
    if (!section.empty()) {
      currentSection = -1;
      scan.headFrom = cursor;
      while (cursor < n) {
        Line& l = lines_[cursor++];
        if (l.headingForm && l.name == section) {
          l.headingRead = true;
          currentSection = static_cast<int>(cursor - 1);
          break;
        }
      }
      scan.headTo = cursor;
      std::size_t& below = looked_up_from_[scan.sectionName];
      below = std::max(below, scan.headFrom + 1);
      // A column or department not found: the headings its search ran past are explained by
      // the note on the section that was not found (the last such search is the nearest).
      const std::string kind = ParseName(section).kind;
      if (currentSection < 0 && (kind == "Col" || kind == "Dept")) {
        for (std::size_t i = scan.headFrom; i < scan.headTo; ++i) {
          if (lines_[i].heading) lines_[i].failedSearch = index;
        }
      }
    }
    scan.section = currentSection;
    scan.from = cursor;
    while (cursor < n) {
      Line& l = lines_[cursor++];
      if (l.bracket) {
        if (l.consumedBy < 0) l.consumedBy = index;
        break;
      }
      if (l.text.find(key) == std::string_view::npos ||
          l.text.find('=') == std::string_view::npos) {
        if (l.passedBy < 0) l.passedBy = index;
        continue;
      }
      const std::size_t eq = l.text.find('=');
      if (Trim(l.text.substr(0, eq)) != key) {
        scan.decider = static_cast<int>(cursor - 1);
        if (l.passedBy < 0) l.passedBy = index;
        if (l.decided < 0) l.decided = index;
        break;
      }
      scan.found = static_cast<int>(cursor - 1);
      l.readBy = index;
      std::string_view value = l.text.substr(eq + 1);
      value = value.substr(0, value.find(';'));
      if (!Trim(value).empty()) {
        value = trim == kTrimTrailing ? TrimRight(value) : Trim(value);
        scan.value = std::string(value);
      }
      break;
    }
    scan.to = cursor;
    if (scan.section >= 0) {
      const auto at = std::make_pair(scan.section, scan.key);
      if (scan.found >= 0) found_.try_emplace(at, index);
      if (scan.decider >= 0) decided_.try_emplace(at, index);
    }
    scans_.push_back(std::move(scan));
    return scans_.back();
  }

  // Where a lookup of a section that starts from the top of the file finds its heading: the
  // first line that names it (the rest of the file when none does).
  std::size_t StartOf(const std::string& section) const {
    const auto at = first_heading_.find(section);
    return at == first_heading_.end() ? lines_.size() : at->second;
  }

  // A lookup of its own, from the top of the file (the loaders that open the file per key).
  const Scan& Fresh(std::string_view section, std::string_view key, std::string_view def,
                    int trim = kTrimBoth) {
    std::size_t cursor = 0;
    int current = -1;
    return Lookup(cursor, section, key, def, current, trim);
  }

  // Whether the section under heading line `heading` has a line for `key`.
  bool SectionHasKey(int heading, std::string_view key) const {
    for (std::size_t i = static_cast<std::size_t>(heading) + 1; i < lines_.size(); ++i) {
      const Line& l = lines_[i];
      if (l.heading) break;
      const std::size_t eq = l.text.find('=');
      if (eq != std::string_view::npos && Trim(l.text.substr(0, eq)) == key) return true;
    }
    return false;
  }

  // Whether a table or department finds a key line by pattern: its fixed keys are then looked
  // up by name, each from the top of the section.
  bool UsesPatternKeys(int heading) const {
    return SectionHasKey(heading, "ReadStartPattern") || SectionHasKey(heading, "ReadEndPattern");
  }

  SectionState& State(int heading, std::string kind, const std::vector<std::string>& keys) {
    SectionState& s = states_[heading];
    s.kind = std::move(kind);
    s.keys = keys;
    return s;
  }

  // A section looked up whose heading is nowhere in the file. (One that is there but was not
  // found gets a note on its heading line.)
  // `searched` names who searches a report for the missing top key text (tables and
  // departments), so that the message the search gives is said too.
  void NoteMissingHeading(const std::string& section, const std::string& why,
                          std::string_view searched = {}) {
    if (first_heading_.count(section) != 0) return;
    std::string text = "no heading [" + section + "] is found " + why + ", so every key of " +
                       section + " reads as missing";
    if (!searched.empty()) text += "; a conversion says " + CanNotFind(searched, "ReadStartLine");
    Add(0, section, std::move(text));
  }

  // The message of a report searched for the missing-key placeholder.
  static std::string CanNotFind(std::string_view who, std::string_view key) {
    return "\"Error in " + std::string(who) + " specs: Can not find " + std::string(key) + ": " +
           std::string(kMissing) + "\"";
  }

  static std::string Headings(int n, const char* what) {
    return ToText(n) + " " + what + (n == 1 ? " heading" : " headings");
  }

  // The placeholder a missing key text is searched for, and the message that search gives.
  void NotePlaceholder(int heading, const std::string& section, std::string_view key,
                       std::string_view who) {
    Add(heading + 1, section,
        std::string(key) +
            " is missing from this section as it is read, so a conversion looks for the "
            "placeholder text \"" +
            std::string(kMissing) + "\" in the report and says " + CanNotFind(who, key));
  }

  void ReadHeader() {
    for (const std::string& key : kHeaderKeys) Fresh("Header", key, kMissing);
  }

  void ReadRecipe() {
    ReadHeader();
    for (const std::string& key : kOutputKeys) {
      if (key.starts_with("Sheet")) continue;
      const Scan& s = Fresh("Output File", key, "");
      if (s.found < 0) continue;
      const std::string value(Trim(s.value));
      if (key == "WriteDataFormat" && !value.empty() && value != "NearestCent" &&
          value != "NearestDollar") {
        std::string text = "WriteDataFormat \"" + value +
                           "\" means no rounding: only NearestCent and NearestDollar (in exactly "
                           "that case) round the numbers written";
        const std::string nearest = Nearest(value, {"NearestCent", "NearestDollar"});
        if (!nearest.empty()) text += "; did you mean '" + nearest + "'?";
        Add(s.found + 1, "Output File", text);
      }
      int number = 0;
      if ((key == "InputFileFirst" || key == "InputFileLast") && !value.empty()) {
        if (!ParseLong(value, number)) {
          Add(s.found + 1, "Output File",
              key + " \"" + value + "\" is not a whole number and is ignored: 1 is used");
        } else if (number < 1 || number > kInputSlots) {
          Add(s.found + 1, "Output File",
              key + "=" + value + " names no input file: they are numbered 1 to 12");
        }
      }
    }
    // An optional key after them: its absence is no note.
    Fresh("Output File", "InputEncoding", "");
    scans_.back().optional = true;
    // The sheet names are looked up from the top of the file, above the first heading.
    Fresh("", "Sheet1Name", "");
    Fresh("", "Sheet2Name", "");
    for (int n = 1; n <= kInputSlots; ++n) {
      Fresh("Input Files", ToText(n) + "Title", "");
      Fresh("Input Files", ToText(n) + "FileName", "");
    }
    for (const char* name : {"Header", "Output File", "Input Files"}) {
      for (std::size_t i = 0; i < lines_.size(); ++i) {
        if (lines_[i].headingRead && lines_[i].name == name) {
          std::vector<std::string> keys = name == std::string("Header")        ? kHeaderKeys
                                          : name == std::string("Output File") ? kOutputKeys
                                                                               : InputKeys();
          State(static_cast<int>(i), name, keys);
        }
      }
    }
  }

  static std::vector<std::string> InputKeys() {
    std::vector<std::string> keys;
    for (int n = 1; n <= kInputSlots; ++n) {
      keys.push_back(ToText(n) + "Title");
      keys.push_back(ToText(n) + "FileName");
    }
    return keys;
  }

  int CountLines(std::string_view heading, std::string_view exclusion) const {
    int count = 0;
    for (const Line& l : lines_) {
      if (l.text.find(heading) == std::string_view::npos) continue;
      if (!exclusion.empty() && l.text.find(exclusion) != std::string_view::npos) continue;
      ++count;
    }
    return count;
  }

  void ReadExportSpec() {
    ReadHeader();
    Fresh("General", "Name", "");
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      if (lines_[i].headingRead)
        State(static_cast<int>(i), lines_[i].name == "General" ? "General" : "Header",
              lines_[i].name == "General" ? std::vector<std::string>{"Name"} : kHeaderKeys);
    }
    titles_ = std::min(CountLines("[Title ", ""), kMaxSectionsPerKind);
    tables_ = std::min(CountLines("[Table ", "Col"), kMaxSectionsPerKind);
    cons_ = std::min(CountLines("[Consolidate ", ""), kMaxSectionsPerKind);
    tableColumns_.assign(static_cast<std::size_t>(tables_) + 1, -1);
    tableStopped_.assign(static_cast<std::size_t>(tables_) + 1, "");
    conDepts_.assign(static_cast<std::size_t>(cons_) + 1, -1);
    conStopped_.assign(static_cast<std::size_t>(cons_) + 1, "");
    for (int t = 1; t <= titles_; ++t) ReadTitle(t);
    for (int t = 1; t <= tables_; ++t) ReadTable(t);
    for (int c = 1; c <= cons_; ++c) ReadCon(c);
  }

  void ReadTitle(int number) {
    const std::string section = "Title " + ToText(number);
    std::size_t cursor = StartOf(section);
    int h = -1;
    const Scan& first = Lookup(cursor, section, "WriteSheet", kMissing, h);
    if (h < 0) {
      NoteMissingHeading(section, "though the file counts " + Headings(titles_, "title"));
      return;
    }
    SectionState& st = State(h, "Title", kTitleKeys);
    if (ValidatedNumber(first.value) < 1) return void(st.stoppedAt = "WriteSheet");
    if (BadWriteColumn(Lookup(cursor, "", "WriteColumn", kMissing, h).value)) {
      return void(st.stoppedAt = "WriteColumn");
    }
    const int lines = ValidatedNumber(Lookup(cursor, "", "TotalLines", kMissing, h).value);
    if (lines < 1 || lines > kMaxTitleLines) return void(st.stoppedAt = "TotalLines");
    st.count = lines;
    for (int n = 1; n <= lines; ++n) {
      const Scan& s = Lookup(cursor, "", ToText(n) + "Text", "", h);
      if (s.found < 0) continue;
      const std::string_view raw = ValueText(s.found);
      if (!raw.empty() && raw[0] == ' ' && !Trim(raw).empty()) {
        Add(s.found + 1, section, "the leading blanks of " + s.key + " are dropped");
      }
    }
  }

  void ReadTable(int number) {
    const std::string section = "Table " + ToText(number);
    std::size_t cursor = StartOf(section);
    int h = -1;
    const Scan& start = Lookup(cursor, section, "ReadStartLine", kMissing, h);
    if (h < 0) {
      NoteMissingHeading(section, "though the file counts " + Headings(tables_, "table"), "Table");
      // Its columns are then not read either; the note above says why.
      tableStopped_[static_cast<std::size_t>(number)] = "its heading";
      return;
    }
    SectionState& st = State(h, "Table", kTableKeys);
    std::string& stopped = tableStopped_[static_cast<std::size_t>(number)];
    auto stop = [&](const char* key) { st.stoppedAt = stopped = key; };
    const bool byName = UsesPatternKeys(h);
    const std::size_t top = static_cast<std::size_t>(h) + 1;
    auto next = [&]() -> std::size_t& { return byName ? (cursor = top) : cursor; };
    if (start.value == kMissing && !(byName && SectionHasKey(h, "ReadStartPattern"))) {
      NotePlaceholder(h, section, "ReadStartLine", "Table");
      return stop("ReadStartLine");
    }
    int offset = 0;
    if (!ParseLong(Lookup(next(), "", "ReadStartLineOffset", "0", h).value, offset)) {
      return stop("ReadStartLineOffset");
    }
    if (Lookup(next(), "", "ReadEndLine", kMissing, h).value == kMissing &&
        !(byName && SectionHasKey(h, "ReadEndPattern"))) {
      NotePlaceholder(h, section, "ReadEndLine", "Table");
      return stop("ReadEndLine");
    }
    if (!ParseLong(Lookup(next(), "", "ReadEndLineOffset", "0", h).value, offset)) {
      return stop("ReadEndLineOffset");
    }
    const int columns = ValidatedNumber(Lookup(next(), "", "TotalColumns", kMissing, h).value);
    if (columns < 1 || columns > kMaxTableColumns) return stop("TotalColumns");
    st.count = columns;
    tableColumns_[static_cast<std::size_t>(number)] = columns;
    if (byName) cursor = top;
    for (int c = 1; c <= columns; ++c) ReadColumn(cursor, number, c);
  }

  void ReadColumn(std::size_t& cursor, int table, int column) {
    const std::string section = "Table " + ToText(table) + " Col " + ToText(column);
    int h = -1;
    const Scan& start = Lookup(cursor, section, "ReadColumnStart", kMissing, h);
    if (h < 0) {
      NoteMissingHeading(section, "below the keys of [Table " + ToText(table) + "] (TotalColumns=" +
                                      ToText(tableColumns_[static_cast<std::size_t>(table)]) + ")");
      return;
    }
    SectionState& st = State(h, "Col", kColKeys);
    if (ValidatedNumber(start.value) < 1) return void(st.stoppedAt = "ReadColumnStart");
    if (ValidatedNumber(Lookup(cursor, "", "ReadColumnEnd", kMissing, h).value) < 1) {
      return void(st.stoppedAt = "ReadColumnEnd");
    }
    if (BadWriteColumn(Lookup(cursor, "", "WriteColumn", kMissing, h).value)) {
      return void(st.stoppedAt = "WriteColumn");
    }
    const Scan& op = Lookup(cursor, "", "PeriodOperator", "", h);
    if (op.found >= 0 && UpperAscii(op.value) == "DUPLICATE") {
      Add(op.found + 1, section,
          "PeriodOperator DUPLICATE is accepted but combines nothing: the field of the last input "
          "file is written, and every row says \"Unrecognized operator: DUPLICATE in "
          "clsColumn.OperatorCode!\"");
    }
  }

  void ReadCon(int number) {
    const std::string section = "Consolidate " + ToText(number);
    std::size_t cursor = StartOf(section);
    int h = -1;
    const Scan& table = Lookup(cursor, section, "Table", kMissing, h);
    if (h < 0) {
      NoteMissingHeading(section, "though the file counts " + Headings(cons_, "consolidate"));
      conStopped_[static_cast<std::size_t>(number)] = "its heading";
      return;
    }
    SectionState& st = State(h, "Consolidate", kConKeys);
    std::string& stopped = conStopped_[static_cast<std::size_t>(number)];
    auto stop = [&](const char* key) { st.stoppedAt = stopped = key; };
    const int t = ValidatedNumber(table.value);
    if (t < 1 || t > tables_) return stop("Table");
    if (ValidatedNumber(Lookup(cursor, "", "ReadAccountsColumn", kMissing, h).value) < 1) {
      return stop("ReadAccountsColumn");
    }
    const int depts = ValidatedNumber(Lookup(cursor, "", "TotalDepartments", kMissing, h).value);
    if (depts > kMaxDepartments) return stop("TotalDepartments");
    st.count = std::max(depts, 0);
    conDepts_[static_cast<std::size_t>(number)] = st.count;
    for (int d = 1; d <= st.count; ++d) ReadDept(cursor, number, d);
  }

  void ReadDept(std::size_t& cursor, int con, int dept) {
    const std::string section = "Con " + ToText(con) + " Dept " + ToText(dept);
    int h = -1;
    const Scan& start = Lookup(cursor, section, "ReadStartLine", kMissing, h);
    if (h < 0) {
      NoteMissingHeading(section, "below the keys of [Consolidate " + ToText(con) + "]");
      return;
    }
    SectionState& st = State(h, "Dept", kDeptKeys);
    const bool byName = UsesPatternKeys(h);
    const std::size_t top = static_cast<std::size_t>(h) + 1;
    auto next = [&]() -> std::size_t& { return byName ? (cursor = top) : cursor; };
    if (start.value == kMissing && !(byName && SectionHasKey(h, "ReadStartPattern"))) {
      NotePlaceholder(h, section, "ReadStartLine", "Department");
      return void(st.stoppedAt = "ReadStartLine");
    }
    int offset = 0;
    if (!ParseLong(Lookup(next(), "", "ReadStartLineOffset", "0", h).value, offset)) {
      return void(st.stoppedAt = "ReadStartLineOffset");
    }
    if (Lookup(next(), "", "ReadEndLine", kMissing, h).value == kMissing &&
        !(byName && SectionHasKey(h, "ReadEndPattern"))) {
      NotePlaceholder(h, section, "ReadEndLine", "Department");
      return void(st.stoppedAt = "ReadEndLine");
    }
    if (!ParseLong(Lookup(next(), "", "ReadEndLineOffset", "0", h).value, offset)) {
      st.stoppedAt = "ReadEndLineOffset";
    }
    if (byName) cursor = top;
  }

  void ReadShortRecipe() {
    ReadHeader();
    tables_ = std::min(CountLines("[Table ", "Col"), kMaxSectionsPerKind);
    for (int t = 1; t <= tables_; ++t) {
      const std::string section = "Table " + ToText(t);
      for (const std::string& key : kShortTableKeys) {
        const bool offset = key.ends_with("Offset");
        Fresh(section, key,
              offset                                     ? "0"
              : key == "Parsing" || key == "WriteColumn" ? ""
                                                         : kMissing,
              key == "Parsing" ? kTrimTrailing : kTrimBoth);
      }
    }
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      if (!lines_[i].headingRead) continue;
      const bool header = lines_[i].name == "Header";
      State(static_cast<int>(i), header ? "Header" : "Table",
            header ? kHeaderKeys : kShortTableKeys);
    }
  }

  // ---- notes ------------------------------------------------------------------------------

  void Add(int line, std::string section, std::string text) {
    notes_.push_back(RecipeNote{file_, line, std::move(section), std::move(text)});
  }

  // The value part of a line: after the first "=", cut at ";".
  std::string_view ValueText(int line) const {
    std::string_view text = lines_[static_cast<std::size_t>(line)].text;
    text = text.substr(text.find('=') + 1);
    return text.substr(0, text.find(';'));
  }

  static std::string Nearest(std::string_view word, const std::vector<std::string>& candidates) {
    const std::string lower = LowerAscii(word);
    std::string best;
    std::size_t bestDistance = std::string::npos;
    for (const std::string& c : candidates) {
      const std::size_t d = EditDistance(lower, LowerAscii(c));
      if (d < bestDistance) bestDistance = d, best = c;
    }
    const std::size_t limit = std::max<std::size_t>(2, word.size() / 3);
    return bestDistance <= limit ? best : std::string();
  }

  // The keys a section of this state may hold (numbered title lines included).
  std::vector<std::string> KeysOf(const SectionState& st) const {
    std::vector<std::string> keys = st.keys;
    if (st.kind == "Title") {
      for (int n = 1; n <= std::min(std::max(st.count, 1), 200); ++n)
        keys.push_back(ToText(n) + "Text");
    }
    return keys;
  }

  std::string SectionName(int heading) const {
    return heading < 0 ? std::string()
                       : std::string(lines_[static_cast<std::size_t>(heading)].name);
  }

  // The kind of section that reads `key`, for keys put under the wrong heading.
  std::string HomeOf(std::string_view key) const {
    const struct {
      const std::vector<std::string>* keys;
      const char* where;
    } homes[] = {{&kTableKeys, "[Table n]"},      {&kColKeys, "[Table n Col m]"},
                 {&kTitleKeys, "[Title n]"},      {&kConKeys, "[Consolidate n]"},
                 {&kOutputKeys, "[Output File]"}, {&kHeaderKeys, "[Header]"}};
    if (kind_ == RecipeFileKind::Recipe) {
      if (Contains(kOutputKeys, key)) return "[Output File]";
      if (Contains(kHeaderKeys, key)) return "[Header]";
      return "";
    }
    for (const auto& home : homes) {
      if (Contains(*home.keys, key)) return home.where;
    }
    return "";
  }

  void NoteHeadings() {
    std::set<std::string> read;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      const Line& l = lines_[i];
      const int line = static_cast<int>(i) + 1;
      if (l.valueBracket) {
        std::vector<std::string> lost;
        for (const Scan& s : scans_) {
          if (s.found < 0 && !s.optional && s.to == i + 1 && s.from <= i &&
              !Contains(lost, s.key)) {
            lost.push_back(s.key);
          }
        }
        // A pattern such as ^[A-Z] after the fixed keys is looked up by name; the "[" only ends
        // the sequential lookup, which has nothing left to read there.
        const std::size_t eq = l.text.find('=');
        const auto state = states_.find(l.owner);
        // (PeriodOperator read as missing is blank, as when it is left out.)
        std::erase(lost, std::string("PeriodOperator"));
        if (lost.empty() && state != states_.end() &&
            IsOptionalKey(state->second.kind, Trim(l.text.substr(0, eq)))) {
          continue;
        }
        std::string text = "the \"[\" in this value ends the section for the key lookup";
        if (!lost.empty()) {
          text += ", so " + Joined(lost) + (lost.size() == 1 ? " reads" : " read") + " as missing";
        }
        for (const char* h : {"[Title ", "[Table ", "[Consolidate "}) {
          if (l.text.find(h) != std::string_view::npos) {
            text += std::string("; it also counts as a ") + h + "...] heading";
            break;
          }
        }
        Add(line, SectionName(l.owner), text);
        continue;
      }
      if (l.bracket && !l.heading) {
        Add(line, SectionName(l.owner),
            "this line holds \"[\" but is no heading \"[Name]\": it ends the section for the key "
            "lookup, and the keys below it are not read");
        continue;
      }
      if (!l.heading) continue;
      const std::string name(l.name);
      if (l.headingRead) {
        read.insert(name);
        continue;
      }
      std::string text = UnreadHeading(i, name, read.count(name) != 0);
      if (!text.empty()) Add(line, name, std::move(text));
    }
  }

  // The scan whose search for its key ran on to heading line i and so consumed it.
  const Scan* ConsumedBy(std::size_t i) const {
    const int by = lines_[i].consumedBy;
    if (by < 0 || scans_[static_cast<std::size_t>(by)].found >= 0) return nullptr;
    return &scans_[static_cast<std::size_t>(by)];
  }

  // True when section `name` was looked for from below heading line i (which holds that name).
  bool LookedUpBelow(std::size_t i, const std::string& name) const {
    const auto at = looked_up_from_.find(name);
    return at != looked_up_from_.end() && at->second > i + 1;
  }

  // True when the failed search for a sibling section (same kind, same table or consolidation)
  // ran past heading line i: the note on the sibling says why.
  bool PassedBySiblingSearch(std::size_t i, const ParsedName& p) const {
    const int by = lines_[i].failedSearch;
    if (by < 0) return false;
    const ParsedName q = ParseName(scans_[static_cast<std::size_t>(by)].sectionName);
    return q.kind == p.kind && q.a == p.a;
  }

  // The note on heading line i that no lookup found; empty when another note says it already.
  std::string UnreadHeading(std::size_t i, const std::string& name, bool duplicate) const {
    if (duplicate) return "a second [" + name + "]: only the first one is read";
    const ParsedName p = ParseName(name);
    const bool numbered = kind_ == RecipeFileKind::ExportSpec ||
                          (kind_ == RecipeFileKind::ShortRecipe && p.kind == "Table");
    const bool sub = p.kind == "Col" || p.kind == "Dept";
    if (numbered && sub && p.a <= (p.kind == "Col" ? tables_ : cons_)) {
      const std::size_t at = static_cast<std::size_t>(p.a);
      // The messages and the note on the parent say why its reading stopped.
      if (!(p.kind == "Col" ? tableStopped_[at] : conStopped_[at]).empty()) return "";
    }
    if (const Scan* by = LookedUpBelow(i, name) ? ConsumedBy(i) : nullptr) {
      return "not read: the search for " + by->key + " of [" + SectionName(by->section) +
             "], which is not there, ran on to this heading and past it; sections are looked "
             "up forwards only, so this one and the later ones of the same table or "
             "consolidation are not found";
    }
    if (numbered && !p.kind.empty()) {
      auto count = [&](int n, const char* what, const char* word) {
        return name + " is not read: the file has " + Headings(n, what) + ", read as [" + word +
               " 1] to [" + word + " " + ToText(n) + "]; number them from 1 without gaps";
      };
      if (p.kind == "Title" && p.a > titles_) return count(titles_, "title", "Title");
      if (p.kind == "Table" && p.a > tables_) return count(tables_, "table", "Table");
      if (p.kind == "Consolidate" && p.a > cons_) return count(cons_, "consolidate", "Consolidate");
      if (sub) {
        const bool col = p.kind == "Col";
        const int parents = col ? tables_ : cons_;
        const std::string parent = (col ? "Table " : "Consolidate ") + ToText(p.a);
        if (p.a > parents) {
          // When the parent's heading is there, the note on it says why it is not read.
          if (first_heading_.count(parent) != 0) return "";
          for (const auto& [heading, line] : first_heading_) {
            if (SuggestedSectionName(heading, kind_) == parent) return "";
          }
          return "there is no [" + parent + "] (the file has " +
                 Headings(parents, col ? "table" : "consolidate") +
                 "), so this section is not read";
        }
        const int total = (col ? tableColumns_ : conDepts_)[static_cast<std::size_t>(p.a)];
        if (p.b > total) {
          return std::string(col ? "column " : "department ") + ToText(p.b) + " is beyond " +
                 (col ? "TotalColumns=" : "TotalDepartments=") + ToText(total) + " of [" + parent +
                 "]: it is not read";
        }
        if (PassedBySiblingSearch(i, p)) return "";
        return "not read: it stands out of order. The sections of [" + parent +
               "] are read downwards, its own keys first and then " +
               (col ? "Col 1, Col 2, ..." : "Dept 1, Dept 2, ...") +
               ", so a section above one read before it is not found";
      }
    }
    const std::string proper = SuggestedSectionName(name, kind_);
    if (!proper.empty() && proper != name) {
      std::string text = "[" + name +
                         "] is not read: section names are exact (case, blanks and "
                         "numbers count); did you mean [" +
                         proper + "]?";
      if (proper.starts_with("Table ") && proper.find("Col") == std::string::npos &&
          name.find("Table ") == std::string::npos) {
        text += " As written it does not count as a table, so nothing of it is converted";
      }
      return text;
    }
    return "unknown section [" + name + "]: nothing reads it";
  }

  // The scan that passed over line i without reading it, if any.
  const Scan* PassedOverBy(std::size_t i) const {
    const int by = lines_[i].passedBy;
    return by < 0 ? nullptr : &scans_[static_cast<std::size_t>(by)];
  }

  void NoteLines() {
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      const Line& l = lines_[i];
      if (l.heading || l.bracket) {
        if (l.valueBracket) NoteBracketedOptionalKey(i);
        continue;
      }
      const int line = static_cast<int>(i) + 1;
      const std::string_view text = Trim(l.text);
      if (text.empty() || text[0] == ';') continue;
      const std::string section = SectionName(l.owner);
      if (l.readBy >= 0) {
        NoteValue(i, scans_[static_cast<std::size_t>(l.readBy)], section);
        continue;
      }
      if (l.owner >= 0 && !lines_[static_cast<std::size_t>(l.owner)].headingRead) continue;
      const std::size_t eq = l.text.find('=');
      if (eq == std::string_view::npos) {
        Add(line, section, "not a Key=Value line: ignored");
        continue;
      }
      const std::string key(Trim(l.text.substr(0, eq)));
      if (l.owner < 0) {
        NoteAboveFirstSection(line, key);
        continue;
      }
      const auto state = states_.find(l.owner);
      if (state == states_.end()) continue;
      if (IsOptionalKey(state->second.kind, key)) {
        NoteOptionalKey(i, key, section);
        continue;
      }
      std::string note = UnreadKey(i, key, state->second);
      if (!note.empty()) Add(line, section, std::move(note));
    }
  }

  // The keys a section may hold after its fixed ones; they are looked up by name.
  static bool IsOptionalKey(std::string_view kind, std::string_view key) {
    if (kind == "Table") return Contains(kTableOptionalKeys, key);
    if (kind == "Col") return Contains(kColOptionalKeys, key);
    if (kind == "Dept") return Contains(kDeptOptionalKeys, key);
    return false;
  }

  // An optional key is read wherever it stands in its section; only a second one, a blank one
  // and a value the loader refuses are worth a note.
  void NoteOptionalKey(std::size_t i, const std::string& key, const std::string& section) {
    const int line = static_cast<int>(i) + 1;
    const int owner = lines_[i].owner;
    for (std::size_t j = static_cast<std::size_t>(owner) + 1; j < i; ++j) {
      const std::size_t eq = lines_[j].text.find('=');
      if (eq != std::string_view::npos && Trim(lines_[j].text.substr(0, eq)) == key &&
          !Trim(ValueText(static_cast<int>(j))).empty()) {
        Add(line, section,
            "'" + key + "' is given again: only the first one (line " +
                ToText(static_cast<long long>(j) + 1) + ") is read");
        return;
      }
    }
    const std::string value(Trim(ValueText(static_cast<int>(i))));
    if (value.empty()) {
      Add(line, section, "'" + key + "' is blank: it is the same as leaving it out");
    } else if (key == "SkipBlankLines") {
      const std::string upper = UpperAscii(value);
      if (upper != "TRUE" && upper != "FALSE") {
        Add(line, section, "SkipBlankLines must be TRUE or FALSE, not '" + value + "'");
      }
    } else {
      Pattern pattern;
      std::string why;
      if (!pattern.Compile(value, why)) {
        Add(line, section, "the " + key + " pattern does not compile: " + why);
      }
    }
  }

  // A pattern holding "[" is no line for the sequential lookup, but its value is checked.
  void NoteBracketedOptionalKey(std::size_t i) {
    const Line& l = lines_[i];
    const auto state = states_.find(l.owner);
    if (state == states_.end()) return;
    const std::string key(Trim(l.text.substr(0, l.text.find('='))));
    if (IsOptionalKey(state->second.kind, key)) NoteOptionalKey(i, key, SectionName(l.owner));
  }

  void NoteAboveFirstSection(int line, const std::string& key) {
    std::string text = "'" + key + "' stands above the first section, where ";
    if (kind_ == RecipeFileKind::Recipe) {
      text += "only Sheet1Name and Sheet2Name are read";
      const std::string nearest = Nearest(key, {"Sheet1Name", "Sheet2Name"});
      if (!nearest.empty()) text += "; did you mean '" + nearest + "'?";
    } else {
      text += "nothing is read";
    }
    Add(line, "", text);
  }

  std::string UnreadKey(std::size_t i, const std::string& key, const SectionState& st) const {
    // Optional keys after a column's fixed ones: the loader finds them wherever they stand.
    if (st.kind == "Col" && (key == "Type" || key == "DateFormat")) return "";
    std::string text;
    if (lines_[i].decided >= 0) {
      const Scan& s = scans_[static_cast<std::size_t>(lines_[i].decided)];
      {
        text = "'" + key + "' is taken for '" + s.key +
               "': the first line of the section that "
               "mentions " +
               s.key + " decides, so " + s.key + " reads as missing";
        if (Contains(KeysOf(st), key)) return text + "; put " + s.key + " above " + key;
        text += ". ";
      }
    }
    const std::vector<std::string> keys = KeysOf(st);
    int number = 0;
    std::string_view rest;
    if (Contains(keys, key) ||
        (st.kind == "Title" && NumberedKey(key, number, rest) && rest == "Text")) {
      return text + KnownKeyNotRead(i, key, st);
    }
    if (st.kind == "Input Files" && NumberedKey(key, number, rest) &&
        (rest == "Title" || rest == "FileName")) {
      return text + "'" + key + "' is not read: only input files 1 to 12 are";
    }
    std::vector<std::string> candidates = keys;
    for (const auto* optional : {&kTableOptionalKeys, &kColOptionalKeys, &kDeptOptionalKeys}) {
      for (const std::string& k : *optional) {
        if (IsOptionalKey(st.kind, k)) candidates.push_back(k);
      }
    }
    const std::string nearest = Nearest(key, candidates);
    if (!nearest.empty()) {
      return text + "unknown key '" + key + "'; did you mean '" + nearest + "'?";
    }
    const std::string home = HomeOf(key);
    if (!home.empty()) {
      return text + "'" + key + "' is not read here: it is a key of " + home + " sections";
    }
    return text + "unknown key '" + key + "': no section reads it";
  }

  // Where a key stands in its section's reading order (numbered title lines after the rest).
  static std::size_t KeyIndex(const SectionState& st, std::string_view key) {
    const auto at = std::find(st.keys.begin(), st.keys.end(), key);
    return static_cast<std::size_t>(at - st.keys.begin());
  }

  std::string KnownKeyNotRead(std::size_t i, const std::string& key, const SectionState& st) const {
    const auto at = std::make_pair(lines_[i].owner, key);
    if (const auto f = found_.find(at); f != found_.end()) {
      return "'" + key + "' is given again: only the first one (line " +
             ToText(scans_[static_cast<std::size_t>(f->second)].found + 1) + ") is read";
    }
    if (key == "Sheet1Name" || key == "Sheet2Name") {
      // An empty name is what the program writes there itself; nothing is lost.
      if (Trim(ValueText(static_cast<int>(i))).empty()) return "";
      return key + " under [" +
             std::string(lines_[static_cast<std::size_t>(lines_[i].owner)].name) +
             "] is ignored: the sheet names are read only above the first section heading; "
             "move it to the top of the file, before [Header]";
    }
    int number = 0;
    std::string_view rest;
    if (st.kind == "Title" && st.count > 0 && NumberedKey(key, number, rest) && number > st.count) {
      return key + " is beyond TotalLines=" + ToText(st.count) + ": it is not read";
    }
    if (const auto d = decided_.find(at); d != decided_.end()) {
      return "'" + key + "' is not read: line " +
             ToText(scans_[static_cast<std::size_t>(d->second)].decider + 1) +
             " mentions it first and decides its lookup";
    }
    const std::string order =
        "the keys of [" + st.kind +
        (st.kind == "Title" || st.kind == "Table" || st.kind == "Consolidate" ? " n" : "") +
        "] are read in the order " + Joined(st.keys) +
        (st.kind == "Title" ? ", 1Text, 2Text, ..." : "");
    if (!st.stoppedAt.empty() && KeyIndex(st, key) > KeyIndex(st, st.stoppedAt)) return "";
    if (const Scan* by = PassedOverBy(i)) {
      if (by->found < 0 && by->decider < 0) {
        return "'" + key + "' is not read: " + by->key +
               ", looked for before it, is not in the section, and its search ran on past this "
               "line to the end of the section (keys are read forwards only), so " +
               key + " reads as missing";
      }
      const int at = by->found >= 0 ? by->found : by->decider;
      return "'" + key + "' stands above " + by->key + " (line " + ToText(at + 1) +
             "), which is read before it; " + order + ", so " + key + " reads as missing";
    }
    // No lookup came this far: a "[" above it ended them all.
    for (std::size_t above = i; above-- > 0 && lines_[above].owner == lines_[i].owner;) {
      if (lines_[above].valueBracket && lines_[above].consumedBy >= 0) {
        return "'" + key + "' is not read: the \"[\" on line " +
               ToText(static_cast<long long>(above) + 1) +
               " ends the section for the key lookup above it";
      }
    }
    // Keys after the one whose check failed are fine as they stand: the reading stopped first.
    if (!st.stoppedAt.empty()) return "";
    return "'" + key + "' is out of order and reads as missing: " + order;
  }

  void NoteValue(std::size_t i, const Scan& s, const std::string& section) {
    const int line = static_cast<int>(i) + 1;
    const std::string_view whole = lines_[i].text.substr(lines_[i].text.find('=') + 1);
    const std::size_t semi = whole.find(';');
    int number = 0;
    std::string_view rest;
    const bool textKey = Contains(kTextKeys, s.key) ||
                         (NumberedKey(s.key, number, rest) && (rest == "Text" || rest == "Title"));
    if (semi != std::string_view::npos && textKey && !Trim(whole.substr(semi + 1)).empty()) {
      Add(line, section,
          "the \";\" starts a comment: " + s.key + " is read as \"" +
              std::string(Trim(whole.substr(0, semi))) + "\"");
    }
  }

  std::vector<std::string> storage_;
  std::vector<Line> lines_;
  std::string file_;
  RecipeFileKind kind_;
  std::vector<Scan> scans_;
  std::unordered_map<std::string_view, std::size_t> first_heading_;  // name -> first line
  std::map<std::string, std::size_t> looked_up_from_;   // section -> 1 + last start of a search
  std::map<std::pair<int, std::string>, int> found_;    // (section line, key) -> scan that read it
  std::map<std::pair<int, std::string>, int> decided_;  // (section line, key) -> scan stopped early
  std::map<int, SectionState> states_;
  std::vector<RecipeNote> notes_;
  int titles_ = 0, tables_ = 0, cons_ = 0;
  std::vector<int> tableColumns_, conDepts_;
  std::vector<std::string> tableStopped_, conStopped_;
};

std::vector<std::string> SplitLines(std::string_view text) {
  std::vector<std::string> lines;
  std::size_t at = 0;
  while (at < text.size()) {
    std::size_t end = text.find_first_of("\r\n", at);
    if (end == std::string_view::npos) {
      lines.emplace_back(text.substr(at));
      break;
    }
    lines.emplace_back(text.substr(at, end - at));
    at = end + (text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n' ? 2 : 1);
  }
  return lines;
}

}  // namespace

std::vector<RecipeNote> LintRecipeText(std::string_view text, const std::string& file,
                                       RecipeFileKind kind) {
  return Linter(SplitLines(text), file, kind).Run();
}

std::vector<RecipeNote> LintRecipeFile(const std::string& path, RecipeFileKind kind) {
  TextFile in;
  if (!in.Open(path)) return {};
  std::vector<std::string> lines;
  std::string line;
  while (in.ReadLine(line)) lines.push_back(line);
  return Linter(std::move(lines), path, kind).Run();
}

}  // namespace kroveld

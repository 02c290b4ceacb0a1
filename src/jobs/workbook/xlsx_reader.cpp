// .xlsx input: libzip opens the package, pugixml reads the parts. Works with what spreadsheet
// programs and libraries write: shared or inline strings, rich-text runs, absolute or relative
// part names, optional cell references, namespace prefixes on element names.
#include "jobs/workbook/xlsx_reader.h"

#include <zip.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <pugixml.hpp>
#include <unordered_map>
#include <vector>

#include "jobs/workbook/column_widths.h"
#include "jobs/workbook/text_encoding.h"
#include "util/files.h"

namespace kroveld {
namespace {

struct ZipCloser {
  void operator()(zip_t* z) const { zip_discard(z); }
};
using ZipPtr = std::unique_ptr<zip_t, ZipCloser>;

// A part larger than this is not one a workbook this program reads back can hold: the package
// counts as unreadable.
constexpr zip_uint64_t kMaxEntryBytes = zip_uint64_t{1} << 30;

// Reads a part. The buffer grows with the bytes that really arrive, not with the size the zip
// directory claims, so a small file that claims a huge part costs nothing.
bool ReadEntry(zip_t* zip, const std::string& name, std::string& out) {
  zip_stat_t st;
  zip_stat_init(&st);
  if (zip_stat(zip, name.c_str(), 0, &st) != 0 || !(st.valid & ZIP_STAT_SIZE)) return false;
  if (st.size > kMaxEntryBytes) return false;
  zip_file_t* f = zip_fopen(zip, name.c_str(), 0);
  if (!f) return false;
  out.clear();
  char chunk[1 << 16];
  bool ok = true;
  for (;;) {
    const zip_int64_t got = zip_fread(f, chunk, sizeof chunk);
    if (got < 0 || out.size() + static_cast<zip_uint64_t>(got) > st.size) ok = false;
    if (got <= 0 || !ok) break;
    out.append(chunk, static_cast<std::size_t>(got));
  }
  zip_fclose(f);
  return ok && out.size() == st.size;
}

std::string_view LocalName(const char* name) {
  const char* colon = std::strrchr(name, ':');
  return colon ? std::string_view(colon + 1) : std::string_view(name);
}

bool Is(const pugi::xml_node& node, std::string_view local) {
  return node.type() == pugi::node_element && LocalName(node.name()) == local;
}

pugi::xml_node Child(const pugi::xml_node& node, std::string_view local) {
  for (pugi::xml_node c : node.children()) {
    if (Is(c, local)) return c;
  }
  return {};
}

// The r:id attribute, whatever prefix the relationships namespace has.
std::string_view RelationshipId(const pugi::xml_node& node) {
  for (pugi::xml_attribute a : node.attributes()) {
    const std::string_view n = a.name();
    if (n.size() > 3 && n.substr(n.size() - 3) == ":id") return a.value();
  }
  return {};
}

bool Parse(pugi::xml_document& doc, std::string& data) {
  return doc.load_buffer_inplace(data.data(), data.size(),
                                 pugi::parse_default | pugi::parse_ws_pcdata_single)
             .status == pugi::status_ok;
}

// "_x000D_" style escapes of characters XML cannot carry; "_x005F_" protects a literal "_x".
void AppendDecoded(std::string_view text, std::string& out) {
  auto hex = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '_' && i + 6 < text.size() && text[i + 1] == 'x' && text[i + 6] == '_') {
      int cp = 0;
      bool ok = true;
      for (int k = 2; k < 6; ++k) {
        const int h = hex(text[i + k]);
        ok = ok && h >= 0;
        cp = cp * 16 + (h < 0 ? 0 : h);
      }
      if (ok) {
        AppendCodePoint(static_cast<std::uint32_t>(cp), out);
        i += 6;
        continue;
      }
    }
    out += text[i];
  }
}

// Text of a string item: a <t>, or the <t> of every rich-text run <r> (phonetic runs skipped).
std::string ItemText(const pugi::xml_node& item) {
  std::string out;
  for (pugi::xml_node c : item.children()) {
    if (Is(c, "t")) {
      AppendDecoded(c.text().get(), out);
    } else if (Is(c, "r")) {
      AppendDecoded(Child(c, "t").text().get(), out);
    }
  }
  return out;
}

// Folder part of a part name ("xl/workbook.xml" -> "xl/").
std::string PartFolder(const std::string& part) {
  const std::size_t slash = part.rfind('/');
  return slash == std::string::npos ? std::string() : part.substr(0, slash + 1);
}

std::string ResolveTarget(const std::string& folder, std::string_view target) {
  if (!target.empty() && target.front() == '/') return std::string(target.substr(1));
  std::string base = folder;
  while (target.substr(0, 3) == "../") {
    target.remove_prefix(3);
    if (!base.empty()) base.pop_back();
    base = PartFolder(base);
  }
  return base + std::string(target);
}

struct Relationship {
  std::string type;
  std::string target;
};

// Relationships of `part` ("" for the package itself), by id, with targets resolved to part names.
std::unordered_map<std::string, Relationship> ReadRelationships(zip_t* zip,
                                                                const std::string& part) {
  std::unordered_map<std::string, Relationship> rels;
  const std::string folder = PartFolder(part);
  const std::string rels_part = folder + "_rels/" + part.substr(folder.size()) + ".rels";
  std::string data;
  pugi::xml_document doc;
  if (!ReadEntry(zip, rels_part, data) || !Parse(doc, data)) return rels;
  for (pugi::xml_node r : doc.document_element().children()) {
    if (!Is(r, "Relationship")) continue;
    if (std::string_view(r.attribute("TargetMode").value()) == "External") continue;
    rels[r.attribute("Id").value()] = {r.attribute("Type").value(),
                                       ResolveTarget(folder, r.attribute("Target").value())};
  }
  return rels;
}

bool EndsWith(std::string_view s, std::string_view tail) {
  return s.size() >= tail.size() && s.substr(s.size() - tail.size()) == tail;
}

// Column and row of a reference such as "AB12"; false when it is not one.
bool ParseReference(std::string_view ref, int& row, int& column) {
  std::size_t i = 0;
  long long col = 0;
  while (i < ref.size() && ref[i] >= 'A' && ref[i] <= 'Z' && col <= kMaxSheetColumns) {
    col = col * 26 + (ref[i] - 'A' + 1);
    ++i;
  }
  long long r = 0;
  const std::size_t digits = i;
  while (i < ref.size() && ref[i] >= '0' && ref[i] <= '9' && r <= kMaxSheetRows) {
    r = r * 10 + (ref[i] - '0');
    ++i;
  }
  if (col == 0 || i == digits || i != ref.size()) return false;
  row = static_cast<int>(r);
  column = static_cast<int>(col);
  return true;
}

struct Styles {
  std::vector<NumberFormat> cell_formats;  // by cell style index
  std::string font;
};

Styles ReadStyles(zip_t* zip, const std::string& part) {
  Styles styles;
  std::string data;
  pugi::xml_document doc;
  if (part.empty() || !ReadEntry(zip, part, data) || !Parse(doc, data)) return styles;
  const pugi::xml_node root = doc.document_element();
  std::unordered_map<int, NumberFormat> custom;
  for (pugi::xml_node f : Child(root, "numFmts").children()) {
    if (Is(f, "numFmt")) {
      custom[f.attribute("numFmtId").as_int()] =
          NumberFormatFromCode(f.attribute("formatCode").value());
    }
  }
  for (pugi::xml_node xf : Child(root, "cellXfs").children()) {
    if (!Is(xf, "xf")) continue;
    const int id = xf.attribute("numFmtId").as_int();
    const auto it = custom.find(id);
    styles.cell_formats.push_back(it != custom.end() ? it->second : BuiltInNumberFormat(id));
  }
  for (pugi::xml_node font : Child(root, "fonts").children()) {
    if (!Is(font, "font")) continue;
    styles.font = Child(font, "name").attribute("val").value();
    break;
  }
  return styles;
}

void ReadSheetCells(const pugi::xml_node& root, const std::vector<std::string>& strings,
                    const Styles& styles, Sheet& sheet) {
  for (pugi::xml_node col : Child(root, "cols").children()) {
    const double width = col.attribute("width").as_double() - kColumnPadding;
    if (!Is(col, "col") || !(width > 0)) continue;
    const int last = std::min(col.attribute("max").as_int(), kMaxSheetColumns);
    for (int c = std::max(1, col.attribute("min").as_int()); c <= last; ++c) {
      sheet.SetKeptWidth(c, width);
    }
  }
  int row = 0;
  std::string text;
  for (pugi::xml_node r : Child(root, "sheetData").children()) {
    if (!Is(r, "row")) continue;
    const int numbered = r.attribute("r").as_int();
    row = numbered > 0 ? numbered : row + 1;
    int column = 0;
    for (pugi::xml_node c : r.children()) {
      if (!Is(c, "c")) continue;
      int cell_row = row;
      int cell_column = column + 1;
      const pugi::xml_attribute ref = c.attribute("r");
      if (ref) ParseReference(ref.value(), cell_row, cell_column);
      column = cell_column;
      const std::string_view type = c.attribute("t").value();
      const pugi::xml_node v = Child(c, "v");
      const std::string_view value = v.text().get();
      text.clear();
      if (type == "s") {
        const auto index = static_cast<std::size_t>(v.text().as_ullong(~0ull));
        if (index >= strings.size()) continue;
        sheet.SetText(cell_row, cell_column, strings[index]);
      } else if (type == "inlineStr") {
        sheet.SetText(cell_row, cell_column, ItemText(Child(c, "is")));
      } else if (type == "b") {
        if (!v) continue;
        sheet.SetText(cell_row, cell_column, value == "1" ? "TRUE" : "FALSE");
      } else if (type == "str" || type == "e" || type == "d") {
        if (!v) continue;
        AppendDecoded(value, text);
        sheet.SetText(cell_row, cell_column, text);
      } else {
        if (value.empty()) continue;  // a formatted empty cell
        double number = 0;
        const auto res = std::from_chars(value.data(), value.data() + value.size(), number);
        if (res.ec != std::errc()) {
          sheet.SetText(cell_row, cell_column, value);
          continue;
        }
        const auto style = static_cast<std::size_t>(c.attribute("s").as_uint());
        const NumberFormat format = style < styles.cell_formats.size() ? styles.cell_formats[style]
                                                                       : NumberFormat::kGeneral;
        sheet.SetNumber(cell_row, cell_column, number, format);
      }
    }
  }
}

}  // namespace

bool ReadXlsx(const std::string& path, Workbook& book, std::string& error) {
  int code = 0;
  ZipPtr zip(zip_open(NativePath(path).c_str(), ZIP_RDONLY, &code));
  if (!zip) {
    error = path + ": not a readable .xlsx file (zip error " + std::to_string(code) + ")";
    return false;
  }
  std::string workbook_part = "xl/workbook.xml";
  for (const auto& [id, rel] : ReadRelationships(zip.get(), "")) {
    (void)id;
    if (EndsWith(rel.type, "/officeDocument")) workbook_part = rel.target;
  }
  std::string data;
  pugi::xml_document doc;
  if (!ReadEntry(zip.get(), workbook_part, data) || !Parse(doc, data)) {
    error = path + ": the workbook part is missing or broken";
    return false;
  }
  const auto rels = ReadRelationships(zip.get(), workbook_part);
  std::string strings_part;
  std::string styles_part;
  for (const auto& [id, rel] : rels) {
    (void)id;
    if (EndsWith(rel.type, "/sharedStrings")) strings_part = rel.target;
    if (EndsWith(rel.type, "/styles")) styles_part = rel.target;
  }

  std::vector<std::string> strings;
  {
    std::string sst_data;
    pugi::xml_document sst;
    if (!strings_part.empty() && ReadEntry(zip.get(), strings_part, sst_data)) {
      if (!Parse(sst, sst_data)) {
        error = path + ": the shared strings are broken";
        return false;
      }
      for (pugi::xml_node si : sst.document_element().children()) {
        if (Is(si, "si")) strings.push_back(ItemText(si));
      }
    }
  }
  const Styles styles = ReadStyles(zip.get(), styles_part);

  Workbook result;
  result.RemoveAllSheets();
  if (!styles.font.empty()) result.SetStandardFont(styles.font);
  for (pugi::xml_node s : Child(doc.document_element(), "sheets").children()) {
    if (!Is(s, "sheet")) continue;
    const auto it = rels.find(std::string(RelationshipId(s)));
    result.AddSheet(s.attribute("name").value());
    // Chart sheets and sheets whose part is missing come back as empty sheets.
    if (it == rels.end() || !EndsWith(it->second.type, "/worksheet")) continue;
    std::string sheet_data;
    pugi::xml_document sheet_doc;
    if (!ReadEntry(zip.get(), it->second.target, sheet_data) || !Parse(sheet_doc, sheet_data)) {
      error = path + ": sheet \"" + s.attribute("name").value() + "\" is missing or broken";
      return false;
    }
    Sheet& sheet = result.GetSheet(result.SheetCount());
    sheet.LimitSparseness(true);
    ReadSheetCells(sheet_doc.document_element(), strings, styles, sheet);
    sheet.LimitSparseness(false);
    if (sheet.Overflowed()) {
      error = path + ": sheet \"" + sheet.Name() + "\" holds cells too far apart to be read back";
      return false;
    }
  }
  if (result.SheetCount() == 0) {
    error = path + ": the workbook has no sheets";
    return false;
  }
  book = std::move(result);
  return true;
}

}  // namespace kroveld

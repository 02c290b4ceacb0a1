// .xlsx input: libzip opens the package; pugixml reads the small parts (workbook, relationships,
// styles) and the pull reader streams the sheets and the shared strings, so a big sheet costs its
// cells and not a document tree. Works with what spreadsheet programs and libraries write: shared
// or inline strings, rich-text runs, absolute or relative part names, optional cell references,
// namespace prefixes on element names.
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
#include "jobs/workbook/xml_pull.h"
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

// Opens a part whose size the zip directory states and which is within the cap; null otherwise.
// `size` is the stated size, which the bytes read must match.
zip_file_t* OpenEntry(zip_t* zip, const std::string& name, zip_uint64_t& size) {
  zip_stat_t st;
  zip_stat_init(&st);
  if (zip_stat(zip, name.c_str(), 0, &st) != 0 || !(st.valid & ZIP_STAT_SIZE)) return nullptr;
  if (st.size > kMaxEntryBytes) return nullptr;
  size = st.size;
  return zip_fopen(zip, name.c_str(), 0);
}

// Reads a part. The buffer grows with the bytes that really arrive, not with the size the zip
// directory claims, so a small file that claims a huge part costs nothing.
bool ReadEntry(zip_t* zip, const std::string& name, std::string& out) {
  zip_uint64_t size = 0;
  zip_file_t* f = OpenEntry(zip, name, size);
  if (!f) return false;
  out.clear();
  char chunk[1 << 16];
  bool ok = true;
  for (;;) {
    const zip_int64_t got = zip_fread(f, chunk, sizeof chunk);
    if (got < 0 || out.size() + static_cast<zip_uint64_t>(got) > size) ok = false;
    if (got <= 0 || !ok) break;
    out.append(chunk, static_cast<std::size_t>(got));
  }
  zip_fclose(f);
  return ok && out.size() == size;
}

// Streams a part through the pull reader, handing every event to `on_event`. False when the part
// is missing, bigger than the cap, not as long as the zip directory says, or not well-formed XML.
template <class OnEvent>
bool StreamEntry(zip_t* zip, const std::string& name, OnEvent&& on_event) {
  zip_uint64_t stated = 0;
  zip_file_t* f = OpenEntry(zip, name, stated);
  if (!f) return false;
  zip_uint64_t total = 0;
  XmlPull xml([&](char* buffer, std::size_t size) -> long long {
    const zip_int64_t got = zip_fread(f, buffer, size);
    if (got < 0) return -1;
    total += static_cast<zip_uint64_t>(got);
    return total > stated ? -1 : got;
  });
  XmlPull::Event e;
  while ((e = xml.Next()) != XmlPull::Event::kDone && e != XmlPull::Event::kError) on_event(xml, e);
  zip_fclose(f);
  return e == XmlPull::Event::kDone && total == stated;
}

// Leading integer of an attribute value (blanks and a sign allowed), 0 when there is none.
long long LeadingInt(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  long long v = 0;
  std::from_chars(text.data(), text.data() + text.size(), v);
  return v;
}

double LeadingDouble(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  double v = 0;
  std::from_chars(text.data(), text.data() + text.size(), v);
  return v;
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

// Collects the text of a string item (<si> of the shared strings, <is> of an inline string)
// from the pull events inside it: a <t>, or the <t> of every rich-text run <r> (phonetic runs
// skipped). `depth` is the item element's depth.
class ItemCollector {
 public:
  void Begin(int depth) {
    depth_ = depth;
    text_.clear();
    in_t_ = false;
  }
  void On(const XmlPull& xml, XmlPull::Event e) {
    const int below = xml.Depth() - depth_;
    if (e == XmlPull::Event::kStart && xml.Name() == "t" &&
        (below == 1 || (below == 2 && in_run_))) {
      in_t_ = true;
      raw_.clear();
    } else if (e == XmlPull::Event::kStart && below == 1) {
      in_run_ = xml.Name() == "r";
    } else if (e == XmlPull::Event::kText && in_t_) {
      raw_.append(xml.Text());
    } else if (e == XmlPull::Event::kEnd && in_t_ && xml.Name() == "t") {
      in_t_ = false;
      AppendDecoded(raw_, text_);
    } else if (e == XmlPull::Event::kEnd && below == 1) {
      in_run_ = false;
    }
  }
  const std::string& Text() const { return text_; }

 private:
  int depth_ = 0;
  bool in_run_ = false;
  bool in_t_ = false;
  std::string raw_;
  std::string text_;
};

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

// Builds a sheet from the pull events of its part: column widths from <cols>, cells from the
// <row>s of <sheetData>. Cell values are collected while the cell is open and stored at its end.
class SheetBuilder {
 public:
  SheetBuilder(const std::vector<std::string>& strings, const Styles& styles, Sheet& sheet)
      : strings_(strings), styles_(styles), sheet_(sheet) {}

  void On(const XmlPull& xml, XmlPull::Event e) {
    using E = XmlPull::Event;
    const int depth = xml.Depth();
    if (in_is_) {
      if (e == E::kEnd && depth == 4 && xml.Name() == "is") {
        in_is_ = false;
      } else {
        item_.On(xml, e);
      }
      return;
    }
    if (e == E::kText) {
      if (in_v_) value_.append(xml.Text());
      return;
    }
    if (e == E::kEnd) {
      if (depth == 1) section_ = Section::kOther;
      if (depth == 4 && in_v_) in_v_ = false;
      if (depth == 3 && in_cell_) {
        in_cell_ = false;
        StoreCell();
      }
      return;
    }
    if (e != E::kStart) return;
    const std::string_view name = xml.Name();
    std::string_view value;
    if (depth == 1) {
      section_ = name == "cols"        ? Section::kCols
                 : name == "sheetData" ? Section::kSheetData
                                       : Section::kOther;
    } else if (depth == 2 && section_ == Section::kCols && name == "col") {
      const double width =
          (xml.Attribute("width", value) ? LeadingDouble(value) : 0) - kColumnPadding;
      if (!(width > 0)) return;
      const long long min = xml.Attribute("min", value) ? LeadingInt(value) : 0;
      const long long max = xml.Attribute("max", value) ? LeadingInt(value) : 0;
      const long long last = std::min<long long>(max, kMaxSheetColumns);
      for (long long c = std::max(1LL, min); c <= last; ++c) {
        sheet_.SetKeptWidth(static_cast<int>(c), width);
      }
    } else if (depth == 2 && section_ == Section::kSheetData && name == "row") {
      const long long numbered = xml.Attribute("r", value) ? LeadingInt(value) : 0;
      // A row past the sheet's end stays past it (its cells are not kept), whatever it says.
      row_ = numbered > 0 ? static_cast<int>(std::min<long long>(numbered, kMaxSheetRows + 1LL))
                          : std::min(row_ + 1, kMaxSheetRows + 1);
      column_ = 0;
      in_row_ = true;
    } else if (depth == 3 && in_row_ && section_ == Section::kSheetData && name == "c") {
      cell_row_ = row_;
      cell_column_ = column_ + 1;
      if (xml.Attribute("r", value)) ParseReference(value, cell_row_, cell_column_);
      column_ = cell_column_;
      type_.assign(xml.Attribute("t", value) ? value : std::string_view());
      const long long style = xml.Attribute("s", value) ? LeadingInt(value) : 0;
      style_ = style > 0 ? static_cast<std::size_t>(style) : 0;
      value_.clear();
      has_v_ = false;
      has_is_ = false;
      in_cell_ = true;
    } else if (depth == 4 && in_cell_ && name == "v" && !has_v_) {
      has_v_ = true;
      in_v_ = true;
    } else if (depth == 4 && in_cell_ && name == "is" && !has_is_) {
      has_is_ = true;
      in_is_ = true;
      item_.Begin(depth);
    }
  }

 private:
  enum class Section { kOther, kCols, kSheetData };

  void StoreCell() {
    const std::string_view type = type_;
    if (type == "s") {
      std::size_t index = ~std::size_t{0};
      const auto res = std::from_chars(value_.data(), value_.data() + value_.size(), index);
      if (res.ec != std::errc() || index >= strings_.size()) return;
      sheet_.SetText(cell_row_, cell_column_, strings_[index]);
    } else if (type == "inlineStr") {
      sheet_.SetText(cell_row_, cell_column_, has_is_ ? item_.Text() : std::string());
    } else if (type == "b") {
      if (!has_v_) return;
      sheet_.SetText(cell_row_, cell_column_, value_ == "1" ? "TRUE" : "FALSE");
    } else if (type == "str" || type == "e" || type == "d") {
      if (!has_v_) return;
      text_.clear();
      AppendDecoded(value_, text_);
      sheet_.SetText(cell_row_, cell_column_, text_);
    } else {
      if (value_.empty()) return;  // a formatted empty cell
      double number = 0;
      const auto res = std::from_chars(value_.data(), value_.data() + value_.size(), number);
      if (res.ec != std::errc()) {
        sheet_.SetText(cell_row_, cell_column_, value_);
        return;
      }
      const NumberFormat format = style_ < styles_.cell_formats.size()
                                      ? styles_.cell_formats[style_]
                                      : NumberFormat::kGeneral;
      sheet_.SetNumber(cell_row_, cell_column_, number, format);
    }
  }

  const std::vector<std::string>& strings_;
  const Styles& styles_;
  Sheet& sheet_;
  Section section_ = Section::kOther;
  ItemCollector item_;
  int row_ = 0, column_ = 0, cell_row_ = 0, cell_column_ = 0;
  bool in_row_ = false, in_cell_ = false, in_v_ = false, in_is_ = false;
  bool has_v_ = false, has_is_ = false;
  std::size_t style_ = 0;
  std::string type_, value_, text_;
};

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
  if (!strings_part.empty() && zip_name_locate(zip.get(), strings_part.c_str(), 0) >= 0) {
    ItemCollector item;
    bool in_item = false;
    const bool ok = StreamEntry(zip.get(), strings_part, [&](const XmlPull& xml, XmlPull::Event e) {
      if (xml.Depth() == 1 && xml.Name() == "si" && e == XmlPull::Event::kStart) {
        in_item = true;
        item.Begin(1);
      } else if (xml.Depth() == 1 && in_item && e == XmlPull::Event::kEnd) {
        in_item = false;
        strings.push_back(item.Text());
      } else if (in_item) {
        item.On(xml, e);
      }
    });
    if (!ok) {
      error = path + ": the shared strings are broken";
      return false;
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
    Sheet& sheet = result.GetSheet(result.SheetCount());
    sheet.LimitSparseness(true);
    SheetBuilder builder(strings, styles, sheet);
    const bool ok = StreamEntry(zip.get(), it->second.target,
                                [&](const XmlPull& xml, XmlPull::Event e) { builder.On(xml, e); });
    sheet.LimitSparseness(false);
    if (!ok) {
      error = path + ": sheet \"" + s.attribute("name").value() + "\" is missing or broken";
      return false;
    }
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

// The compound-file reader on files our writer made, on files laid out by hand in both sector
// sizes (mini stream, regular sectors, more FAT sectors than the header can list), and on files
// broken on purpose: each must come back byte for byte or be refused with the right reason.
#include "jobs/workbook/compound_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "jobs/workbook/xls_reader.h"
#include "support/test_support.h"

namespace kroveld {
namespace {

using testing::TempDir;
using E = CompoundFileError;

constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr std::uint32_t kEnd = 0xFFFFFFFE;
constexpr std::uint64_t kGigabyte = std::uint64_t{1} << 30;

void Put32(std::string& s, std::size_t at, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) s[at + i] = static_cast<char>(v >> (8 * i));
}
void Append32(std::string& s, std::uint32_t v) {
  s.append(4, '\0');
  Put32(s, s.size() - 4, v);
}

// Lays out a compound file sector by sector: the chains in the order they are added, then the
// directory, the FAT and, when the header cannot list every FAT sector, DIFAT sectors.
class CompoundBuilder {
 public:
  struct Entry {
    std::u16string name;
    std::uint8_t type = 2;
    std::uint32_t start = kEnd;
    std::uint64_t size = 0;
    std::uint32_t left = kNone, right = kNone, child = kNone;
  };

  explicit CompoundBuilder(int shift) : shift_(shift), bytes_(1u << shift) {
    entries.push_back({u"Root Entry", 5});
  }

  // A stream entry linked as the right sibling of the previous one (or the root's child).
  std::uint32_t AddStream(std::u16string name, std::string_view data) {
    const std::uint32_t start =
        data.size() < 4096 ? Chain(mini_, mini_fat, data, 64) : Chain(body_, fat_, data, bytes_);
    const auto id = static_cast<std::uint32_t>(entries.size());
    entries.push_back({std::move(name), 2, start, data.size()});
    (id == 1 ? entries[0].child : entries[id - 1].right) = id;
    return id;
  }

  std::string Build() {
    std::uint32_t mini_fat_start = kEnd;
    if (!mini_.empty()) {
      entries[0].start = Chain(body_, fat_, mini_, bytes_);
      entries[0].size = mini_.size();
      std::string table;
      for (std::uint32_t v : mini_fat) Append32(table, v);
      mini_fat_start = Chain(body_, fat_, table, bytes_);
    }
    std::string directory;
    for (const Entry& e : entries) {
      std::string raw(128, '\0');
      for (std::size_t i = 0; i < e.name.size(); ++i) {
        raw[2 * i] = static_cast<char>(e.name[i]);
        raw[2 * i + 1] = static_cast<char>(e.name[i] >> 8);
      }
      raw[0x40] = static_cast<char>(2 * (e.name.size() + 1));
      raw[0x42] = static_cast<char>(e.type);
      const std::uint32_t fields[] = {e.left, e.right, e.child};
      for (int i = 0; i < 3; ++i) Put32(raw, 0x44 + 4 * i, fields[i]);
      Put32(raw, 0x74, e.start);
      Put32(raw, 0x78, static_cast<std::uint32_t>(e.size));
      Put32(raw, 0x7C, static_cast<std::uint32_t>(e.size >> 32));
      directory += raw;
    }
    const std::uint32_t dir_start = Chain(body_, fat_, directory, bytes_);

    const std::uint32_t per = bytes_ / 4;
    const auto data = static_cast<std::uint32_t>(fat_.size());
    std::uint32_t fats = 0;
    for (;;) {
      const std::uint32_t need = (data + fats + difats + per - 1) / per;
      const std::uint32_t need_difat = need > 109 ? (need - 109 + per - 2) / (per - 1) : 0;
      if (need == fats && need_difat == difats) break;
      fats = need;
      difats = need_difat;
    }
    fat_.resize(data + fats + difats, 0xFFFFFFFD);
    std::fill(fat_.begin() + data + fats, fat_.end(), 0xFFFFFFFC);
    fat_.resize(std::size_t{fats} * per, kNone);
    fat_at_ = body_.size();
    for (std::uint32_t v : fat_) Append32(body_, v);
    for (std::uint32_t d = 0; d < difats; ++d) {
      for (std::uint32_t i = 0; i + 1 < per; ++i) {
        const std::size_t at = 109 + std::size_t{d} * (per - 1) + i;
        Append32(body_, at < fats ? data + static_cast<std::uint32_t>(at) : kNone);
      }
      Append32(body_, d + 1 < difats ? data + fats + d + 1 : kEnd);
    }

    std::string header(bytes_, '\0');
    header.replace(0, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1");
    header[0x18] = 0x3E;
    header[0x1A] = shift_ == 12 ? 4 : 3;
    header[0x1C] = '\xFE';
    header[0x1D] = '\xFF';
    header[0x1E] = static_cast<char>(shift_);
    header[0x20] = 6;
    Put32(header, 0x2C, fats);
    Put32(header, 0x30, dir_start);
    Put32(header, 0x38, 4096);
    Put32(header, 0x3C, mini_fat_start);
    Put32(header, 0x40, mini_fat_start == kEnd ? 0 : 1);
    Put32(header, 0x44, difats ? data + fats : kEnd);
    Put32(header, 0x48, difats);
    for (std::uint32_t i = 0; i < 109; ++i)
      Put32(header, 0x4C + 4 * i, i < fats ? data + i : kNone);
    return header + body_;
  }

  // Changes a FAT link of a built file.
  void SetFat(std::string& file, std::uint32_t sector, std::uint32_t next) const {
    Put32(file, bytes_ + fat_at_ + 4 * std::size_t{sector}, next);
  }

  std::vector<Entry> entries;
  std::vector<std::uint32_t> mini_fat;
  std::uint32_t difats = 0;

 private:
  // Appends `data` in whole units of `unit` bytes to `to`, linked one after the other in `links`.
  static std::uint32_t Chain(std::string& to, std::vector<std::uint32_t>& links,
                             std::string_view data, std::size_t unit) {
    const auto first = static_cast<std::uint32_t>(links.size());
    const std::size_t n = std::max<std::size_t>(1, (data.size() + unit - 1) / unit);
    to.append(data);
    to.append(n * unit - data.size(), '\0');
    for (std::size_t i = 1; i < n; ++i) links.push_back(first + static_cast<std::uint32_t>(i));
    links.push_back(kEnd);
    return first;
  }

  int shift_;
  std::uint32_t bytes_;
  std::string body_;
  std::string mini_;
  std::vector<std::uint32_t> fat_;
  std::size_t fat_at_ = 0;
};

std::string Pattern(std::size_t n, unsigned seed) {
  std::string s(n, '\0');
  for (std::size_t i = 0; i < n; ++i) s[i] = static_cast<char>(i * 7 + (i >> 9) + seed);
  return s;
}

E Read(const std::string& file, std::string& stream, std::uint64_t max = kGigabyte) {
  TempDir dir;
  const std::string path = dir.Write("c.xls", file);
  return ReadCompoundFileStream(path, {"Workbook", "Book"}, stream, max);
}

TEST(CompoundFile, ReadsStreamsOfEverySizeInBothSectorSizes) {
  struct Case {
    const char* what;
    int shift;
    std::size_t size;
    bool difat;
    bool high_size_bits = false;
  };
  const Case cases[] = {
      {"largest mini stream", 9, 4095, false},
      {"smallest regular stream", 9, 4096, false},
      {"version 3 ignores the high half of the size", 9, 5000, false, true},
      {"4096-byte sectors, mini stream", 12, 3000, false},
      {"4096-byte sectors, regular stream", 12, 10000, false},
      {"more FAT sectors than the header lists", 9, 14100 * 512, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    CompoundBuilder b(c.shift);
    // Streams before and after, so that the one asked for starts at neither end.
    b.AddStream(u"Before", Pattern(c.size < 4096 ? 300 : 5000, 1));
    const std::uint32_t id = b.AddStream(u"Workbook", Pattern(c.size, 2));
    b.AddStream(u"After", Pattern(200, 3));
    if (c.high_size_bits) b.entries[id].size |= std::uint64_t{0x1234} << 32;
    const std::string file = b.Build();
    EXPECT_EQ(b.difats > 0, c.difat);
    std::string stream;
    ASSERT_EQ(Read(file, stream), E::kNone);
    EXPECT_TRUE(stream == Pattern(c.size, 2)) << stream.size();
  }
}

TEST(CompoundFile, TakesWorkbookBeforeBookWhateverTheCase) {
  struct Case {
    std::u16string first, second;
    std::uint8_t first_type;
    std::string expected;
  };
  const Case cases[] = {
      {u"Book", u"WORKBOOK", 2, "second"},
      {u"workbook", u"Book", 2, "first"},
      {u"Workbook", u"Book", 1, "second"},  // a storage of that name is not the stream
      {u"Workbook2", u"Book", 2, "second"},
  };
  for (const Case& c : cases) {
    CompoundBuilder b(9);
    b.AddStream(c.first, "first");
    b.AddStream(c.second, "second");
    b.entries[1].type = c.first_type;
    std::string stream;
    ASSERT_EQ(Read(b.Build(), stream), E::kNone);
    EXPECT_EQ(stream, c.expected);
  }
}

// Broken files, each from a "Workbook" of 5000 bytes in sectors 0 to 9: bytes changed after the
// file is built, or entries and tables laid out wrong before.
TEST(CompoundFile, BrokenFilesAreRefusedWithTheirReason) {
  const auto expect = [](const std::string& file, E expected, std::uint64_t max) {
    std::string stream = "left over";
    EXPECT_EQ(Read(file, stream, max), expected);
    EXPECT_TRUE(stream.empty());
  };
  const struct {
    const char* what;
    std::function<void(const CompoundBuilder&, std::string&)> patch;
    E expected;
    std::uint64_t max = kGigabyte;
  } patched[] = {
      {"bad signature", [](auto&, std::string& f) { f[3] = 0; }, E::kNotCompoundFile},
      {"header cut short", [](auto&, std::string& f) { f.resize(300); }, E::kTruncated},
      {"last sector cut short", [](auto&, std::string& f) { f.resize(f.size() - 100); },
       E::kTruncated},
      {"sector size of the other version", [](auto&, std::string& f) { f[0x1E] = 12; },
       E::kNotCompoundFile},
      {"FAT listed past the file", [](auto&, std::string& f) { Put32(f, 0x4C, 9999); },
       E::kSectorOutOfRange},
      {"FAT loops back", [](auto& b, std::string& f) { b.SetFat(f, 5, 2); }, E::kChainCycle},
      {"FAT links past the file", [](auto& b, std::string& f) { b.SetFat(f, 3, 40000); },
       E::kSectorOutOfRange},
      {"chain shorter than the stated size", [](auto& b, std::string& f) { b.SetFat(f, 8, kEnd); },
       E::kStreamBeyondChain},
      {"stream over the limit", [](auto&, std::string&) {}, E::kStreamTooLarge, 4999},
  };
  for (const auto& c : patched) {
    SCOPED_TRACE(c.what);
    CompoundBuilder b(9);
    b.AddStream(u"Workbook", Pattern(5000, 0));
    std::string file = b.Build();
    c.patch(b, file);
    expect(file, c.expected, c.max);
  }
  const struct {
    const char* what;
    std::function<void(CompoundBuilder&)> build;
    E expected;
  } built[] = {
      {"900 MB stated on a small file", [](auto& b) { b.entries[1].size = 900u << 20; },
       E::kStreamBeyondChain},
      {"directory siblings loop",
       [](auto& b) {
         b.AddStream(u"A", "a");
         b.AddStream(u"B", "b");
         b.entries[3].left = 2;
       },
       E::kBrokenDirectory},
      {"root child outside the directory", [](auto& b) { b.entries[0].child = 50; },
       E::kBrokenDirectory},
      {"first entry is not the root", [](auto& b) { b.entries[0].type = 1; }, E::kBrokenDirectory},
      {"no workbook stream", [](auto& b) { b.entries[1].name = u"Workbook_"; }, E::kNoSuchStream},
      {"mini sector beyond the mini stream",
       [](auto& b) {
         b.AddStream(u"Small", "x");
         b.entries[1].size = 100;
         b.entries[1].start = 30;
       },
       E::kSectorOutOfRange},
      {"mini FAT loops back",
       [](auto& b) {
         b.AddStream(u"Small", std::string(200, 's'));
         b.entries[1].size = 200;
         b.entries[1].start = 0;
         b.mini_fat[1] = 0;
       },
       E::kChainCycle},
  };
  for (const auto& c : built) {
    SCOPED_TRACE(c.what);
    CompoundBuilder b(9);
    b.AddStream(u"Workbook", Pattern(5000, 0));
    c.build(b);
    expect(b.Build(), c.expected, kGigabyte);
  }
  std::string stream;
  EXPECT_EQ(ReadCompoundFileStream("/nonexistent/c.xls", {"Workbook"}, stream, kGigabyte),
            E::kCannotOpen);
  TempDir dir;
  EXPECT_EQ(ReadCompoundFileStream(dir.path(), {"Workbook"}, stream, kGigabyte), E::kCannotOpen);
}

// Found by fuzzing: the root's child is an unused directory entry, and a file an earlier reader
// library wrote outside a stack buffer opening. Both are refused with the usual message, the
// workbook left as it was.
TEST(CompoundFile, FuzzFindingsAreRefusedCleanly) {
  const std::pair<std::string, E> findings[] = {
      {std::string(KROVELD_SOURCE_DIR) + "/fuzz/findings/workbook-msole-dirent-leak.xls",
       E::kBrokenDirectory},
      {testing::DataFile("broken-compound-file.xls"), E::kChainCycle}};
  for (const auto& [path, reason] : findings) {
    SCOPED_TRACE(path);
    std::string stream;
    EXPECT_EQ(ReadCompoundFileStream(path, {"Workbook", "Book"}, stream, kGigabyte), reason);
    Workbook book;
    book.GetSheet(1).SetText(1, 1, "kept");
    std::string error;
    EXPECT_FALSE(ReadXls(path, book, error));
    EXPECT_EQ(error, path + ": not a readable .xls file (no workbook stream)");
    EXPECT_EQ(book.GetSheet(1).Get(1, 1).text, "kept");
  }
}

}  // namespace
}  // namespace kroveld

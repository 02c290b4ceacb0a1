// The compound file is read in the order its parts depend on each other: the 512-byte header, the
// sector allocation table (FAT) through the header's and the DIFAT sectors' lists of FAT sectors,
// the directory's sector chain, and then the stream's own chain, or for a small stream its mini
// sectors inside the root entry's chain through the mini FAT. Sectors are read with pread, a run
// of consecutive sectors in one call.
#include "jobs/workbook/compound_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <vector>

namespace kroveld {
namespace {

using Error = CompoundFileError;

constexpr std::uint32_t kMaxRegularSector = 0xFFFFFFFA;
constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;
constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;
constexpr std::size_t kHeaderBytes = 512;
constexpr std::size_t kHeaderFatEntries = 109;
constexpr std::size_t kHeaderFatListAt = 0x4C;
constexpr std::size_t kEntryBytes = 128;
constexpr std::uint32_t kMiniSectorShift = 6;
constexpr std::uint64_t kMiniStreamCutoff = 4096;
constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();

enum : std::uint8_t { kUnusedEntry = 0, kStreamEntry = 2, kRootEntry = 5 };

std::uint16_t Le16(const char* p) {
  return static_cast<std::uint16_t>(static_cast<unsigned char>(p[0]) |
                                    static_cast<unsigned char>(p[1]) << 8);
}
std::uint32_t Le32(const char* p) {
  return Le16(p) | static_cast<std::uint32_t>(Le16(p + 2)) << 16;
}
std::uint64_t Le64(const char* p) {
  return Le32(p) | static_cast<std::uint64_t>(Le32(p + 4)) << 32;
}

// A file opened for reading at offsets; closed when it goes.
class InputFile {
 public:
  explicit InputFile(const std::string& path)
      : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    struct stat st;
    if (fd_ >= 0 && ::fstat(fd_, &st) == 0 && S_ISREG(st.st_mode)) {
      size_ = static_cast<std::uint64_t>(st.st_size);
      regular_ = true;
    }
  }
  ~InputFile() {
    if (fd_ >= 0) ::close(fd_);
  }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  bool Usable() const { return regular_; }
  std::uint64_t Size() const { return size_; }

  // Exactly `n` bytes at `offset`; false on an error or when the file ends first.
  bool ReadAt(std::uint64_t offset, char* to, std::size_t n) const {
    while (n > 0) {
      const ssize_t got = ::pread(fd_, to, n, static_cast<off_t>(offset));
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) return false;
      to += got;
      n -= static_cast<std::size_t>(got);
      offset += static_cast<std::uint64_t>(got);
    }
    return true;
  }

 private:
  int fd_;
  std::uint64_t size_ = 0;
  bool regular_ = false;
};

// Follows a chain from `start` through `table`, taking at most `want` links. Every link must be
// below `count` (the sectors that exist) and come up once; the chain ends at end-of-chain or
// when `want` links are taken.
Error FollowChain(const std::vector<std::uint32_t>& table, std::uint32_t count, std::uint32_t start,
                  std::uint64_t want, std::vector<std::uint32_t>& chain) {
  chain.clear();
  count = std::min<std::uint64_t>(count, table.size());
  std::vector<bool> seen(count);
  for (std::uint32_t at = start; at != kEndOfChain && chain.size() < want; at = table[at]) {
    if (at >= count) return Error::kSectorOutOfRange;
    if (seen[at]) return Error::kChainCycle;
    seen[at] = true;
    chain.push_back(at);
  }
  return Error::kNone;
}

std::uint64_t Sectors(std::uint64_t bytes, std::uint32_t shift) {
  return (bytes >> shift) + ((bytes & ((std::uint64_t{1} << shift) - 1)) != 0);
}

class CompoundFile {
 public:
  explicit CompoundFile(const InputFile& file) : file_(file) {}

  Error Open() {
    std::array<char, kHeaderBytes> h{};
    const std::size_t have = static_cast<std::size_t>(std::min<std::uint64_t>(file_.Size(), 512));
    static constexpr char kSignature[] = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
    if (have < 8 || !file_.ReadAt(0, h.data(), have) ||
        !std::equal(kSignature, kSignature + 8, h.data())) {
      return Error::kNotCompoundFile;
    }
    if (have < kHeaderBytes) return Error::kTruncated;
    const std::uint16_t version = Le16(&h[0x1A]);
    shift_ = Le16(&h[0x1E]);
    if (Le16(&h[0x1C]) != 0xFFFE ||
        !((version == 3 && shift_ == 9) || (version == 4 && shift_ == 12)) ||
        Le16(&h[0x20]) != kMiniSectorShift || Le32(&h[0x38]) != kMiniStreamCutoff) {
      return Error::kNotCompoundFile;
    }
    wide_sizes_ = version == 4;
    sector_bytes_ = std::uint32_t{1} << shift_;
    // Sector n starts at (n + 1) sector sizes: the header takes the place of sector -1. A last
    // sector cut short still counts; reading past the file's end is refused when it happens.
    const std::uint64_t body = file_.Size() > sector_bytes_ ? file_.Size() - sector_bytes_ : 0;
    sector_count_ = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(Sectors(body, shift_), kMaxRegularSector));
    first_directory_ = Le32(&h[0x30]);
    first_mini_fat_ = Le32(&h[0x3C]);
    std::vector<std::uint32_t> fat_sectors;
    if (Error e = ListFatSectors(h.data(), fat_sectors); e != Error::kNone) return e;
    if (Error e = ReadTable(fat_sectors, fat_); e != Error::kNone) return e;
    fat_.resize(std::min<std::size_t>(fat_.size(), sector_count_));
    return ReadDirectory();
  }

  Error FindStream(std::initializer_list<std::string_view> names, std::uint32_t& found) const {
    // Walk the tree of the root storage's children once, whole, so a loop anywhere in it is
    // caught whichever name comes first.
    const std::size_t count = directory_.size() / kEntryBytes;
    std::vector<bool> seen(count);
    std::vector<std::uint32_t> pending{Le32(Entry(0) + 0x4C)};
    std::vector<std::uint32_t> match(names.size(), kNoEntry);
    while (!pending.empty()) {
      const std::uint32_t id = pending.back();
      pending.pop_back();
      if (id == kNoEntry) continue;
      if (id == 0 || id >= count || seen[id]) return Error::kBrokenDirectory;
      seen[id] = true;
      const char* e = Entry(id);
      if (static_cast<std::uint8_t>(e[0x42]) == kUnusedEntry) return Error::kBrokenDirectory;
      pending.push_back(Le32(e + 0x44));
      pending.push_back(Le32(e + 0x48));
      if (static_cast<std::uint8_t>(e[0x42]) != kStreamEntry) continue;
      std::size_t n = 0;
      for (std::string_view name : names) {
        if (match[n] == kNoEntry && NameIs(e, name)) match[n] = id;
        ++n;
      }
    }
    for (std::uint32_t id : match) {
      if (id != kNoEntry) {
        found = id;
        return Error::kNone;
      }
    }
    return Error::kNoSuchStream;
  }

  Error ReadStream(std::uint32_t id, std::uint64_t max_bytes, std::string& bytes) const {
    const std::uint64_t size = EntrySize(id);
    if (size > max_bytes) return Error::kStreamTooLarge;
    const std::uint32_t start = Le32(Entry(id) + 0x74);
    if (size == 0) return Error::kNone;
    return size < kMiniStreamCutoff ? ReadMiniStream(start, size, bytes)
                                    : ReadRegularStream(start, size, bytes);
  }

 private:
  const char* Entry(std::uint32_t id) const { return directory_.data() + id * kEntryBytes; }

  std::uint64_t EntrySize(std::uint32_t id) const {
    const std::uint64_t size = Le64(Entry(id) + 0x78);
    return wide_sizes_ ? size : size & 0xFFFFFFFF;
  }

  static bool NameIs(const char* entry, std::string_view name) {
    const std::uint16_t length = Le16(entry + 0x40);  // in bytes, with the closing zero
    if (length > 64 || length != 2 * (name.size() + 1)) return false;
    for (std::size_t i = 0; i < name.size(); ++i) {
      std::uint16_t unit = Le16(entry + 2 * i);
      if (unit >= 'a' && unit <= 'z') unit -= 'a' - 'A';
      char c = name[i];
      if (c >= 'a' && c <= 'z') c -= 'a' - 'A';
      if (unit != static_cast<unsigned char>(c)) return false;
    }
    return true;
  }

  std::uint64_t SectorOffset(std::uint32_t sector) const {
    return (std::uint64_t{sector} + 1) << shift_;
  }

  // The FAT sectors: the header's list, then the DIFAT sectors', as many as it takes to cover
  // the sectors the file has (a FAT that states more describes sectors that are not there).
  Error ListFatSectors(const char* header, std::vector<std::uint32_t>& out) const {
    const std::uint32_t per_sector = sector_bytes_ / 4;
    const std::uint64_t wanted =
        std::min<std::uint64_t>(Le32(header + 0x2C), Sectors(sector_count_, shift_ - 2));
    for (std::size_t i = 0; i < kHeaderFatEntries && out.size() < wanted; ++i) {
      out.push_back(Le32(header + kHeaderFatListAt + 4 * i));
    }
    std::vector<char> sector(sector_bytes_);
    // Each DIFAT sector adds per_sector - 1 entries, so this loop ends without a visited set.
    for (std::uint32_t at = Le32(header + 0x44); out.size() < wanted;) {
      if (at >= sector_count_) return Error::kSectorOutOfRange;
      if (!file_.ReadAt(SectorOffset(at), sector.data(), sector.size())) return Error::kTruncated;
      for (std::uint32_t i = 0; i + 1 < per_sector && out.size() < wanted; ++i) {
        out.push_back(Le32(sector.data() + 4 * i));
      }
      at = Le32(sector.data() + 4 * (per_sector - 1));
    }
    return Error::kNone;
  }

  // The 32-bit entries of the sectors `sectors`, in order (the FAT, the mini FAT).
  Error ReadTable(const std::vector<std::uint32_t>& sectors,
                  std::vector<std::uint32_t>& table) const {
    std::vector<char> sector(sector_bytes_);
    table.clear();
    table.reserve(sectors.size() * (sector_bytes_ / 4));
    for (std::uint32_t at : sectors) {
      if (at >= sector_count_) return Error::kSectorOutOfRange;
      if (!file_.ReadAt(SectorOffset(at), sector.data(), sector.size())) return Error::kTruncated;
      for (std::size_t i = 0; i < sector.size(); i += 4) table.push_back(Le32(sector.data() + i));
    }
    return Error::kNone;
  }

  Error ReadDirectory() {
    std::vector<std::uint32_t> chain;
    if (Error e = FollowChain(fat_, sector_count_, first_directory_, kAll, chain);
        e != Error::kNone) {
      return e;
    }
    directory_.resize(chain.size() * std::size_t{sector_bytes_});
    if (Error e = ReadSectors(chain, directory_.size(), directory_.data()); e != Error::kNone) {
      return e;
    }
    if (directory_.empty() || static_cast<std::uint8_t>(Entry(0)[0x42]) != kRootEntry) {
      return Error::kBrokenDirectory;
    }
    return Error::kNone;
  }

  // `n` bytes from the sectors of `chain`, consecutive sectors read in one go.
  Error ReadSectors(const std::vector<std::uint32_t>& chain, std::uint64_t n, char* to) const {
    for (std::size_t i = 0; i < chain.size() && n > 0;) {
      std::size_t j = i + 1;
      while (j < chain.size() && chain[j] == chain[j - 1] + 1) ++j;
      const std::uint64_t run = std::min<std::uint64_t>(std::uint64_t{j - i} << shift_, n);
      if (!file_.ReadAt(SectorOffset(chain[i]), to, run)) return Error::kTruncated;
      to += run;
      n -= run;
      i = j;
    }
    return Error::kNone;
  }

  Error ReadRegularStream(std::uint32_t start, std::uint64_t size, std::string& bytes) const {
    std::vector<std::uint32_t> chain;
    const std::uint64_t needed = Sectors(size, shift_);
    if (Error e = FollowChain(fat_, sector_count_, start, needed, chain); e != Error::kNone) {
      return e;
    }
    if (chain.size() < needed) return Error::kStreamBeyondChain;
    bytes.resize(size);
    return ReadSectors(chain, size, bytes.data());
  }

  // A small stream lives in 64-byte mini sectors of the mini stream, which is the root entry's
  // own chain of regular sectors; the mini FAT links the mini sectors.
  Error ReadMiniStream(std::uint32_t start, std::uint64_t size, std::string& bytes) const {
    std::vector<std::uint32_t> mini_fat_sectors;
    if (Error e = FollowChain(fat_, sector_count_, first_mini_fat_, kAll, mini_fat_sectors);
        e != Error::kNone) {
      return e;
    }
    std::vector<std::uint32_t> mini_fat;
    if (Error e = ReadTable(mini_fat_sectors, mini_fat); e != Error::kNone) return e;
    std::vector<std::uint32_t> container;
    const std::uint64_t root_size = EntrySize(0);
    if (Error e = FollowChain(fat_, sector_count_, Le32(Entry(0) + 0x74),
                              Sectors(root_size, shift_), container);
        e != Error::kNone) {
      return e;
    }
    const std::uint64_t held =
        std::min<std::uint64_t>(root_size, std::uint64_t{container.size()} << shift_);
    const std::uint64_t mini_count = std::min<std::uint64_t>(held >> kMiniSectorShift, kEndOfChain);
    std::vector<std::uint32_t> chain;
    const std::uint64_t needed = Sectors(size, kMiniSectorShift);
    if (Error e =
            FollowChain(mini_fat, static_cast<std::uint32_t>(mini_count), start, needed, chain);
        e != Error::kNone) {
      return e;
    }
    if (chain.size() < needed) return Error::kStreamBeyondChain;
    bytes.resize(size);
    constexpr std::uint32_t kMiniBytes = 1u << kMiniSectorShift;
    for (std::size_t i = 0; i < chain.size(); ++i) {
      // Mini sectors never straddle a regular sector: both sizes are powers of two.
      const std::uint64_t at = std::uint64_t{chain[i]} << kMiniSectorShift;
      const std::uint64_t offset =
          SectorOffset(container[at >> shift_]) + (at & (sector_bytes_ - 1));
      const std::uint64_t done = std::uint64_t{i} << kMiniSectorShift;
      const std::size_t n =
          static_cast<std::size_t>(std::min<std::uint64_t>(kMiniBytes, size - done));
      if (!file_.ReadAt(offset, bytes.data() + done, n)) return Error::kTruncated;
    }
    return Error::kNone;
  }

  const InputFile& file_;
  std::uint32_t shift_ = 9;
  std::uint32_t sector_bytes_ = 512;
  std::uint32_t sector_count_ = 0;
  bool wide_sizes_ = false;
  std::uint32_t first_directory_ = kEndOfChain;
  std::uint32_t first_mini_fat_ = kEndOfChain;
  std::vector<std::uint32_t> fat_;
  std::string directory_;
};

}  // namespace

CompoundFileError ReadCompoundFileStream(const std::string& native_path,
                                         std::initializer_list<std::string_view> names,
                                         std::string& bytes, std::uint64_t max_bytes) {
  bytes.clear();
  const InputFile file(native_path);
  if (!file.Usable()) return Error::kCannotOpen;
  CompoundFile compound(file);
  std::uint32_t id = 0;
  Error e = compound.Open();
  if (e == Error::kNone) e = compound.FindStream(names, id);
  if (e == Error::kNone) e = compound.ReadStream(id, max_bytes, bytes);
  if (e != Error::kNone) bytes.clear();
  return e;
}

}  // namespace kroveld

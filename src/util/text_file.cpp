// Line reader: one large read buffer, lines handed out as views into it (only a line longer than
// the buffer is assembled in a separate string), or, opened mapped, views into the mapped file.
#include "util/text_file.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "util/byte_scan.h"
#include "util/files.h"
#include "util/map_guard.h"
#include "util/map_pager.h"

namespace kroveld {

namespace {
constexpr std::size_t kBufferSize = 1u << 20;
constexpr std::size_t kSmallBuffer = 4096;
// A mapped file's pages are given back behind the reading position every this many bytes, all
// but the last megabyte before it: the line before the current one may still be looked at, and
// a page looked at again after it was given back would be read in again with its neighbours and
// stay.
constexpr std::size_t kReleaseStep = std::size_t{8} << 20;
constexpr std::size_t kReleaseLag = std::size_t{1} << 20;
// A file this large has its pages made ready ahead of the reader and given back behind it by a
// MapPager, told where reading is every kPagerStep bytes.
constexpr std::size_t kPagedFrom = std::size_t{32} << 20;
constexpr std::size_t kPagerStep = std::size_t{1} << 20;
// Pages are given back whole.
std::size_t PageFloor(std::size_t offset) {
  static const std::size_t page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  return offset / page * page;
}
}  // namespace

TextFile::TextFile() = default;

TextFile::TextFile(const std::string& path) {
  Open(path);
}

TextFile::~TextFile() {
  Close();
}

bool TextFile::Open(const std::string& path) {
  Close();
  error_.clear();
  const std::string native = NativePath(path);
  if (native.empty()) {
    error_ = "no file name given";
    return false;
  }
  // Looked at before opening: opening a FIFO would wait for a writer.
  struct stat st {};
  if (::stat(native.c_str(), &st) == 0 && !S_ISREG(st.st_mode)) {
    error_ = path + ": " +
             (S_ISDIR(st.st_mode) ? std::string(std::strerror(EISDIR)) : "not a regular file");
    return false;
  }
  std::FILE* f = std::fopen(native.c_str(), "rb");
  if (f == nullptr) {
    error_ = path + ": " + LastErrorText();
    return false;
  }
  if (::fstat(fileno(f), &st) != 0 || !S_ISREG(st.st_mode)) {
    error_ = path + ": " + (S_ISDIR(st.st_mode) ? std::strerror(EISDIR) : "not a regular file");
    std::fclose(f);
    return false;
  }
  std::setvbuf(f, nullptr, _IONBF, 0);  // we buffer ourselves
  file_ = f;
  // Small files (recipes, opened once per key) get a buffer of their size; everything else the
  // full megabyte. A file that grows while it is read is still read correctly.
  std::size_t want = kBufferSize;
  if (st.st_size >= 0 && static_cast<unsigned long long>(st.st_size) < kBufferSize - 1) {
    want = std::max<std::size_t>(static_cast<std::size_t>(st.st_size) + 1, kSmallBuffer);
  }
  if (buf_.size() != want) {
    buf_.resize(want);
    buf_.shrink_to_fit();
  }
  lines_read_ = 0;  // Close() above reset the buffer state
  first_cut_line_ = 0;
  long_line_.clear();
  return true;
}

bool TextFile::OpenMapped(const std::string& path) {
  if (!Open(path)) return false;
  struct stat st {};
  if (::fstat(fileno(file_), &st) != 0 || st.st_size <= 0 ||
      static_cast<unsigned long long>(st.st_size) > SIZE_MAX) {
    return true;  // read through the buffer
  }
  const std::size_t size = static_cast<std::size_t>(st.st_size);
  void* map = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, fileno(file_), 0);
  if (map == MAP_FAILED) return true;
  ::madvise(map, size, MADV_SEQUENTIAL);
  map_ = static_cast<const char*>(map);
  map_size_ = size;
  guard_ = map_guard::Watch(map_, size);
  path_ = path;
  map_pos_ = released_ = 0;
  next_turn_ = kReleaseStep + kReleaseLag;
  if (size >= kPagedFrom) {
    pager_ = std::make_unique<MapPager>(map_, size);
    next_turn_ = kPagerStep;
  }
  // The buffer is not needed; a small file's was small anyway.
  buf_.clear();
  buf_.shrink_to_fit();
  return true;
}

void TextFile::ReleaseBefore(std::int64_t offset) {
  if (map_ == nullptr || offset <= 0) return;
  if (pager_ != nullptr) {
    pager_->At(static_cast<std::size_t>(offset));
    return;
  }
  const std::size_t upTo = PageFloor(std::min(static_cast<std::size_t>(offset), map_size_));
  if (upTo <= released_) return;
  ::madvise(const_cast<char*>(map_) + released_, upTo - released_, MADV_DONTNEED);
  released_ = upTo;
  next_turn_ = std::max(next_turn_, released_ + kReleaseStep + kReleaseLag);
}

void TextFile::MapTurn() {
  if (pager_ != nullptr) {
    pager_->At(map_pos_);
    next_turn_ = map_pos_ + kPagerStep;
  } else {
    ReleaseBefore(static_cast<std::int64_t>(map_pos_ - kReleaseLag));
  }
}

void TextFile::Close() {
  pager_.reset();  // before the pages it looks after go
  if (guard_ != 0) map_guard::Forget(guard_);
  guard_ = 0;
  if (map_ != nullptr) {
    ::munmap(const_cast<char*>(map_), map_size_);
    map_ = nullptr;
    map_size_ = map_pos_ = released_ = next_turn_ = 0;
  }
  if (file_ != nullptr) {
    std::fclose(file_);
    file_ = nullptr;
  }
  pos_ = end_ = 0;
  eof_ = false;
  pending_cr_ = false;
}

// Moves the unread bytes to the front and reads more behind them. True when bytes were added.
bool TextFile::Fill() {
  if (file_ == nullptr || eof_) return false;
  if (pos_ > 0) {
    const std::size_t rest = end_ - pos_;
    if (rest > 0) std::memmove(buf_.data(), buf_.data() + pos_, rest);
    pos_ = 0;
    end_ = rest;
  }
  if (end_ >= buf_.size()) return false;
  const std::size_t n = std::fread(buf_.data() + end_, 1, buf_.size() - end_, file_);
  if (n == 0) {
    if (std::ferror(file_)) error_ = LastErrorText();
    eof_ = true;
    return false;
  }
  end_ += n;
  return true;
}

// The previous line ended in a CR at the very end of a buffer fill: a LF that follows belongs to
// the same line end.
void TextFile::FinishCrLf() {
  if (pos_ == end_) Fill();
  if (pos_ < end_ && buf_[pos_] == '\n') ++pos_;
  pending_cr_ = false;
}

// A line of the mapped file: a view into the map, cut at kMaxLineBytes like a buffered one.
bool TextFile::ReadMappedLine(std::string_view& line) {
  if (map_pos_ >= map_size_) return false;
  const char* const s = map_ + map_pos_;
  const std::size_t n = map_size_ - map_pos_;
  const std::size_t k = static_cast<std::size_t>(scan::FindCrOrLf(s, s + n) - s);
  std::size_t next = map_pos_ + k;
  if (k < n) {
    ++next;
    if (s[k] == '\r' && next < map_size_ && map_[next] == '\n') ++next;
  }
  // A read that found the file cut short met zeros from there on: the line is not what the file
  // held, and reading ends.
  if (CutShort()) {
    error_ = path_ + ": the file was cut short while it was read";
    map_pos_ = map_size_;
    return false;
  }
  std::size_t length = k;
  if (length > kMaxLineBytes) {
    if (first_cut_line_ == 0) first_cut_line_ = lines_read_ + 1;
    length = kMaxLineBytes;
  }
  line = std::string_view(s, length);
  if (map_pos_ >= next_turn_) MapTurn();
  map_pos_ = next;
  ++lines_read_;
  return true;
}

bool TextFile::CutShort() const {
  return guard_ != 0 && map_guard::Cut(guard_);
}

bool TextFile::ReadLine(std::string_view& line) {
  if (file_ == nullptr) return false;
  if (map_ != nullptr) return ReadMappedLine(line);
  if (pending_cr_) FinishCrLf();
  bool in_long = false;
  for (;;) {
    if (pos_ == end_ && !Fill()) {
      if (in_long) {
        line = long_line_;
        ++lines_read_;
        return true;
      }
      return false;
    }
    const char* s = buf_.data() + pos_;
    const std::size_t n = end_ - pos_;
    const std::size_t k = static_cast<std::size_t>(scan::FindCrOrLf(s, s + n) - s);
    if (k < n) {
      std::size_t next = pos_ + k + 1;
      if (s[k] == '\r') {
        if (next < end_) {
          if (buf_[next] == '\n') ++next;
        } else {
          pending_cr_ = true;
        }
      }
      if (in_long) {
        AppendToLongLine(s, k);
        line = long_line_;
      } else {
        line = std::string_view(s, k);
      }
      pos_ = next;
      ++lines_read_;
      return true;
    }
    // No line end in what is buffered.
    if (!in_long && (pos_ > 0 || end_ < buf_.size())) {
      if (Fill()) continue;
      // End of file: the rest is the last line, without a line end.
      line = std::string_view(buf_.data() + pos_, end_ - pos_);
      pos_ = end_;
      ++lines_read_;
      return true;
    }
    // The line is longer than the buffer: collect it in long_line_.
    if (!in_long) {
      long_line_.clear();
      in_long = true;
    }
    AppendToLongLine(s, n);
    pos_ = end_ = 0;
  }
}

// Adds bytes of a line longer than the buffer, up to kMaxLineBytes; the line's number is kept
// the first time one is cut.
void TextFile::AppendToLongLine(const char* s, std::size_t n) {
  const std::size_t room = kMaxLineBytes - std::min(kMaxLineBytes, long_line_.size());
  if (n > room && first_cut_line_ == 0) first_cut_line_ = lines_read_ + 1;
  long_line_.append(s, std::min(n, room));
}

bool TextFile::ReadLine(std::string& line) {
  std::string_view v;
  if (!ReadLine(v)) {
    line.clear();
    return false;
  }
  line.assign(v.data(), v.size());
  return true;
}

bool TextFile::SkipLines(std::int64_t count) {
  std::string_view v;
  for (std::int64_t i = 0; i < count; ++i) {
    if (!ReadLine(v)) return false;
  }
  return true;
}

bool TextFile::SeekToLine(std::int64_t offset, std::int64_t lineNumber) {
  if (file_ == nullptr || offset < 0 || lineNumber < 1) return false;
  if (map_ != nullptr) {
    if (static_cast<std::uint64_t>(offset) > map_size_) return false;
    map_pos_ = static_cast<std::size_t>(offset);
    // Pages given back before are read in again from here on, and given back again after.
    released_ = std::min(released_, PageFloor(map_pos_));
    next_turn_ = pager_ != nullptr ? map_pos_ : released_ + kReleaseStep + kReleaseLag;
    lines_read_ = lineNumber - 1;
    return true;
  }
  if (::fseeko(file_, static_cast<off_t>(offset), SEEK_SET) != 0) {
    error_ = LastErrorText();
    return false;
  }
  pos_ = end_ = 0;
  eof_ = false;
  pending_cr_ = false;  // a line begins here: the line end before it is complete
  long_line_.clear();
  lines_read_ = lineNumber - 1;
  return true;
}

}  // namespace kroveld

// Buffered sequential reader of 8-bit text files. Lines may end in CR LF, LF or a lone CR; the
// line end is not part of the line. A last line without a line end is still a line. Only regular
// files are read (a pipe or a device is refused). A line is returned whole up to kMaxLineBytes
// (far beyond any print-out); a longer one is cut there and the rest of it skipped, so memory
// stays bounded whatever the file holds. OpenMapped reads the file through a memory map instead of
// a buffer, where the file allows it, with the same lines; the pages read are given back to the
// kernel as reading moves on, so that memory stays bounded there too.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kroveld {

class MapPager;

// The longest line handed out; the bytes of a line beyond it are skipped.
inline constexpr std::size_t kMaxLineBytes = std::size_t{16} << 20;

class TextFile {
 public:
  TextFile();
  explicit TextFile(const std::string& path);
  ~TextFile();
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;

  // Opens the file (path as typed; converted to the native form). False when it cannot be read
  // (missing, a folder, no permission); the reason is then in Error().
  bool Open(const std::string& path);
  // Opens like Open and maps the file when it can (a regular file that is not empty and fits the
  // address space); otherwise it is read through the buffer as Open reads it. A mapped file is
  // read as long as it was when opened: a file that grows while it is read ends there.
  bool OpenMapped(const std::string& path);
  void Close();
  bool IsOpen() const { return file_ != nullptr; }
  bool IsMapped() const { return map_ != nullptr; }
  // The whole file when it is mapped; empty otherwise.
  std::string_view MappedBytes() const { return {map_, map_size_}; }
  // Says that the bytes of the mapping before `offset` will not be looked at again soon: their
  // pages are given back (looking at them later reads them in again). Nothing when not mapped.
  void ReleaseBefore(std::int64_t offset);

  // Reads the next line into `line`, which stays valid until the next call. False at end of file.
  bool ReadLine(std::string_view& line);
  // Same, copying into a string (cleared first). Returns false at end of file with `line` empty.
  bool ReadLine(std::string& line);
  // Skips `count` lines; false if the end of the file came first.
  bool SkipLines(std::int64_t count);
  // Goes to byte `offset`, which must be where line `lineNumber` (from 1) begins, as a key search
  // reported it; the next ReadLine returns that line. False when the file cannot seek there.
  bool SeekToLine(std::int64_t offset, std::int64_t lineNumber);

  // Whether the mapped file was cut short by another program while it was read: reading ends
  // there, as at the end of the file, and Error() says so.
  bool CutShort() const;

  // Number of lines read or skipped so far.
  std::int64_t LinesRead() const { return lines_read_; }
  // The number of the first line that was cut at kMaxLineBytes (0 when none was).
  std::int64_t FirstCutLine() const { return first_cut_line_; }
  const std::string& Error() const { return error_; }

 private:
  bool ReadMappedLine(std::string_view& line);
  // Every so often while reading mapped: pages behind given back, and (paged) those ahead made
  // ready.
  void MapTurn();
  bool Fill();
  void FinishCrLf();  // called when pending_cr_ is set
  void AppendToLongLine(const char* s, std::size_t n);

  std::FILE* file_ = nullptr;
  std::vector<char> buf_;
  std::size_t pos_ = 0;
  std::size_t end_ = 0;
  bool eof_ = false;
  bool pending_cr_ = false;  // the previous chunk ended in CR: skip a leading LF
  std::string long_line_;
  std::int64_t lines_read_ = 0;
  std::int64_t first_cut_line_ = 0;
  std::string error_;
  const char* map_ = nullptr;  // the mapped file, when it is read through a map
  std::size_t map_size_ = 0;
  std::size_t map_pos_ = 0;          // where the next line begins
  std::size_t released_ = 0;         // the pages before this offset were given back
  std::size_t next_turn_ = 0;        // MapTurn() when reading gets here
  std::unique_ptr<MapPager> pager_;  // a large file's pages, handled on a thread of their own
  int guard_ = 0;                    // the mapping's ticket with map_guard
  std::string path_;                 // the mapped file, for the message when it is cut short
};

}  // namespace kroveld

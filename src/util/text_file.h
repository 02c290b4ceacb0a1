// Buffered sequential reader of 8-bit text files. Lines may end in CR LF, LF or a lone CR; the
// line end is not part of the line. A last line without a line end is still a line. Lines of
// any length are returned whole; memory grows only with the longest line, never with the file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace kroveld {

class TextFile {
 public:
  TextFile() = default;
  explicit TextFile(const std::string& path) { Open(path); }
  ~TextFile();
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;

  // Opens the file (path as typed; converted to the native form). False when it cannot be read
  // (missing, a folder, no permission); the reason is then in Error().
  bool Open(const std::string& path);
  void Close();
  bool IsOpen() const { return file_ != nullptr; }

  // Reads the next line into `line`, which stays valid until the next call. False at end of file.
  bool ReadLine(std::string_view& line);
  // Same, copying into a string (cleared first). Returns false at end of file with `line` empty.
  bool ReadLine(std::string& line);
  // Skips `count` lines; false if the end of the file came first.
  bool SkipLines(std::int64_t count);
  // Goes to byte `offset`, which must be where line `lineNumber` (from 1) begins, as a key search
  // reported it; the next ReadLine returns that line. False when the file cannot seek there.
  bool SeekToLine(std::int64_t offset, std::int64_t lineNumber);
  bool AtEnd();

  // Number of lines read or skipped so far.
  std::int64_t LinesRead() const { return lines_read_; }
  const std::string& Error() const { return error_; }

 private:
  bool Fill();
  void FinishCrLf();  // called when pending_cr_ is set

  std::FILE* file_ = nullptr;
  std::vector<char> buf_;
  std::size_t pos_ = 0;
  std::size_t end_ = 0;
  bool eof_ = false;
  bool pending_cr_ = false;  // the previous chunk ended in CR: skip a leading LF
  std::string long_line_;
  std::int64_t lines_read_ = 0;
  std::string error_;
};

}  // namespace kroveld

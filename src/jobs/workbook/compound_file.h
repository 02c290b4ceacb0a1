// Reads one stream out of an OLE2 compound file, the container an Excel 97-2003 .xls workbook
// lives in. Every sector index, chain, directory link and size the file states is checked against
// the file's own length, so a broken or hostile file is refused with a reason: it is never read
// outside its bytes, never followed round a loop, and never makes us allocate more than it holds.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kroveld {

enum class CompoundFileError {
  kNone,
  kCannotOpen,         // no such file, no permission, or not a regular file
  kNotCompoundFile,    // wrong signature, byte order, version or sector sizes
  kTruncated,          // the file ends before a header or sector it needs
  kSectorOutOfRange,   // a chain names a sector the file does not have
  kChainCycle,         // a chain comes back to a sector it has already passed
  kBrokenDirectory,    // the directory's tree links loop or point outside the directory
  kNoSuchStream,       // the root storage holds no stream of the names asked for
  kStreamTooLarge,     // the stream states a size over the caller's limit
  kStreamBeyondChain,  // the stream states more bytes than its sector chain holds
};

// Fills `bytes` with the stream of the root storage whose name is the first of `names` found
// there (names compare without regard to ASCII case, as compound files do). A stated size larger
// than the stream's chain supplies is refused rather than read in part. `bytes` is left empty on
// any failure.
CompoundFileError ReadCompoundFileStream(const std::string& native_path,
                                         std::initializer_list<std::string_view> names,
                                         std::string& bytes, std::uint64_t max_bytes);

}  // namespace kroveld

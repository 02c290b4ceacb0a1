// File and folder helpers. Paths are kept as typed; both '\' and '/' count as separators, and a
// path is turned into the native form (every '\' becomes '/') only where it meets the file system.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "util/background_writer.h"

namespace kroveld {

bool IsSeparator(char c);
// The path as the file system wants it: every '\' becomes '/'.
std::string NativePath(std::string_view path);

// True when a regular file exists at the trimmed path (a folder, a pipe or a device is not one);
// false for an empty path and on any error.
bool FileExists(std::string_view path);
bool FolderExists(std::string_view path);
// The size of the regular file at the path; 0 when there is none.
std::uint64_t FileSizeOf(std::string_view path);
// True when anything (file, folder, pipe, device) exists at the trimmed path.
bool PathExists(std::string_view path);
// True when the folder lists anything (files or folders). The system's named interface; no
// caller yet.
bool FolderHasEntries(std::string_view path);

// The text up to and including the last separator, or "" when there is none.
std::string FolderOfPath(std::string_view path);
// Removes one trailing separator from a non-empty path. The system's named interface; no caller
// yet.
std::string StripTrailingBackslash(std::string_view path);
// Parent folder name: the path without its last component and without a trailing separator.
std::string ParentFolderName(std::string_view path);
// The last component without its extension ("x.txt" -> "x").
std::string BaseName(std::string_view path);
// The text after the last point of the last component, or "".
std::string ExtensionName(std::string_view path);
// The last component.
std::string FileName(std::string_view path);

// Creates the folder and every missing folder above it. False with `error` on failure.
bool CreateFolderTree(std::string_view path, std::string* error = nullptr);
bool DeleteFile(std::string_view path);
// True when the file contains the byte `c` (read in large blocks).
bool FileContainsByte(std::string_view path, char c);

// Names of the files and of the subfolders of a folder, each sorted by name (byte order).
struct FolderListing {
  std::vector<std::string> files;
  std::vector<std::string> folders;
};
bool ListFolder(std::string_view path, FolderListing& out);

// Gives the file at native path `from` a second name `to` (replacing a file there): a hard link
// where the file system has them, else a copy. False (and nothing at `to`) when neither works.
bool SecondName(const std::string& from, const std::string& to);

// How an output that a run replaces is kept, as cp, mv and install do it with --backup.
enum class BackupMode { kNone, kSimple, kNumbered, kExisting };
struct BackupPolicy {
  BackupMode mode = BackupMode::kNone;
  std::string suffix = "~";
};
// The backup name of `target` under `policy`: target + suffix (simple), target + ".~N~" with the
// next free N (numbered), numbered when a numbered backup exists already, else simple (existing).
// "" for kNone.
std::string BackupPathOf(const std::string& target, const BackupPolicy& policy);

// Holds on to the file at `target` while a run may replace it: a hidden second name for the same
// file (a copy where the file system has no hard links), made on construction. Finish() decides:
// when asked to keep it and the target was replaced meanwhile, it becomes the backup (replacing
// an older simple backup); otherwise it is removed and earlier backups stay as they were. Without
// a policy or a file at `target` it does nothing.
class OutputBackup {
 public:
  OutputBackup(const std::string& target, const BackupPolicy& policy);
  ~OutputBackup() { Finish(false); }
  OutputBackup(const OutputBackup&) = delete;
  OutputBackup& operator=(const OutputBackup&) = delete;
  // The backup's path when it was kept, "" otherwise.
  std::string Finish(bool keep);

 private:
  BackupPolicy policy_;
  std::string target_;
  std::string held_;  // the file's second name while the run goes on
  unsigned long long inode_ = 0;
  unsigned long long device_ = 0;
};

// Removes the temporary files of AtomicFile in `folder` (empty or ending in a separator) whose
// writing process is gone, as a process killed in the middle of a save leaves them. Runs once per
// folder and process; AtomicFile::Open calls it.
void RemoveStaleTempFiles(const std::string& folder);

// Writes a file completely or not at all: the data goes to a temporary file in the same folder,
// which is renamed over the target on Commit(). Destroying an uncommitted AtomicFile removes the
// temporary file and leaves the target as it was. Once the data passes one buffer, buffers are
// written by a second thread while the caller fills the next.
class AtomicFile {
 public:
  AtomicFile() = default;
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  // Creates the temporary file beside `target`. False with Error() (path and reason) on failure.
  bool Open(std::string_view target);
  // Buffered append; errors are remembered and reported by Commit().
  void Write(std::string_view data);
  // Flushes, closes and renames over the target. False with Error() on any failure.
  bool Commit();
  // Drops the temporary file.
  void Abort();
  // With durable (the default) Commit() flushes the data to the disk before the rename, and a new
  // file's entry in its folder after it. Callers
  // that rewrite one small file many times in a row (one key at a time) switch it off; the rename
  // still replaces the file in one step.
  void SetDurable(bool durable) { durable_ = durable; }
  bool IsOpen() const { return fd_ >= 0; }
  // The temporary file while open ("" otherwise), for libraries that write by file name: they
  // write this file instead of Write(), and Commit() renames it over the target all the same.
  const std::string& TempPath() const { return temp_; }
  const std::string& Error() const { return error_; }

 private:
  // Hands the buffer over; the last flush of a file that never outgrew the buffer writes it here.
  void Flush(bool last = false);
  // Waits for the writer thread and takes over its error, if any.
  void StopWriter();

  int fd_ = -1;
  std::unique_ptr<BackgroundWriter> writer_;
  std::string target_;
  std::string temp_;
  std::string buffer_;
  std::string error_;
  bool failed_ = false;
  bool durable_ = true;
  bool newFile_ = true;  // nothing stood at the target when it was opened
};

// Text of errno for messages.
std::string LastErrorText();

// Flushes the folder holding `path` to the disk, so that a file renamed into it stays after a
// crash; with wholeFileSystem, everything written to the file system it lies on. Best effort.
void SyncFolderOf(std::string_view path, bool wholeFileSystem = false);

}  // namespace kroveld

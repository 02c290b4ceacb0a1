// File and folder helpers, and the all-or-nothing file writer.
#include "util/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string_view>
#include <unordered_set>

#include "util/strings.h"

namespace kroveld {

namespace {

constexpr std::size_t kWriteBuffer = 1u << 20;

std::size_t LastSeparator(std::string_view path) {
  for (std::size_t i = path.size(); i > 0; --i) {
    if (IsSeparator(path[i - 1])) return i - 1;
  }
  return std::string_view::npos;
}

bool StatPath(std::string_view path, struct stat& st) {
  if (path.empty()) return false;
  const std::string native = NativePath(path);
  return ::stat(native.c_str(), &st) == 0;
}

}  // namespace

bool IsSeparator(char c) {
  return c == '\\' || c == '/';
}

std::string NativePath(std::string_view path) {
  std::string out(path);
  std::replace(out.begin(), out.end(), '\\', '/');
  return out;
}

std::string LastErrorText() {
  return std::strerror(errno);
}

void SyncFolderOf(std::string_view path, bool wholeFileSystem) {
  const std::string folder = FolderOfPath(NativePath(path));
  const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  if (wholeFileSystem) {
    ::syncfs(fd);
  } else {
    ::fsync(fd);
  }
  ::close(fd);
}

bool FileExists(std::string_view path) {
  const std::string_view trimmed = Trim(path);
  struct stat st {};
  if (!StatPath(trimmed, st)) return false;
  // A folder, a pipe or a device is not a file: reading a FIFO would wait for a writer and a
  // device such as /dev/zero never ends.
  return S_ISREG(st.st_mode);
}

std::uint64_t FileSizeOf(std::string_view path) {
  struct stat st {};
  if (!StatPath(Trim(path), st) || !S_ISREG(st.st_mode)) return 0;
  return static_cast<std::uint64_t>(st.st_size);
}

bool PathExists(std::string_view path) {
  struct stat st {};
  return StatPath(Trim(path), st);
}

bool FolderExists(std::string_view path) {
  const std::string_view trimmed = Trim(path);
  struct stat st {};
  if (!StatPath(trimmed, st)) return false;
  return S_ISDIR(st.st_mode);
}

bool FolderHasEntries(std::string_view path) {
  if (path.empty()) return false;
  const std::string native = NativePath(path);
  DIR* dir = ::opendir(native.c_str());
  if (dir == nullptr) return false;
  bool any = false;
  while (dirent* e = ::readdir(dir)) {
    if (std::strcmp(e->d_name, ".") == 0 || std::strcmp(e->d_name, "..") == 0) continue;
    any = true;
    break;
  }
  ::closedir(dir);
  return any;
}

std::string FolderOfPath(std::string_view path) {
  const std::size_t p = LastSeparator(path);
  if (p == std::string_view::npos) return {};
  return std::string(path.substr(0, p + 1));
}

std::string StripTrailingBackslash(std::string_view path) {
  if (!path.empty() && IsSeparator(path.back())) path.remove_suffix(1);
  return std::string(path);
}

std::string ParentFolderName(std::string_view path) {
  // A trailing separator does not make an extra component.
  while (path.size() > 1 && IsSeparator(path.back())) path.remove_suffix(1);
  const std::size_t p = LastSeparator(path);
  if (p == std::string_view::npos) return {};
  if (p == 0) return std::string(path.substr(0, 1));  // "/x" -> "/"
  std::string_view parent = path.substr(0, p);
  while (parent.size() > 1 && IsSeparator(parent.back())) parent.remove_suffix(1);
  return std::string(parent);
}

std::string FileName(std::string_view path) {
  const std::size_t p = LastSeparator(path);
  if (p == std::string_view::npos) return std::string(path);
  return std::string(path.substr(p + 1));
}

std::string BaseName(std::string_view path) {
  std::string name = FileName(path);
  const std::size_t dot = name.rfind('.');
  if (dot != std::string::npos) name.resize(dot);
  return name;
}

std::string ExtensionName(std::string_view path) {
  std::string name = FileName(path);
  const std::size_t dot = name.rfind('.');
  if (dot == std::string::npos) return {};
  return name.substr(dot + 1);
}

bool CreateFolderTree(std::string_view path, std::string* error) {
  std::string native = NativePath(path);
  while (native.size() > 1 && native.back() == '/') native.pop_back();
  if (native.empty()) {
    if (error) *error = "empty folder name";
    return false;
  }
  // Walk the components from the top and make each missing one.
  for (std::size_t i = 1; i <= native.size(); ++i) {
    if (i != native.size() && native[i] != '/') continue;
    const std::string part = native.substr(0, i);
    struct stat st {};
    if (::stat(part.c_str(), &st) == 0) {
      if (!S_ISDIR(st.st_mode)) {
        if (error) *error = part + ": " + std::strerror(ENOTDIR);
        return false;
      }
      continue;
    }
    if (::mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) {
      if (error) *error = part + ": " + LastErrorText();
      return false;
    }
  }
  return true;
}

bool DeleteFile(std::string_view path) {
  if (path.empty()) return false;
  const std::string native = NativePath(path);
  return ::unlink(native.c_str()) == 0;
}

bool FileContainsByte(std::string_view path, char c) {
  const std::string native = NativePath(path);
  const int fd = ::open(native.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  std::string buf(kWriteBuffer, '\0');
  bool found = false;
  for (;;) {
    const ssize_t n = ::read(fd, buf.data(), buf.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    if (std::memchr(buf.data(), c, static_cast<std::size_t>(n)) != nullptr) {
      found = true;
      break;
    }
  }
  ::close(fd);
  return found;
}

bool ListFolder(std::string_view path, FolderListing& out) {
  out.files.clear();
  out.folders.clear();
  std::string native = NativePath(path);
  if (native.empty()) return false;
  DIR* dir = ::opendir(native.c_str());
  if (dir == nullptr) return false;
  if (native.back() != '/') native.push_back('/');
  while (dirent* e = ::readdir(dir)) {
    if (std::strcmp(e->d_name, ".") == 0 || std::strcmp(e->d_name, "..") == 0) continue;
    bool is_dir = false;
    if (e->d_type == DT_DIR) {
      is_dir = true;
    } else if (e->d_type == DT_UNKNOWN || e->d_type == DT_LNK) {
      struct stat st {};
      const std::string full = native + e->d_name;
      is_dir = ::stat(full.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
    }
    (is_dir ? out.folders : out.files).emplace_back(e->d_name);
  }
  ::closedir(dir);
  std::sort(out.files.begin(), out.files.end());
  std::sort(out.folders.begin(), out.folders.end());
  return true;
}

// ---- AtomicFile ----

AtomicFile::~AtomicFile() {
  Abort();
}

namespace {

constexpr std::string_view kTempMark = ".kroveld-";

// ".NAME.kroveld-PID-TAIL" beside the native path `target`: hidden, and naming the process that
// writes it, so RemoveStaleTempFiles can tell one left by a process that is gone.
std::string OwnTempName(const std::string& target, std::string_view tail) {
  return FolderOfPath(target) + "." + FileName(target) + std::string(kTempMark) +
         std::to_string(::getpid()) + "-" + std::string(tail);
}

// The process that made a temporary file named ".NAME.kroveld-PID-XXXXXX"; 0 when the name is
// not one of ours.
long TempFileOwner(std::string_view name) {
  if (name.size() < 2 || name.front() != '.') return 0;
  const std::size_t mark = name.rfind(kTempMark);
  if (mark == std::string_view::npos || mark == 0) return 0;
  std::string_view rest = name.substr(mark + kTempMark.size());
  const std::size_t dash = rest.find('-');
  if (dash == 0 || dash == std::string_view::npos || rest.size() - dash - 1 != 6) return 0;
  long pid = 0;
  for (const char c : rest.substr(0, dash)) {
    if (c < '0' || c > '9' || pid > 100000000) return 0;
    pid = pid * 10 + (c - '0');
  }
  return pid;
}

}  // namespace

bool SecondName(const std::string& from, const std::string& to) {
  ::unlink(to.c_str());
  if (::link(from.c_str(), to.c_str()) == 0) return true;
  std::FILE* in = std::fopen(from.c_str(), "rb");
  std::FILE* out = in != nullptr ? std::fopen(to.c_str(), "wb") : nullptr;
  bool made = out != nullptr;
  if (out != nullptr) {
    char buf[1 << 16];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, in)) > 0) {
      made = made && std::fwrite(buf, 1, n, out) == n;
    }
    made = made && !std::ferror(in);
    made = std::fclose(out) == 0 && made;
    if (!made) ::unlink(to.c_str());
  }
  if (in != nullptr) std::fclose(in);
  return made;
}

std::string BackupPathOf(const std::string& target, const BackupPolicy& policy) {
  if (policy.mode == BackupMode::kNone) return {};
  // The highest N of "target.~N~" in the target's folder.
  const std::string native = NativePath(target);
  const std::string folder = FolderOfPath(native);
  const std::string prefix = FileName(native) + ".~";
  long highest = 0;
  if (policy.mode != BackupMode::kSimple) {
    if (DIR* dir = ::opendir(folder.empty() ? "." : folder.c_str())) {
      while (const dirent* entry = ::readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (!name.starts_with(prefix) || !name.ends_with("~") || name.size() < prefix.size() + 2) {
          continue;
        }
        const std::string_view digits = name.substr(prefix.size(), name.size() - prefix.size() - 1);
        long n = 0;
        bool ok = !digits.empty() && digits.size() < 10;
        for (const char c : digits) {
          ok = ok && c >= '0' && c <= '9';
          n = n * 10 + (c - '0');
        }
        if (ok) highest = std::max(highest, n);
      }
      ::closedir(dir);
    }
  }
  const bool numbered =
      policy.mode == BackupMode::kNumbered || (policy.mode == BackupMode::kExisting && highest > 0);
  return numbered ? native + ".~" + std::to_string(highest + 1) + "~" : native + policy.suffix;
}

OutputBackup::OutputBackup(const std::string& target, const BackupPolicy& policy)
    : policy_(policy) {
  if (policy.mode == BackupMode::kNone || !FileExists(target)) return;
  const std::string native = NativePath(target);
  struct stat st {};
  if (::stat(native.c_str(), &st) != 0) return;
  // A second name for the file, hidden and named as our temporary files are (so a run that is
  // killed leaves nothing a later run does not clean up); an earlier backup stays untouched
  // until this one is kept.
  const std::string held = OwnTempName(native, "backup");
  if (!SecondName(native, held)) return;
  target_ = native;
  held_ = held;
  inode_ = st.st_ino;
  device_ = st.st_dev;
}

std::string OutputBackup::Finish(bool keep) {
  if (held_.empty()) return {};
  std::string kept;
  struct stat st {};
  // The target still being the file we started from means nothing replaced it.
  const bool replaced =
      ::stat(target_.c_str(), &st) != 0 || st.st_ino != inode_ || st.st_dev != device_;
  const std::string backup = keep && replaced ? BackupPathOf(target_, policy_) : std::string();
  if (!backup.empty() && ::rename(held_.c_str(), backup.c_str()) == 0) {
    kept = backup;
  } else {
    ::unlink(held_.c_str());
  }
  held_.clear();
  return kept;
}

void RemoveStaleTempFiles(const std::string& folder) {
  // Once per folder and process: a batch of thousands of outputs scans its folder once.
  static std::mutex mutex;
  static std::unordered_set<std::string> done;
  {
    std::lock_guard<std::mutex> lock(mutex);
    if (!done.insert(folder).second) return;
  }
  DIR* dir = ::opendir(folder.empty() ? "." : folder.c_str());
  if (dir == nullptr) return;
  while (const dirent* entry = ::readdir(dir)) {
    const long pid = TempFileOwner(entry->d_name);
    if (pid <= 0 || pid == ::getpid()) continue;
    // kill(pid, 0) fails with ESRCH only when no such process exists.
    if (::kill(static_cast<pid_t>(pid), 0) == 0 || errno != ESRCH) continue;
    ::unlink((folder + entry->d_name).c_str());
  }
  ::closedir(dir);
}

bool AtomicFile::Open(std::string_view target) {
  Abort();
  error_.clear();
  failed_ = false;
  target_ = NativePath(target);
  if (target_.empty()) {
    error_ = "Cannot write file: no file name given";
    return false;
  }
  const std::string folder = FolderOfPath(target_);
  const std::string name = FileName(target_);
  if (name.empty()) {
    error_ = "Cannot write " + target_ + ": " + std::strerror(EISDIR);
    return false;
  }
  RemoveStaleTempFiles(folder);
  temp_ = OwnTempName(target_, "XXXXXX");
  fd_ = ::mkostemp(temp_.data(), O_CLOEXEC);
  if (fd_ < 0) {
    error_ = "Cannot write " + target_ + ": " + LastErrorText();
    temp_.clear();
    return false;
  }
  // Keep the permission bits of a file that is being replaced; a new file gets the usual ones.
  struct stat st {};
  mode_t mode;
  newFile_ = ::stat(target_.c_str(), &st) != 0;
  if (!newFile_) {
    mode = st.st_mode & 07777;
  } else {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    mode = 0666 & ~mask;
  }
  ::fchmod(fd_, mode);
  buffer_.clear();
  buffer_.reserve(kWriteBuffer);
  return true;
}

void AtomicFile::Write(std::string_view data) {
  if (fd_ < 0 || failed_) return;
  if (buffer_.size() + data.size() > kWriteBuffer) {
    Flush();
    if (data.size() >= kWriteBuffer) {
      buffer_.assign(data);
      Flush();
      return;
    }
  }
  buffer_.append(data);
}

void AtomicFile::Flush(bool last) {
  if (fd_ < 0 || failed_) {
    buffer_.clear();
    return;
  }
  if (writer_ == nullptr && !last) writer_ = std::make_unique<BackgroundWriter>(fd_);
  if (writer_ != nullptr) {
    if (!writer_->Submit(buffer_)) StopWriter();
    return;
  }
  if (const int error = WriteAll(fd_, buffer_); error != 0) {
    failed_ = true;
    error_ = "Cannot write " + target_ + ": " + std::strerror(error);
  }
  buffer_.clear();
}

void AtomicFile::StopWriter() {
  if (writer_ == nullptr) return;
  const int error = writer_->Finish();
  writer_.reset();
  if (error != 0 && !failed_) {
    failed_ = true;
    error_ = "Cannot write " + target_ + ": " + std::strerror(error);
  }
}

bool AtomicFile::Commit() {
  if (fd_ < 0) {
    if (error_.empty()) error_ = "Cannot write " + target_ + ": file is not open";
    return false;
  }
  Flush(true);
  StopWriter();
  if (!failed_ && durable_ && ::fsync(fd_) != 0 && errno != EINVAL && errno != EROFS) {
    failed_ = true;
    error_ = "Cannot write " + target_ + ": " + LastErrorText();
  }
  if (::close(fd_) != 0 && !failed_) {
    failed_ = true;
    error_ = "Cannot write " + target_ + ": " + LastErrorText();
  }
  fd_ = -1;
  if (!failed_ && ::rename(temp_.c_str(), target_.c_str()) != 0) {
    failed_ = true;
    error_ = "Cannot write " + target_ + ": " + LastErrorText();
  }
  if (failed_) {
    ::unlink(temp_.c_str());
    temp_.clear();
    return false;
  }
  temp_.clear();
  // A replaced file is safe once its data is: until the folder is on the disk, the old one stands.
  if (durable_ && newFile_) SyncFolderOf(target_);
  return true;
}

void AtomicFile::Abort() {
  StopWriter();
  if (fd_ >= 0) {
    ::close(fd_);
    fd_ = -1;
  }
  if (!temp_.empty()) {
    ::unlink(temp_.c_str());
    temp_.clear();
  }
  buffer_.clear();
}

}  // namespace kroveld

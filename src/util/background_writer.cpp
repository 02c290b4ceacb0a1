// The writer thread: one buffer in flight, written whole (short writes and EINTR retried), then
// handed back empty.
#include "util/background_writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace kroveld {

namespace {

// Written data is handed to the disk in steps of this size.
constexpr std::int64_t kWritebackStep = std::int64_t{8} << 20;

}  // namespace

int WriteAll(int fd, std::string_view data) {
  const char* p = data.data();
  std::size_t left = data.size();
  while (left > 0) {
    const ssize_t n = ::write(fd, p, left);
    if (n < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    p += n;
    left -= static_cast<std::size_t>(n);
  }
  return 0;
}

BackgroundWriter::BackgroundWriter(int fd) : fd_(fd), thread_([this] { Run(); }) {}

BackgroundWriter::~BackgroundWriter() {
  Finish();
}

bool BackgroundWriter::Submit(std::string& buffer) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !busy_; });
  if (error_ != 0 || stopping_) {
    buffer.clear();
    return false;
  }
  slot_.swap(buffer);
  buffer.clear();
  busy_ = true;
  changed_.notify_all();
  return true;
}

int BackgroundWriter::Finish() {
  {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !busy_; });
    stopping_ = true;
    changed_.notify_all();
  }
  if (thread_.joinable()) thread_.join();
  return error_;
}

void BackgroundWriter::Run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return busy_ || stopping_; });
    if (!busy_) return;
    lock.unlock();
    // slot_ is this thread's alone while busy_ is set.
    const int error = WriteAll(fd_, slot_);
    offset_ += static_cast<std::int64_t>(slot_.size());
#if defined(__linux__)
    if (error == 0 && offset_ - unhinted_ >= kWritebackStep) {
      // Start the disk writes now, without waiting for them; a later fsync finds them done.
      ::sync_file_range(fd_, unhinted_, offset_ - unhinted_, SYNC_FILE_RANGE_WRITE);
      unhinted_ = offset_;
    }
#endif
    slot_.clear();
    lock.lock();
    if (error != 0 && error_ == 0) error_ = error;
    busy_ = false;
    changed_.notify_all();
  }
}

}  // namespace kroveld

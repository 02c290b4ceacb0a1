// Writes full buffers to a file descriptor from a second thread, so that the caller fills the
// next buffer while the kernel copies the last one into the page cache, and asks the kernel to
// start putting the written ranges on the disk as they come (the final flush then has little
// left to wait for). Two buffers in all: no allocation once both have grown.
#pragma once
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace kroveld {

// Writes all of `data` to `fd`, short writes and interruptions retried. The errno of a failure, or
// 0.
int WriteAll(int fd, std::string_view data);

class BackgroundWriter {
 public:
  // `fd` stays owned by the caller and must outlive the writer (or Finish()).
  explicit BackgroundWriter(int fd);
  ~BackgroundWriter();
  BackgroundWriter(const BackgroundWriter&) = delete;
  BackgroundWriter& operator=(const BackgroundWriter&) = delete;

  // Hands `buffer` over to be written and gives back an empty one to fill. Waits while the
  // previous buffer is still being written. False once a write has failed (see Finish()).
  bool Submit(std::string& buffer);
  // Waits for everything handed over and stops the thread. Returns the errno of the first
  // failed write, 0 when all was written.
  int Finish();

 private:
  void Run();

  const int fd_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::string slot_;  // being written while busy_
  bool busy_ = false;
  bool stopping_ = false;
  int error_ = 0;
  std::int64_t offset_ = 0;    // bytes written so far (the thread's own)
  std::int64_t unhinted_ = 0;  // start of the range not yet handed to the disk
  std::thread thread_;
};

}  // namespace kroveld

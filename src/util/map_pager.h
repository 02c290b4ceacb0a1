// Keeps the pages of a large mapped file ready a little ahead of where it is read and gives them
// back a little behind, on a thread of its own, so that the reader neither waits for the kernel
// to map pages as it reaches them nor to unmap them as it leaves them. The reader says where it
// is with At(); the pager follows. Memory stays bounded by the two margins.
#pragma once
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>

namespace kroveld {

class MapPager {
 public:
  // How far ahead of the reader pages are made ready, and how far behind they are given back.
  static constexpr std::size_t kAhead = std::size_t{8} << 20;
  static constexpr std::size_t kBehind = std::size_t{1} << 20;
  // When the thread falls this far behind in giving pages back (a busy machine), the reader gives
  // them back itself, so memory stays bounded whatever the scheduler does.
  static constexpr std::size_t kMostBehind = std::size_t{16} << 20;

  // `map` of `size` bytes must stay mapped until the pager is destroyed.
  MapPager(const char* map, std::size_t size);
  ~MapPager();
  MapPager(const MapPager&) = delete;
  MapPager& operator=(const MapPager&) = delete;

  // The reader is at byte `offset` (forward or back).
  void At(std::size_t offset);

 private:
  void Run();
  // Makes the pages of [from, to) present, as reading them would.
  void Populate(std::size_t from, std::size_t to) const;
  // Gives back the pages of [from, to).
  void Release(std::size_t from, std::size_t to) const;
  // Under the lock: claims the pages to give back for the reader at `at`, [from, to); raises
  // released_ to `to`, or lowers it when the reader went back (then from == to).
  void ClaimRelease(std::size_t at, std::size_t& from, std::size_t& to);

  const char* const map_;
  const std::size_t size_;
  std::mutex mutex_;
  std::condition_variable moved_;
  std::size_t at_ = 0;
  bool news_ = true;          // at_ changed since the thread last looked
  bool back_ = false;         // the reader went back before released_ since the thread looked
  std::size_t released_ = 0;  // the pages before this offset are given back (or claimed)
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace kroveld

// The pager's thread: on each move of the reader, give back what lies more than kBehind behind it,
// then make ready what lies up to kAhead in front of it, two megabytes at a time.
#include "util/map_pager.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#ifndef MADV_POPULATE_READ
#define MADV_POPULATE_READ 22  // Linux 5.14
#endif

namespace kroveld {

namespace {

constexpr std::size_t kStep = std::size_t{2} << 20;

std::size_t PageSize() {
  static const std::size_t page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  return page;
}

std::size_t PageFloor(std::size_t offset) {
  return offset - offset % PageSize();
}

}  // namespace

MapPager::MapPager(const char* map, std::size_t size)
    : map_(map), size_(size), thread_([this] { Run(); }) {}

MapPager::~MapPager() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  moved_.notify_one();
  thread_.join();
}

void MapPager::At(std::size_t offset) {
  std::size_t from = 0, to = 0;
  {
    std::lock_guard lock(mutex_);
    at_ = std::min(offset, size_);
    news_ = true;
    if (at_ > released_ + kBehind + kMostBehind) ClaimRelease(at_, from, to);
  }
  moved_.notify_one();
  Release(from, to);
}

void MapPager::ClaimRelease(std::size_t at, std::size_t& from, std::size_t& to) {
  const std::size_t keep = PageFloor(at > kBehind ? at - kBehind : 0);
  from = to = released_;
  if (keep < released_) {
    released_ = keep;
    back_ = true;
  } else {
    to = released_ = keep;
  }
}

void MapPager::Release(std::size_t from, std::size_t to) const {
  if (to > from) ::madvise(const_cast<char*>(map_) + from, to - from, MADV_DONTNEED);
}

void MapPager::Populate(std::size_t from, std::size_t to) const {
  char* const start = const_cast<char*>(map_) + from;
  if (::madvise(start, to - from, MADV_POPULATE_READ) == 0 || errno != EINVAL) return;
  // An older kernel: reading one byte of each page maps it all the same. (Any other failure, a
  // file cut short meanwhile among them, is left to the reader to meet.)
  volatile char sink = 0;
  for (std::size_t at = from; at < to; at += PageSize()) sink = sink + map_[at];
}

void MapPager::Run() {
  std::size_t ready = 0;  // the pages from where the reader is up to this offset are present
  std::unique_lock lock(mutex_);
  for (;;) {
    moved_.wait(lock, [this] { return news_ || stopping_; });
    if (stopping_) return;
    const std::size_t at = at_;
    news_ = false;
    std::size_t from = 0, to = 0;
    ClaimRelease(at, from, to);
    if (back_) ready = 0;  // what lay ahead then may have been given back since
    back_ = false;
    lock.unlock();
    Release(from, to);
    ready = std::max(ready, PageFloor(at));
    for (;;) {
      std::size_t start = 0, end = 0;
      {
        // Where the reader is now: what it has passed meanwhile is not made ready any more.
        std::lock_guard look(mutex_);
        if (stopping_) return;
        ready = std::max({ready, PageFloor(at_), released_});
        end = std::min({size_, at_ + kAhead, ready + kStep});
        start = ready;
      }
      if (start >= end) break;
      Populate(start, end);
      ready = end;
      // Pages the reader gave back while they were being made ready go again.
      std::size_t again = start;
      {
        std::lock_guard look(mutex_);
        again = std::min(end, std::max(start, released_));
      }
      Release(start, again);
    }
    lock.lock();
  }
}

}  // namespace kroveld

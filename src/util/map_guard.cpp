// The SIGBUS handler of the watched mappings, and the table of them it looks in (fixed, so that
// the handler takes no lock and allocates nothing).
#include "util/map_guard.h"

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <mutex>

namespace kroveld::map_guard {

namespace {

constexpr int kPlaces = 64;  // mappings watched at a time: one per open report, at most a few

constexpr std::uintptr_t kTaken = 1;  // a place being filled in

struct Place {
  std::atomic<std::uintptr_t> begin{0};  // 0: free
  std::atomic<std::size_t> size{0};
  std::atomic<bool> cut{false};
};

Place places[kPlaces];
std::uintptr_t pageSize = 4096;
struct sigaction before {};
std::once_flag installed;

void OnBus(int signal, siginfo_t* info, void* context) {
  const auto at = reinterpret_cast<std::uintptr_t>(info->si_addr);
  for (Place& place : places) {
    const std::uintptr_t begin = place.begin.load(std::memory_order_acquire);
    const std::size_t size = place.size.load(std::memory_order_acquire);
    if (begin <= kTaken || at < begin || at - begin >= size) continue;
    // Zeros from the page that is gone to the end of the mapping: the file was cut there, so
    // every page after it is gone too.
    const std::uintptr_t page = at & ~(pageSize - 1);
    const std::uintptr_t end = (begin + size + pageSize - 1) & ~(pageSize - 1);
    if (::mmap(reinterpret_cast<void*>(page), end - page, PROT_READ,
               MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) == MAP_FAILED) {
      break;
    }
    place.cut.store(true, std::memory_order_release);
    return;
  }
  // Not a watched mapping: the handler that was there before, or (by default) the faulting
  // access again without this one, which ends the process as it would have.
  if ((before.sa_flags & SA_SIGINFO) != 0 && before.sa_sigaction != nullptr) {
    before.sa_sigaction(signal, info, context);
  } else if (before.sa_handler != SIG_DFL && before.sa_handler != SIG_IGN) {
    before.sa_handler(signal);
  } else {
    ::sigaction(SIGBUS, &before, nullptr);
  }
}

void Install() {
  const long page = ::sysconf(_SC_PAGESIZE);
  if (page > 0) pageSize = static_cast<std::uintptr_t>(page);
  struct sigaction action {};
  action.sa_sigaction = OnBus;
  action.sa_flags = SA_SIGINFO;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGBUS, &action, &before);
}

}  // namespace

int Watch(const void* begin, std::size_t size) {
  std::call_once(installed, Install);
  for (int i = 0; i < kPlaces; ++i) {
    Place& place = places[i];
    // Taken first, then filled in: the handler reads a place only once its begin is set.
    std::uintptr_t free = 0;
    if (!place.begin.compare_exchange_strong(free, kTaken, std::memory_order_acq_rel)) continue;
    place.size.store(size, std::memory_order_relaxed);
    place.cut.store(false, std::memory_order_relaxed);
    place.begin.store(reinterpret_cast<std::uintptr_t>(begin), std::memory_order_release);
    return i + 1;
  }
  return 0;
}

void Forget(int ticket) {
  if (ticket < 1 || ticket > kPlaces) return;
  places[ticket - 1].begin.store(0, std::memory_order_release);
}

bool Cut(int ticket) {
  if (ticket < 1 || ticket > kPlaces) return false;
  return places[ticket - 1].cut.load(std::memory_order_acquire);
}

}  // namespace kroveld::map_guard

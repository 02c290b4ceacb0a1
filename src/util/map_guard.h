// Keeps a mapped report that another program cuts short while it is read from ending the process.
// Reading a page of a file mapping that lies beyond the file's new end raises SIGBUS; for the
// mappings watched here the handler puts zeros over the rest of the mapping instead and marks it,
// so that the reader goes on over zero bytes and its owner can report the file as cut short.
// A SIGBUS anywhere else goes to the handler that was there before (by default the process ends).
#pragma once

#include <cstddef>

namespace kroveld::map_guard {

// Watches the mapping [begin, begin + size). Returns its ticket, or 0 when every place is taken
// (the mapping is then not watched).
int Watch(const void* begin, std::size_t size);
// Stops watching; to be called before the mapping goes.
void Forget(int ticket);
// Whether a read of the watched mapping found its file cut short. False for ticket 0.
bool Cut(int ticket);

}  // namespace kroveld::map_guard

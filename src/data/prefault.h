#pragma once
// Large buffers filled at once (a curve file's bytes and its arrays, megabytes each) are
// mapped in one call before they are written, instead of one page fault at a time: on a
// virtual machine each fault costs microseconds, and a review of five curves takes thousands.
#include <cstddef>
#include <vector>

namespace zel {

// Asks the system to map [data, data + bytes) now; a system that can not leaves it to the
// faults as before.
void prefault(void* data, size_t bytes);

template <class T>
void prefault_capacity(std::vector<T>& v) {
    prefault(v.data(), v.capacity() * sizeof(T));
}

}  // namespace zel

#include "data/prefault.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23
#endif

namespace zel {

void prefault(void* data, size_t bytes) {
    static const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto begin = (reinterpret_cast<uintptr_t>(data) + page - 1) & ~(page - 1);
    const auto end = (reinterpret_cast<uintptr_t>(data) + bytes) & ~(page - 1);
    // Below a few pages the faults cost less than the call.
    if (end <= begin || end - begin < 16 * page) return;
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
}

}  // namespace zel

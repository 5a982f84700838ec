// SPDX-License-Identifier: MIT
#include "Allocations.h"

#include <cerrno>
#include <cstdlib>

// The C library's own names for its heap. Functions of these names in a program are called instead of those
// of the C library, also from its libraries; all of the family stand here, so that no block changes hands.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

thread_local std::uint64_t allocated = 0;
thread_local std::uint64_t allocatedBytes = 0;

void Count(std::size_t size)
{
    ++allocated;
    allocatedBytes += size;
}

} // namespace

zviptv::test::Allocations zviptv::test::Allocations::SoFar()
{
    return {allocated, allocatedBytes};
}

#define ZVIPTV_HEAP extern "C" __attribute__((visibility("default")))

ZVIPTV_HEAP void* malloc(std::size_t size)
{
    Count(size);
    return __libc_malloc(size);
}

ZVIPTV_HEAP void* calloc(std::size_t nmemb, std::size_t size)
{
    Count(nmemb * size);
    return __libc_calloc(nmemb, size);
}

ZVIPTV_HEAP void* realloc(void* ptr, std::size_t size)
{
    Count(size);
    return __libc_realloc(ptr, size);
}

ZVIPTV_HEAP void* memalign(std::size_t alignment, std::size_t size)
{
    Count(size);
    return __libc_memalign(alignment, size);
}

ZVIPTV_HEAP void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    Count(size);
    return __libc_memalign(alignment, size);
}

ZVIPTV_HEAP int posix_memalign(void** memptr, std::size_t alignment, std::size_t size)
{
    Count(size);
    *memptr = __libc_memalign(alignment, size);
    return *memptr == nullptr ? ENOMEM : 0;
}

ZVIPTV_HEAP void free(void* ptr)
{
    __libc_free(ptr);
}

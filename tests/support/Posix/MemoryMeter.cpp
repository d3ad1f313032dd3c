#include "MemoryMeter.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>

namespace {

// Plain numbers without constructors: memory is allocated before any of those run.
std::atomic<int64_t> sLive{0}, sPeak{0};

void count(int64_t bytes) {
    const int64_t live = sLive.fetch_add(bytes, std::memory_order_relaxed) + bytes;
    int64_t peak = sPeak.load(std::memory_order_relaxed);
    while (live > peak && !sPeak.compare_exchange_weak(peak, live, std::memory_order_relaxed)) {
    }
}

}  // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

extern "C" {
int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, size_t), void (*)(const volatile void*));
size_t __sanitizer_get_allocated_size(const volatile void*);
}

namespace {
void onMalloc(const volatile void*, size_t size) { count(static_cast<int64_t>(size)); }
void onFree(const volatile void* block) {
    if (block != nullptr) count(-static_cast<int64_t>(__sanitizer_get_allocated_size(block)));
}
const int sHooks = __sanitizer_install_malloc_and_free_hooks(onMalloc, onFree);
}  // namespace

#else

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
void __libc_free(void*);

static void* counted(void* block) {
    if (block != nullptr) count(static_cast<int64_t>(malloc_usable_size(block)));
    return block;
}
void* malloc(size_t size) { return counted(__libc_malloc(size)); }
void* calloc(size_t count, size_t size) { return counted(__libc_calloc(count, size)); }
void* memalign(size_t alignment, size_t size) { return counted(__libc_memalign(alignment, size)); }
void* aligned_alloc(size_t alignment, size_t size) { return counted(__libc_memalign(alignment, size)); }
int posix_memalign(void** block, size_t alignment, size_t size) {
    *block = counted(__libc_memalign(alignment, size));
    return *block != nullptr ? 0 : ENOMEM;
}
void* realloc(void* block, size_t size) {
    const auto before = static_cast<int64_t>(malloc_usable_size(block));
    void* moved = __libc_realloc(block, size);
    if (moved == nullptr && size != 0) return nullptr;
    count(static_cast<int64_t>(malloc_usable_size(moved)) - before);
    return moved;
}
void free(void* block) {
    if (block != nullptr) count(-static_cast<int64_t>(malloc_usable_size(block)));
    __libc_free(block);
}
}

#endif

support::MemoryMeter::MemoryMeter() : mBegin(sLive) { sPeak = mBegin; }
uint64_t support::MemoryMeter::peak() const { return static_cast<uint64_t>(std::max<int64_t>(0, sPeak - mBegin)); }

#include "Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "BlockSize.h"

namespace {

std::atomic<size_t> sHeld{0}, sPeak{0};

void* allocate(size_t size) {
    void* const block = std::malloc(size);
    if (!block) return nullptr;
    const size_t held = sHeld += support::sizeOfBlock(block);
    for (size_t peak = sPeak; held > peak && !sPeak.compare_exchange_weak(peak, held);) {
    }
    return block;
}

void release(void* block) {
    if (!block) return;
    sHeld -= support::sizeOfBlock(block);
    std::free(block);
}

void* allocateOrThrow(size_t size) {
    if (void* const block = allocate(size)) return block;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(size_t size) { return allocateOrThrow(size); }
void* operator new[](size_t size) { return allocateOrThrow(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, size_t) noexcept { release(block); }
void operator delete[](void* block, size_t) noexcept { release(block); }

namespace support {

AllocationMeter::AllocationMeter() : mBegin(sHeld) { sPeak = mBegin; }

size_t AllocationMeter::peak() const { return sPeak - mBegin; }

size_t AllocationMeter::held() const { return sHeld > mBegin ? sHeld - mBegin : 0; }

}  // namespace support

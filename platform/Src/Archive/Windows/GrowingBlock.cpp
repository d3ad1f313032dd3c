#include "Archive/GrowingBlock.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>

namespace Archive {

namespace {

// A large block of the heap is copied when it grows, so that one and a half or two of them are held at once. Beyond
// this size a block has a range of addresses to itself, of which no more is backed by memory than it asks for.
constexpr size_t kOfTheHeap = size_t{1} << 20;

/// The longest item, with room for the program in front of an uninstaller's data.
constexpr size_t kReach = size_t{5} << 30;

bool hasRange(size_t capacity) { return capacity > kOfTheHeap; }

bool commit(unsigned char* begin, size_t length) {
    return ::VirtualAlloc(begin, length, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

/// From the heap to a range of its own.
unsigned char* moveToRange(unsigned char* block, size_t capacity, size_t wanted) {
    auto* const range = static_cast<unsigned char*>(::VirtualAlloc(nullptr, kReach, MEM_RESERVE, PAGE_NOACCESS));
    if (range == nullptr) return nullptr;
    if (!commit(range, wanted)) {
        ::VirtualFree(range, 0, MEM_RELEASE);
        return nullptr;
    }
    if (capacity != 0) std::memcpy(range, block, capacity);
    freeBlock(block, capacity);
    return range;
}

}  // namespace

unsigned char* growBlock(unsigned char* block, size_t capacity, size_t wanted) {
    if (!hasRange(wanted)) return static_cast<unsigned char*>(std::realloc(block, wanted));
    if (wanted > kReach) return nullptr;
    if (!hasRange(capacity)) return moveToRange(block, capacity, wanted);
    return commit(block + capacity, wanted - capacity) ? block : nullptr;
}

void freeBlock(unsigned char* block, size_t capacity) {
    if (hasRange(capacity)) {
        ::VirtualFree(block, 0, MEM_RELEASE);
    } else {
        std::free(block);
    }
}

}  // namespace Archive

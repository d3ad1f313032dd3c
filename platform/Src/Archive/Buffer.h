// Memory that grows while an item is decompressed into it.
#pragma once

#include <cstring>
#include <new>
#include <utility>

#include "Bytes.h"
#include "GrowingBlock.h"

namespace Archive {

/// Unlike a vector it neither clears what it reserves nor holds it twice when it grows.
class Buffer {
public:
    Buffer() = default;
    ~Buffer() { freeBlock(mData, mCapacity); }
    Buffer(Buffer&& other) noexcept { swap(other); }
    Buffer& operator=(Buffer&& other) noexcept {
        Buffer taken(std::move(other));
        swap(taken);
        return *this;
    }

    unsigned char* data() { return mData; }
    size_t size() const { return mSize; }
    size_t capacity() const { return mCapacity; }
    ByteView view() const { return {mData, mSize}; }

    void clear() { mSize = 0; }
    void shrink(size_t size) { mSize = size; }
    /// Throws std::bad_alloc.
    void reserve(size_t capacity) {
        if (capacity <= mCapacity) return;
        unsigned char* const grown = growBlock(mData, mCapacity, capacity);
        if (grown == nullptr) throw std::bad_alloc();
        mData = grown;
        mCapacity = capacity;
    }
    /// Takes over bytes that were written behind the end, within the capacity.
    void grew(size_t bytes) { mSize += bytes; }
    /// Within the capacity.
    void append(ByteView bytes) {
        if (!bytes.empty()) std::memcpy(mData + mSize, bytes.data(), bytes.size());
        mSize += bytes.size();
    }

private:
    void swap(Buffer& other) {
        std::swap(mData, other.mData);
        std::swap(mSize, other.mSize);
        std::swap(mCapacity, other.mCapacity);
    }
    unsigned char* mData = nullptr;
    size_t mSize = 0;
    size_t mCapacity = 0;
};

}  // namespace Archive

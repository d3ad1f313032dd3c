// Memory that grows while an item is decompressed into it.
#pragma once

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "Bytes.h"

namespace Archive {

/// Unlike a vector it neither clears what it reserves nor copies where the system can move pages.
class Buffer {
public:
    Buffer() = default;
    ~Buffer() { std::free(mData); }
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
        void* moved = std::realloc(mData, capacity);
        if (moved == nullptr) throw std::bad_alloc();
        mData = static_cast<unsigned char*>(moved);
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

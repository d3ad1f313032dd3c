#include "MemoryMeter.h"

#include <malloc.h>
#include <windows.h>

#include <algorithm>
#include <atomic>

#include "ImportHook.h"

namespace {

// Plain numbers without constructors: memory is allocated before any of those run.
std::atomic<int64_t> sLive{0}, sPeak{0};

void count(int64_t bytes) {
    const int64_t live = sLive.fetch_add(bytes, std::memory_order_relaxed) + bytes;
    int64_t peak = sPeak.load(std::memory_order_relaxed);
    while (live > peak && !sPeak.compare_exchange_weak(peak, live, std::memory_order_relaxed)) {
    }
}

/// A function of the C library that this program's own takes the place of; looked up without allocating.
template <typename Function>
class Original {
public:
    explicit constexpr Original(const char* name) : mName(name) {}
    template <typename... Arguments>
    auto operator()(Arguments... arguments) {
        Function function = mFunction.load(std::memory_order_relaxed);
        if (function == nullptr) {
            const HMODULE library = ::GetModuleHandleW(L"msvcrt.dll");
            function = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(library, mName)));
            mFunction.store(function, std::memory_order_relaxed);
        }
        return function(arguments...);
    }

private:
    const char* const mName;
    std::atomic<Function> mFunction{nullptr};
};

constinit Original<void*(__cdecl*)(size_t)> sMalloc("malloc");
constinit Original<void*(__cdecl*)(size_t, size_t)> sCalloc("calloc");
constinit Original<void*(__cdecl*)(void*, size_t)> sRealloc("realloc");
constinit Original<void(__cdecl*)(void*)> sFree("free");

int64_t sizeOf(void* block) { return static_cast<int64_t>(::_msize(block)); }

void* counted(void* block) {
    if (block != nullptr) count(sizeOf(block));
    return block;
}

/// Bytes that are backed by memory in the range that was reserved together with this address.
int64_t committedAround(void* address) {
    MEMORY_BASIC_INFORMATION part{};
    if (::VirtualQuery(address, &part, sizeof part) == 0 || part.State == MEM_FREE) return 0;
    const void* const range = part.AllocationBase;
    int64_t bytes = 0;
    for (auto* at = static_cast<char*>(part.AllocationBase);
         ::VirtualQuery(at, &part, sizeof part) != 0 && part.AllocationBase == range; at += part.RegionSize) {
        if (part.State == MEM_COMMIT) bytes += static_cast<int64_t>(part.RegionSize);
    }
    return bytes;
}

decltype(&::VirtualAlloc) sVirtualAlloc = nullptr;
decltype(&::VirtualFree) sVirtualFree = nullptr;

LPVOID WINAPI countedVirtualAlloc(LPVOID address, SIZE_T size, DWORD kind, DWORD protection) {
    const int64_t before = address != nullptr ? committedAround(address) : 0;
    void* const given = sVirtualAlloc(address, size, kind, protection);
    if (given != nullptr) count(committedAround(given) - before);
    return given;
}

BOOL WINAPI countedVirtualFree(LPVOID address, SIZE_T size, DWORD kind) {
    const int64_t before = committedAround(address);
    const BOOL done = sVirtualFree(address, size, kind);
    if (done) count((kind == MEM_RELEASE ? 0 : committedAround(address)) - before);
    return done;
}

}  // namespace

// Pages are asked for without the C library.
extern "C" {
extern decltype(&::VirtualAlloc) __imp_VirtualAlloc;
extern decltype(&::VirtualFree) __imp_VirtualFree;
}

namespace {

const bool sPagesCount = [] {
    sVirtualAlloc = __imp_VirtualAlloc;
    sVirtualFree = __imp_VirtualFree;
    new support::ImportHook<decltype(&::VirtualAlloc)>(&__imp_VirtualAlloc, &countedVirtualAlloc);
    new support::ImportHook<decltype(&::VirtualFree)>(&__imp_VirtualFree, &countedVirtualFree);
    return true;
}();

}  // namespace

// What every part of the program calls: all of it is linked statically, apart from the C library.
extern "C" {
void* malloc(size_t size) { return counted(sMalloc(size)); }
void* calloc(size_t number, size_t size) { return counted(sCalloc(number, size)); }
void* realloc(void* block, size_t size) {
    const int64_t before = block != nullptr ? sizeOf(block) : 0;
    void* const moved = sRealloc(block, size);
    if (moved == nullptr && size != 0) return nullptr;
    count((moved != nullptr ? sizeOf(moved) : 0) - before);
    return moved;
}
void free(void* block) {
    if (block != nullptr) count(-sizeOf(block));
    sFree(block);
}
}

support::MemoryMeter::MemoryMeter() : mBegin(sLive) { sPeak = mBegin; }
uint64_t support::MemoryMeter::peak() const { return static_cast<uint64_t>(std::max<int64_t>(0, sPeak - mBegin)); }

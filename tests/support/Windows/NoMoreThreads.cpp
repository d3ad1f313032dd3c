#include "NoMoreThreads.h"

#include <process.h>

#include <cerrno>

#include "ImportHook.h"

extern "C" {
using BeginThread = uintptr_t(__cdecl*)(void*, unsigned, unsigned(__stdcall*)(void*), void*, unsigned, unsigned*);
extern BeginThread __imp__beginthreadex;
}

namespace support {
namespace {

uintptr_t __cdecl refuse(void*, unsigned, unsigned(__stdcall*)(void*), void*, unsigned, unsigned*) {
    errno = EAGAIN;
    return 0;
}

}  // namespace

struct NoMoreThreads::Refusal {
    ImportHook<BeginThread> hook{&__imp__beginthreadex, &refuse};
};

NoMoreThreads::NoMoreThreads() : mRefusal(std::make_unique<Refusal>()) {}
NoMoreThreads::~NoMoreThreads() = default;

}  // namespace support

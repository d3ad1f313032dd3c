#include "Base/Windows/ThreadLocals.h"

// Where the compiler emulates thread-local objects, a thread's end gives back their memory by one key of the thread
// library and calls their destructors by another, in the order in which the two keys were made. The first object makes
// them the wrong way round, so that its destructor would find its memory gone. Asking for a destructor before there is
// any object makes them the right way.
#ifdef __MINGW32__

extern "C" int __cxa_thread_atexit(void (*)(void*), void*, void*) noexcept;

namespace {

void destroyNothing(void*) {}

struct DestructorsFirst {
    DestructorsFirst() { __cxa_thread_atexit(&destroyNothing, nullptr, nullptr); }
};

[[gnu::init_priority(101)]] const DestructorsFirst sDestructorsFirst;  // before every other object of the program

}  // namespace

#endif

void Public::Base::keepThreadLocalsInOrder() {}

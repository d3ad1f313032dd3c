// The end of a thread, for the objects that each thread has of its own.
#include <windows.h>

#include <malloc.h>

#include "Public/Base/ErrorInfo.h"

namespace {

std::atomic<int> sEnded{0};
std::atomic<int> sEndedTooLate{0};

/// Where the compiler emulates thread-local objects, the address of their block of the heap lies in front of them.
struct OfAThread {
    ~OfAThread() {
        ++sEnded;
        void* const block = reinterpret_cast<void**>(this)[-1];
        const auto heap = reinterpret_cast<HANDLE>(::_get_heap_handle());
        if (!::HeapValidate(heap, 0, block)) ++sEndedTooLate;
    }
    void* used = nullptr;
};

thread_local OfAThread tObject;

}  // namespace

TEST(ThreadLocals, EndBeforeTheMemoryThatTheyLieIn) {
    EXPECT_NE(Public::Base::ErrorInfo::getLastError().errorCode(), 1);  // what brings the right order along
    for (int i = 0; i < 10; ++i) {
        std::thread([] { tObject.used = &tObject; }).join();
    }
    EXPECT_EQ(sEnded, 10);
    EXPECT_EQ(sEndedTooLate, 0);
}

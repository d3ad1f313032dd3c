// The end of a thread, for the objects that each thread has of its own.
#include <cstdlib>

#include "Public/Base/ErrorInfo.h"

namespace {

std::atomic<int> sEnded{0};
std::atomic<int> sEndedTooLate{0};

/// Finds out at its end whether others are given the memory that it lies in.
struct OfAThread {
    ~OfAThread() {
        ++sEnded;
        std::vector<void*> taken(100);
        for (void*& block : taken) block = std::malloc(sizeof *this);
        for (void* const block : taken) {
            const auto* const begin = static_cast<const char*>(block);
            if (begin < bytes + sizeof bytes && bytes < begin + sizeof *this) ++sEndedTooLate;
            std::free(block);
        }
    }
    char bytes[1000] = {};
};

thread_local OfAThread tObject;

}  // namespace

TEST(ThreadLocals, EndBeforeTheMemoryThatTheyLieIn) {
    Public::Base::ErrorInfo::setLastSystemError(1);  // part of every program, with what sets the order right
    for (int i = 0; i < 10; ++i) {
        std::thread([] { tObject.bytes[0] = 'x'; }).join();
    }
    EXPECT_EQ(sEnded, 10);
    EXPECT_EQ(sEndedTooLate, 0);
}

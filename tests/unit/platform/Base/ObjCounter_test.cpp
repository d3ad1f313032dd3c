#include "Public/Base/ObjCounter.h"

using Public::Base::ObjCounter;

namespace {

TEST(ObjCounter, CountsWhatLives) {
    EXPECT_EQ(ObjCounter::count("Counted", 1), 0);
    {
        const ObjCounter first("Counted", 1);
        const ObjCounter copy(first);
        EXPECT_EQ(ObjCounter::count("Counted", 1), 2);
    }
    EXPECT_EQ(ObjCounter::count("Counted", 1), 0);
}

TEST(ObjCounter, KeepsClassesApart) {
    const ObjCounter one("Counted", 2);
    EXPECT_EQ(ObjCounter::count("Counted", 3), 0);
    EXPECT_EQ(ObjCounter::count("Other", 2), 0);
}

TEST(ObjCounter, AssignmentChangesNoCount) {
    ObjCounter a("Assigned", 1);
    const ObjCounter b("Assigned", 2);
    a = b;
    EXPECT_EQ(ObjCounter::count("Assigned", 1), 1);
    EXPECT_EQ(ObjCounter::count("Assigned", 2), 1);
}

TEST(ObjCounter, BearsANullName) {
    const ObjCounter counter(nullptr, 1);
    EXPECT_EQ(ObjCounter::count(nullptr, 1), 1);
}

TEST(ObjCounter, NamesAreComparedAsText) {
    const std::string name = "ByText", same = "ByText";
    const ObjCounter counter(name.c_str(), 1);
    EXPECT_EQ(ObjCounter::count(same.c_str(), 1), 1);
}

TEST(ObjCounter, CountsOnManyThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int k = 0; k < 500; ++k) {
                const ObjCounter first("Threads", 1);
                const ObjCounter second(first);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(ObjCounter::count("Threads", 1), 0);
}

}  // namespace

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

}  // namespace

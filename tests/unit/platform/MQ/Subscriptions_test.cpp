#include "MQ/Subscriptions.h"

namespace {

using Tarnwick::MQ::RequestHandler;
using Tarnwick::MQ::Subscriptions;

int sOne;
int sTwo;

TEST(Subscriptions, KeepTheOrderOfATopic) {
    Subscriptions table;
    table.add("topic", &sOne, RequestHandler());
    table.add("other", &sOne, RequestHandler());
    table.add("topic", &sTwo, RequestHandler());
    const auto entries = table.of("topic");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0]->owner, &sOne);
    EXPECT_EQ(entries[1]->owner, &sTwo);
    EXPECT_TRUE(table.of("nobody's").empty());
}

TEST(Subscriptions, LetNothingBeginAfterItsOwnerWasRemoved) {
    Subscriptions table;
    table.add("topic", &sOne, RequestHandler());
    table.add("topic", &sTwo, RequestHandler());
    const auto entries = table.of("topic");
    EXPECT_TRUE(table.begin(entries[0]));
    table.remove(&sOne);
    EXPECT_FALSE(table.begin(entries[0]));
    EXPECT_TRUE(table.begin(entries[1]));
    table.remove(&sOne);
    EXPECT_EQ(table.of("topic").size(), 1u);
}

TEST(Subscriptions, LetNothingBeginAfterTheEnd) {
    Subscriptions table;
    table.add("topic", &sOne, RequestHandler());
    const auto entries = table.of("topic");
    table.close();
    EXPECT_FALSE(table.begin(entries[0]));
    table.add("topic", &sOne, RequestHandler());
    EXPECT_TRUE(table.of("topic").empty());
}

}  // namespace

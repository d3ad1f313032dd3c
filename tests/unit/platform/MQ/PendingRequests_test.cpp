#include "MQ/PendingRequests.h"

namespace {

using Tarnwick::MQ::PendingRequests;

TEST(PendingRequests, GiveAnEntryOutOnce) {
    PendingRequests pending;
    const auto entry = pending.add("peer", "topic", {});
    ASSERT_TRUE(entry);
    EXPECT_NE(entry->id, 0u);
    EXPECT_EQ(pending.take(entry->id)->topic, "topic");
    EXPECT_FALSE(pending.take(entry->id));
    EXPECT_FALSE(pending.takeAnswered(entry->id, entry->token));
}

TEST(PendingRequests, GiveAnAnsweredEntryOutForItsTokenOnly) {
    PendingRequests pending;
    const auto entry = pending.add("peer", "topic", {});
    EXPECT_FALSE(pending.takeAnswered(entry->id, entry->token ^ 1));
    EXPECT_FALSE(pending.takeAnswered(entry->id + 1, entry->token));
    EXPECT_TRUE(pending.takeAnswered(entry->id, entry->token));
}

TEST(PendingRequests, GiveOutWhatWentToAPeer) {
    PendingRequests pending;
    const auto kept = pending.add("other", "topic", {});
    pending.add("peer", "1", {});
    pending.add("peer", "2", {});
    EXPECT_EQ(pending.takeSentTo("peer").size(), 2u);
    EXPECT_TRUE(pending.takeSentTo("peer").empty());
    EXPECT_TRUE(pending.take(kept->id));
}

TEST(PendingRequests, NoteADeadlineWhileTheEntryWaits) {
    PendingRequests pending;
    const auto entry = pending.add("peer", "topic", {});
    EXPECT_TRUE(pending.setDeadline(entry->id, {5, 6}));
    EXPECT_EQ(pending.take(entry->id)->deadline, std::make_optional(Tarnwick::MQ::Deadlines::Key(5, 6)));
    EXPECT_FALSE(pending.setDeadline(entry->id, {5, 6}));
}

TEST(PendingRequests, TakeNothingAfterTheEnd) {
    PendingRequests pending;
    pending.add("peer", "topic", {});
    EXPECT_EQ(pending.close().size(), 1u);
    EXPECT_TRUE(pending.close().empty());
    EXPECT_FALSE(pending.add("peer", "topic", {}));
}

TEST(PendingRequests, DrawDifferentTokens) {
    PendingRequests pending;
    std::set<uint64_t> tokens;
    for (int i = 0; i < 1000; ++i) tokens.insert(pending.add("peer", "topic", {})->token);
    EXPECT_EQ(tokens.size(), 1000u);
}

}  // namespace

#include "Public/Base/Guid.h"

using Public::Base::Guid;

namespace {

TEST(Guid, HasTheFormOfAVersion4Identifier) {
    const std::string form = "xxxxxxxx-xxxx-4xxx-vxxx-xxxxxxxxxxxx";
    const std::string text = Guid::createGuid().getStringStream();
    ASSERT_EQ(text.size(), form.size());
    for (size_t i = 0; i < form.size(); ++i) {
        const std::string allowed = form[i] == 'x' ? "0123456789abcdef" : form[i] == 'v' ? "89ab" : form.substr(i, 1);
        EXPECT_NE(allowed.find(text[i]), std::string::npos) << text << " at " << i;
    }
}

TEST(Guid, NoTwoAreAlike) {
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) seen.insert(Guid::createGuid().getStringStream());
    EXPECT_EQ(seen.size(), 1000U);
}

TEST(Guid, DefaultIsAllZeros) { EXPECT_EQ(Guid().getStringStream(), "00000000-0000-0000-0000-000000000000"); }

TEST(Guid, CopiesHaveTheSameText) {
    const Guid first = Guid::createGuid();
    const Guid second = first;
    EXPECT_EQ(first.getStringStream(), second.getStringStream());
}

TEST(Guid, EveryFreeDigitVaries) {
    std::vector<std::set<char>> seen(36);
    for (int i = 0; i < 200; ++i) {
        const std::string text = Guid::createGuid().getStringStream();
        for (size_t k = 0; k < text.size(); ++k) seen[k].insert(text[k]);
    }
    for (const size_t place : {0U, 7U, 9U, 15U, 17U, 19U, 20U, 24U, 35U}) EXPECT_GT(seen[place].size(), 3U) << place;
    EXPECT_EQ(seen[14].size(), 1U);  // the version
}

TEST(Guid, ThreadsMakeDifferentOnes) {
    std::mutex mutex;
    std::set<std::string> seen;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 100; ++k) {
                const std::string text = Guid::createGuid().getStringStream();
                std::lock_guard lock(mutex);
                seen.insert(text);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(seen.size(), 400U);
}

}  // namespace

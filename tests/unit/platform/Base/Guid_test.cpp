#include "Public/Base/Guid.h"

#include <regex>

using Public::Base::Guid;

namespace {

TEST(Guid, HasTheFormOfAVersion4Identifier) {
    const std::regex form("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
    EXPECT_TRUE(std::regex_match(Guid::createGuid().getStringStream(), form));
}

TEST(Guid, NoTwoAreAlike) {
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) seen.insert(Guid::createGuid().getStringStream());
    EXPECT_EQ(seen.size(), 1000U);
}

}  // namespace

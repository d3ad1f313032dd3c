#include "Public/Base/URL.h"

namespace {

TEST(URL, KeepsItsTextAsGiven) {
    EXPECT_EQ(Public::Base::URL("http://h/a b?c=%20", false).text(), "http://h/a b?c=%20");
}

TEST(URL, KeepsAnEmptyText) { EXPECT_EQ(Public::Base::URL("", false).text(), ""); }

}  // namespace

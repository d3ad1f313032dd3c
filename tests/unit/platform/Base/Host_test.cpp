#include "Public/Base/Host.h"

namespace {

TEST(Host, TellsTheWordSizeOfThisProgram) {
    EXPECT_EQ(Public::Base::Host::getSoftwareSystemBits(), static_cast<int>(sizeof(void*) * 8));
}

}  // namespace

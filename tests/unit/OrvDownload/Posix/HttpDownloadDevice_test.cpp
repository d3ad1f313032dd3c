// A device where the package is to be: its link goes, never what it leads to.
#include "HttpFailureFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::HttpTransferFailure;

TEST_F(HttpTransferFailure, CancelAfterAWriteFaultRemovesTheNameOnly) {
    std::filesystem::create_directories(mStore.path("cloud"));
    std::filesystem::create_symlink("/dev/full", mPath);
    prepareBody(text(4000));
    run();
    mTransfer->cancel();
    EXPECT_FALSE(std::filesystem::is_symlink(mPath));
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
    EXPECT_EQ(error(), -10028);
}

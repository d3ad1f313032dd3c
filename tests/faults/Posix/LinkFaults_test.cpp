// What lies behind a link to a file, when something fails on the way.
#include "FileFaults.h"
#include "InstallerFaults.h"

using namespace faults;

namespace {

class SaveThroughALink : public Save {
public:
    void putOld() override {
        support::writeText(at("d/file"), kOld);
        std::filesystem::create_symlink("d/file", at("link"));
    }
    ErrorInfo run() override {
        return resultOf(Public::Base::File::save(at("link"), Public::Base::SharedBuffer(kNew)));
    }
    void checkReached() override {
        EXPECT_TRUE(equal(treeOf(root()), (Tree{{"source", kNew}, {"d/file", kNew}, {"link", "-> d/file"}})));
    }
};

/// Where a link lies in a file's place, nothing is ever written through it.
class UnpackOverALink : public Unpack {
public:
    void prepare() override {
        Unpack::prepare();
        support::writeText(at("elsewhere"), "not ours");
        std::filesystem::remove(at("app/client.exe"));
        std::filesystem::create_symlink("../elsewhere", at("app/client.exe"));
    }
    void check(const ErrorInfo&) override { EXPECT_EQ(support::readText(at("elsewhere")), "not ours"); }
    void settle(const ErrorInfo&) override {}
    void checkReached() override {
        Unpack::checkReached();
        EXPECT_EQ(support::readText(at("elsewhere")), "not ours");
    }
};

}  // namespace

TEST_P(FileSave, ThroughALinkKeepsTheLink) {
    exhaust([] { return std::make_unique<SaveThroughALink>(); });
}
TEST_P(Unpacking, WritesThroughNoLinkThatItCannotRemove) {
    exhaust([] { return std::make_unique<UnpackOverALink>(); });
}

// The main of every test program: fails a test that skips itself or makes no assertion.
#include "Asserting.h"

#include <atomic>
#include <string>

#include "EndProcess.h"
#include "OtherProcess.h"

namespace {
std::atomic<unsigned long> sAssertions{0};

class AssertingListener : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { sAssertions = 0; }
    void OnTestEnd(const testing::TestInfo& info) override {
        if (info.result()->Skipped())
            ADD_FAILURE() << info.test_suite_name() << "." << info.name() << " skipped itself";
        if (sAssertions == 0) ADD_FAILURE() << info.test_suite_name() << "." << info.name() << " asserted nothing";
    }
};
}  // namespace

int support::countAssertion() {
    ++sAssertions;
    return 0;
}

unsigned long support::countedAssertions() { return sAssertions; }

int main(int argc, char** argv) {
    if (argc == 4 && argv[1] == std::string(support::kAsOtherProcess)) {
        return support::actAsOtherProcess(argv[2], argv[3]);
    }
    testing::InitGoogleTest(&argc, argv);
    auto& listeners = testing::UnitTest::GetInstance()->listeners();
    auto* printer = listeners.Release(listeners.default_result_printer());
    listeners.Append(new AssertingListener);
    listeners.Append(printer);
    return support::endProcess(RUN_ALL_TESTS());
}

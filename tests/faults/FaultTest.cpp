#include "FaultTest.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "FileText.h"
#include "Held.h"
#include "Watchdog.h"

namespace faults {

namespace fs = std::filesystem;

namespace {

constexpr size_t kMostOperations = 5000;  // far more than any attempt has

}  // namespace

Tree treeOf(const std::string& directory) {
    Tree tree;
    if (!fs::exists(directory)) return tree;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        if (!entry.is_symlink() && entry.is_directory()) continue;
        const std::string name = fs::relative(entry.path().parent_path(), directory).generic_string();
        const std::string file = (name == "." ? "" : name + "/") + entry.path().filename().generic_string();
        tree[file] = entry.is_symlink() ? "-> " + fs::read_symlink(entry.path()).generic_string()
                                        : support::readText(entry.path().generic_string()).value_or("(unreadable)");
    }
    return tree;
}

testing::AssertionResult equal(const Tree& now, const Tree& wanted) {
    auto result = now == wanted ? testing::AssertionSuccess() : testing::AssertionFailure();
    for (const auto& [name, content] : now) {
        const auto other = wanted.find(name);
        if (other == wanted.end()) {
            result << name << " should not be there; ";
        } else if (other->second != content) {
            result << name << " has " << content.size() << " other bytes than wanted; ";
        }
    }
    for (const auto& [name, content] : wanted) {
        if (!now.contains(name)) result << name << " is missing; ";
    }
    return result;
}

void expectOldOrNew(const Tree& before, const Tree& now, const Tree& after) {
    const auto stateOf = [](const Tree& tree, const std::string& name) -> std::optional<std::string> {
        const auto found = tree.find(name);
        return found == tree.end() ? std::nullopt : std::optional(found->second);
    };
    Tree all = before;
    all.insert(now.begin(), now.end());
    all.insert(after.begin(), after.end());
    for (const auto& [name, ignored] : all) {
        const auto state = stateOf(now, name);
        EXPECT_TRUE(state == stateOf(before, name) || state == stateOf(after, name))
            << name << (state ? " is neither old nor new: " + std::to_string(state->size()) + " bytes" : " is gone");
    }
}

void FaultTest::exhaust(const std::function<std::unique_ptr<Attempt>()>& make) {
    repeat(make);
    if (HasFatalFailure()) return;
    std::printf("%zu faults injected\n", mInjected);
    RecordProperty("injected", static_cast<int>(mInjected));
    ASSERT_GT(mInjected, 0U) << "this kind strikes nothing here";
}

void FaultTest::repeat(const std::function<std::unique_ptr<Attempt>()>& make) {
    for (size_t number = 1; number <= kMostOperations; ++number) {
        const auto one = make();
        one->prepare();
        bool struck = false;
        attempt(*one, number, struck);
        if (HasFailure()) return;
        if (!struck) {
            one->checkReached();
            return;
        }
        ++mInjected;
        EXPECT_EQ(one->outcome(one->run()).errorCode(), 0) << "the second attempt, fault " << number;
        one->settle({});
        one->checkReached();
        if (HasFailure()) return;
    }
    FAIL() << "no end of operations";
}

void FaultTest::attempt(Attempt& attempt, size_t number, bool& struck) {
    const auto before = openHere();
    std::string where;
    ErrorInfo result;
    {
        const Armed armed(attempt.root(), GetParam(), number);
        const support::Watchdog watchdog(
            kPatience, [&] { support::endAsHung("fault " + std::to_string(number) + " at " + armed.where()); });
        result = attempt.run();
        struck = armed.struck();
        where = armed.where();
    }
    result = attempt.outcome(result);
    SCOPED_TRACE("fault " + std::to_string(number) + " at " + where + ", result " +
                 std::to_string(static_cast<int>(result.errorCode())) + " " + result.errorMessage());
    attempt.settle(result);
    EXPECT_EQ(openHere(), before);
    EXPECT_FALSE(isMappedBelow(attempt.root()));
    if (!struck || isHarmless(GetParam())) {
        EXPECT_EQ(result.errorCode(), 0);
    }
    // A failure of the system tells its reason in words.
    EXPECT_TRUE(result.errorCode() > -10000 || !result.errorMessage().empty());
    if (!result) attempt.checkReached();
    attempt.check(result);
}

}  // namespace faults

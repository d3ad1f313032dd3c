// Repeats an operation, with another of its system calls failing each time, until none is left.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "FaultLayer.h"
#include "LogRecorder.h"
#include "OrvVersion.h"
#include "TempDir.h"

namespace faults {

using Public::Base::ErrorInfo;

/// How long one fault may take.
constexpr std::chrono::seconds kPatience{30};

/// All files below a directory with their content; a link stands with what it leads to, in front of it "-> ".
using Tree = std::map<std::string, std::string>;
Tree treeOf(const std::string& directory);
/// Tells the differences shortly, whatever the files hold.
testing::AssertionResult equal(const Tree& now, const Tree& wanted);

/// One attempt at the operation under test, in a directory of its own.
class Attempt {
public:
    virtual ~Attempt() = default;

    /// Puts the old state there. Nothing fails yet.
    virtual void prepare() = 0;
    /// The operation. @return its error, code 0 when it says that the new state was reached
    virtual ErrorInfo run() = 0;
    /// For operations that do not tell all: the error once what there is was looked at. Nothing fails any more.
    virtual ErrorInfo outcome(const ErrorInfo& told) { return told; }
    /// Ends what the operation may leave running, such as a worker's threads, and what its caller does after a failure.
    virtual void settle(const ErrorInfo&) {}
    /// Judges what there is now. Whether harmless faults were borne was judged already.
    virtual void check(const ErrorInfo& result) = 0;
    /// Judges the new state, after an attempt without a fault.
    virtual void checkReached() = 0;

    const std::string& root() const { return mDirectory.path(); }
    std::string at(const std::string& name) const { return root() + "/" + name; }

private:
    support::TempDir mDirectory;
};

/// A test for one kind of fault.
class FaultTest : public testing::TestWithParam<Kind> {
protected:
    /// Runs attempts, the n-th with a fault at the n-th operation that the kind can strike, until there is none left.
    /// Each must come to its end, leave no descriptor and no mapping, tell an error unless the fault was borne, and
    /// succeed when it is repeated.
    void exhaust(const std::function<std::unique_ptr<Attempt>()>& make);

private:
    void repeat(const std::function<std::unique_ptr<Attempt>()>& make);
    void attempt(Attempt& attempt, size_t number, bool& struck);
    size_t mInjected = 0;
    support::LogRecorder mLog;  // keeps quiet what fails by the thousand
};

/// What the fault must have left: each file as it was or as it was to be, no other file.
void expectOldOrNew(const Tree& before, const Tree& now, const Tree& after);

inline std::string titleOf(const testing::TestParamInfo<Kind>& info) { return nameOf(info.param); }

/// The kinds that strike files, and those that strike reading alone.
inline const std::vector<Kind> kWriting = {Kind::InputOutputError, Kind::DiskFull,     Kind::DiskStaysFull,
                                           Kind::NoRight,          Kind::TooManyOpen,  Kind::OutOfMemory,
                                           Kind::Interrupted,      Kind::ShortTransfer};
inline const std::vector<Kind> kMapping = {Kind::InputOutputError, Kind::NoRight, Kind::TooManyOpen, Kind::OutOfMemory,
                                           Kind::Interrupted};

}  // namespace faults

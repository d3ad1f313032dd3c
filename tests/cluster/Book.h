// What a run has begun, and what came of it.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "RunLog.h"

namespace cluster {

/// Something that was begun with one or more callbacks. The callbacks hold it, so that whoever holds more than one
/// reference after the run has kept a callback for ever.
class Activity {
public:
    /// @param owner id of the node that it was begun on
    Activity(std::string name, std::string owner, std::shared_ptr<RunLog> log)
        : mName(std::move(name)), mOwner(std::move(owner)), mLog(std::move(log)) {}

    const std::string& name() const { return mName; }
    const std::string& owner() const { return mOwner; }
    /// Notes a call of that callback. @return how many there were before
    size_t called(const std::string& callback, const std::string& detail = {});
    size_t calls(const std::string& callback) const;
    /// Of the callback's calls, in order.
    std::vector<std::string> details(const std::string& callback) const;
    /// Nothing more is owed to it: what it was begun on has been cancelled or has ended.
    void release() { mReleased = true; }
    bool released() const { return mReleased; }

private:
    const std::string mName;
    const std::string mOwner;
    const std::shared_ptr<RunLog> mLog;
    mutable std::mutex mMutex;
    std::vector<std::pair<std::string, std::string>> mCalls;
    std::atomic<bool> mReleased{false};
};

/// Says what is wrong with an activity when all that was to come has come; empty when nothing is.
using Verdict = std::function<std::string(const Activity&)>;

class Book {
public:
    /// @param patience with operations that do not return; only a failing run has to wait for it
    explicit Book(std::shared_ptr<RunLog> log, std::chrono::milliseconds patience = std::chrono::seconds(20))
        : mLog(std::move(log)), mPatience(patience) {}

    std::shared_ptr<Activity> open(const std::string& owner, const std::string& what, Verdict verdict);
    /// Everything that was begun on that node is released, since the node ends.
    void release(const std::string& owner);
    /// Everything of that name is released, whatever node it is on.
    void releaseKind(const std::string& what);
    void violation(const std::string& text);
    /// Judges every activity.
    void close();
    /// The object must be gone after everything has been taken down.
    void expectGone(const std::string& name, const std::weak_ptr<void>& object);
    /// After everything has been taken down: finds callbacks and objects that someone still keeps.
    void findKept();
    std::vector<std::string> violations() const;

    /// In a callback of an object: its other operations, called on another thread, must return meanwhile.
    /// @return false when they do not
    bool probe(const std::string& where, const std::function<void()>& operations);

    /// Counts what happened, for the tally of many runs.
    void count(const std::string& what);
    std::vector<std::string> counted() const;

private:
    const std::shared_ptr<RunLog> mLog;
    const std::chrono::milliseconds mPatience;
    mutable std::mutex mMutex;
    std::vector<std::pair<std::shared_ptr<Activity>, Verdict>> mActivities;
    std::vector<std::pair<std::string, std::weak_ptr<void>>> mObjects;
    std::vector<std::string> mViolations;
    std::vector<std::string> mCounted;
};

}  // namespace cluster

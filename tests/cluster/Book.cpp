#include "Book.h"

#include <condition_variable>
#include <thread>

namespace cluster {

size_t Activity::called(const std::string& callback, const std::string& detail) {
    mLog->add("  " + mName + ": " + callback + (detail.empty() ? "" : " " + detail));
    std::lock_guard lock(mMutex);
    size_t before = 0;
    for (const auto& call : mCalls) before += call.first == callback;
    mCalls.emplace_back(callback, detail);
    return before;
}

size_t Activity::calls(const std::string& callback) const { return details(callback).size(); }

std::vector<std::string> Activity::details(const std::string& callback) const {
    std::vector<std::string> found;
    std::lock_guard lock(mMutex);
    for (const auto& call : mCalls) {
        if (call.first == callback) found.push_back(call.second);
    }
    return found;
}

std::shared_ptr<Activity> Book::open(const std::string& owner, const std::string& what, Verdict verdict) {
    std::lock_guard lock(mMutex);
    const auto name = "#" + std::to_string(mActivities.size()) + " " + owner + " " + what;
    mLog->add(name);
    const auto activity = std::make_shared<Activity>(name, owner, mLog);
    mActivities.emplace_back(activity, std::move(verdict));
    return activity;
}

void Book::release(const std::string& owner) {
    std::lock_guard lock(mMutex);
    for (const auto& entry : mActivities) {
        if (entry.first->owner() == owner) entry.first->release();
    }
}

void Book::releaseKind(const std::string& what) {
    std::lock_guard lock(mMutex);
    for (const auto& entry : mActivities) {
        if (entry.first->name().find(" " + what + " ") != std::string::npos) entry.first->release();
    }
}

void Book::violation(const std::string& text) {
    mLog->add("VIOLATION " + text);
    std::lock_guard lock(mMutex);
    mViolations.push_back(text);
}

void Book::close() {
    std::vector<std::pair<std::shared_ptr<Activity>, Verdict>> all;
    {
        std::lock_guard lock(mMutex);
        all = mActivities;
    }
    for (auto& [activity, verdict] : all) {
        const auto wrong = verdict(*activity);
        if (!wrong.empty()) violation(activity->name() + ": " + wrong);
    }
    std::lock_guard lock(mMutex);
    for (auto& entry : mActivities) entry.second = nullptr;  // verdicts hold what they judge
}

void Book::expectGone(const std::string& name, const std::weak_ptr<void>& object) {
    std::lock_guard lock(mMutex);
    mObjects.emplace_back(name, object);
}

void Book::findKept() {
    std::vector<std::string> kept;
    {
        std::lock_guard lock(mMutex);
        for (const auto& entry : mActivities) {
            if (entry.first.use_count() > 1) kept.push_back(entry.first->name() + ": its callback");
        }
        for (const auto& object : mObjects) {
            if (!object.second.expired()) kept.push_back(object.first);
        }
    }
    for (const auto& name : kept) violation(name + " is still kept after everything has ended");
}

std::vector<std::string> Book::violations() const {
    std::lock_guard lock(mMutex);
    return mViolations;
}

bool Book::probe(const std::string& where, const std::function<void()>& operations) {
    struct Answer {
        std::mutex mutex;
        std::condition_variable changed;
        bool came = false;
    };
    const auto answer = std::make_shared<Answer>();
    std::thread other([operations, answer] {
        operations();
        std::lock_guard lock(answer->mutex);
        answer->came = true;
        answer->changed.notify_all();
    });
    bool came = false;
    {
        std::unique_lock lock(answer->mutex);
        came = answer->changed.wait_for(lock, mPatience, [&] { return answer->came; });
    }
    if (came) {
        other.join();
        return true;
    }
    violation(where + " runs while a lock is held: another operation does not return");
    other.detach();
    return false;
}

void Book::count(const std::string& what) {
    std::lock_guard lock(mMutex);
    mCounted.push_back(what);
}

std::vector<std::string> Book::counted() const {
    std::lock_guard lock(mMutex);
    return mCounted;
}

}  // namespace cluster

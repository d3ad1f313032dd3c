#include "Public/Base/ObjCounter.h"

#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace Public::Base {

namespace {

/// The count of that class; never destroyed, since counted objects may outlive every static.
std::atomic<long>& countOf(const char* className, int line) {
    static auto& mutex = *new std::mutex;
    static auto& counts = *new std::map<std::pair<std::string, int>, std::atomic<long>>;
    std::lock_guard lock(mutex);
    return counts[{className != nullptr ? className : "", line}];
}

}  // namespace

ObjCounter::ObjCounter(const char* className, int line) : mCount(&countOf(className, line)) { ++*mCount; }

ObjCounter::ObjCounter(const ObjCounter& other) : mCount(other.mCount) { ++*mCount; }

ObjCounter::~ObjCounter() { --*mCount; }

long ObjCounter::count(const char* className, int line) { return countOf(className, line); }

}  // namespace Public::Base

// Counts the live objects of a class, for debugging.
#pragma once

#include <atomic>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Held as a member by the class that is counted. Has no effect on what the class does.
class ORV_PLATFORM_API ObjCounter {
public:
    /// @param className text with static lifetime   @param line source line of the declaration
    ObjCounter(const char* className, int line);
    ObjCounter(const ObjCounter& other);
    ObjCounter& operator=(const ObjCounter&) { return *this; }
    ~ObjCounter();

    /// Live objects of that name and line.
    static long count(const char* className, int line);

private:
    std::atomic<long>* mCount;
};

}  // namespace Public::Base

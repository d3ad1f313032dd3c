#include "RunningThreads.h"

#include <filesystem>
#include <iterator>

size_t support::countThreads() {
    using Entries = std::filesystem::directory_iterator;
    return static_cast<size_t>(std::distance(Entries("/proc/self/task"), Entries()));
}

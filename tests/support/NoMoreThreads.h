// A system that gives no more threads.
#pragma once

#include <memory>

namespace support {

/// While it lives no thread can be started in this process.
class NoMoreThreads {
public:
    NoMoreThreads();
    ~NoMoreThreads();
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    struct Refusal;
    std::unique_ptr<Refusal> mRefusal;
};

}  // namespace support

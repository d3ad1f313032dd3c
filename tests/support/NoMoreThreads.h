// A system that gives no more threads.
#pragma once

#include <pthread.h>

#include <stdexcept>

namespace support {

/// While it lives no thread can be started in this process: each would get a stack for which there is no room.
class NoMoreThreads {
public:
    NoMoreThreads() {
        pthread_attr_t huge;
        pthread_getattr_default_np(&mUsual);
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, size_t{1} << 46);
        if (pthread_setattr_default_np(&huge) != 0) throw std::runtime_error("the size of stacks cannot be set");
        pthread_attr_destroy(&huge);
    }
    ~NoMoreThreads() {
        pthread_setattr_default_np(&mUsual);
        pthread_attr_destroy(&mUsual);
    }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    pthread_attr_t mUsual;
};

}  // namespace support

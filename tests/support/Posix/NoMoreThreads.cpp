#include "NoMoreThreads.h"

#include <pthread.h>

#include <stdexcept>

namespace support {

/// Each thread would get a stack for which there is no room.
struct NoMoreThreads::Refusal {
    pthread_attr_t usual;

    Refusal() {
        pthread_attr_t huge;
        pthread_getattr_default_np(&usual);
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, size_t{1} << 46);
        if (pthread_setattr_default_np(&huge) != 0) throw std::runtime_error("the size of stacks cannot be set");
        pthread_attr_destroy(&huge);
    }
    ~Refusal() {
        pthread_setattr_default_np(&usual);
        pthread_attr_destroy(&usual);
    }
    Refusal(const Refusal&) = delete;
    Refusal& operator=(const Refusal&) = delete;
};

NoMoreThreads::NoMoreThreads() : mRefusal(std::make_unique<Refusal>()) {}
NoMoreThreads::~NoMoreThreads() = default;

}  // namespace support

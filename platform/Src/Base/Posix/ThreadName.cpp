#include "Base/ThreadName.h"

#include <pthread.h>

namespace Public::Base {

void nameThisThread(const std::string& name) {
    constexpr size_t kLongest = 15;
    pthread_setname_np(pthread_self(), name.substr(0, kLongest).c_str());
}

}  // namespace Public::Base

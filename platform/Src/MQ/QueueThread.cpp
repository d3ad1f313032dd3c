#include "MQ/QueueThread.h"

namespace Tarnwick::MQ {

bool& onQueueThread() {
    thread_local bool flag = false;
    return flag;
}

void endThreads(std::vector<std::thread>& threads) {
    for (auto& thread : threads) {
        if (onQueueThread())
            thread.detach();
        else
            thread.join();
    }
    threads.clear();
}

}  // namespace Tarnwick::MQ

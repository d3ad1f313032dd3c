// Tells the queue's own threads from all others.
#pragma once

#include <thread>
#include <vector>

namespace Tarnwick::MQ {

/// True on a thread that runs the queue's tasks. What the queue owns may end on such a thread, inside a user's
/// callback; it must not wait for queue threads then, since they may be waiting for it.
bool& onQueueThread();

/// Waits until the threads have ended; on a queue thread, lets them end on their own.
void endThreads(std::vector<std::thread>& threads);

}  // namespace Tarnwick::MQ

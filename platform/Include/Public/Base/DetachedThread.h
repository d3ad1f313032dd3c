// Threads that nobody joins.
#pragma once

#include <functional>
#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Runs the body once on a thread of its own, which ends with it. The body must hold what it uses. May be called from
/// any thread. @param name of the thread, for debuggers
/// @return false when the system gives no thread (ErrorInfo::getLastError); the body has not run then
ORV_PLATFORM_API bool startDetached(const std::string& name, std::function<void()> body);

/// Waits until each of these threads has ended or is in a Thread::sleep whose time has not come. For those who advance
/// the clock; not from such a thread.
ORV_PLATFORM_API void settleDetached();

}  // namespace Public::Base

#include "EndProcess.h"

#include <windows.h>

#include <process.h>

namespace support {

int endProcess(int status) {
    // What is static ends as usual. The system's own way of ending waits for a lock that a thread which is just coming
    // or going may never give back.
    ::_cexit();
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(status));
    return status;
}

}  // namespace support

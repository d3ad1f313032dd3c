#include "RunningThreads.h"

#include <windows.h>

#include <tlhelp32.h>

size_t support::countThreads() {
    const HANDLE list = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    size_t count = 0;
    for (BOOL more = ::Thread32First(list, &thread); more; more = ::Thread32Next(list, &thread)) {
        if (thread.th32OwnerProcessID == ::GetCurrentProcessId()) ++count;
    }
    ::CloseHandle(list);
    return count;
}

// A tree's program: it prints "reached NAME" for each module that answers it, then "loaded PATH" for each module that
// the system has loaded into it, and ends with the number of those that answered.
#include <stdio.h>
#include <windows.h>

#define PSAPI_VERSION 2
#include <psapi.h>

#include "Extras.h"

int VISIT(Tell* tell);

static void print(const char* what, const char* name) {
    char line[4096];
    DWORD written;
    const int length = snprintf(line, sizeof line, "%s %s\n", what, name);
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), line, (DWORD)length, &written, NULL);
}

static void tell(const char* name) { print("reached", name); }

static void printLoaded(void) {
    HMODULE modules[512];
    DWORD bytes = 0;
    DWORD i;
    if (!EnumProcessModules(GetCurrentProcess(), modules, sizeof modules, &bytes)) ExitProcess(255);
    for (i = 0; i < bytes / sizeof *modules; ++i) {
        WCHAR wide[1024];
        char path[3072];
        GetModuleFileNameW(modules[i], wide, 1024);
        WideCharToMultiByte(CP_UTF8, 0, wide, -1, path, sizeof path, NULL, NULL);
        print("loaded", path);
    }
}

/* A fault ends the program with its code, and no debugger is called. */
static LONG WINAPI endWithFault(EXCEPTION_POINTERS* fault) { ExitProcess(fault->ExceptionRecord->ExceptionCode); }

int main(void) {
    int reached;
    SetUnhandledExceptionFilter(endWithFault);
    reached = VISIT(tell);
    printLoaded();
    return reached;
}

#include "Extras.h"

#include <stdio.h>
#include <string.h>
#include <windows.h>

static void tellAbsent(Tell* tell, const char* name) {
    char text[256];
    snprintf(text, sizeof text, "no %s", name);
    tell(text);
}

void readBeside(Tell* tell, const char* name) {
    static const char here;
    HMODULE self = NULL;
    WCHAR path[MAX_PATH + 256];
    WCHAR* end;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       (LPCWSTR)&here, &self);
    GetModuleFileNameW(self, path, MAX_PATH);
    end = wcsrchr(path, L'\\') + 1;
    MultiByteToWideChar(CP_UTF8, 0, name, -1, end, 256);
    if (GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES) tellAbsent(tell, name);
}

int visitLater(Tell* tell, const char* name, const char* function) {
    HMODULE library = LoadLibraryA(name);
    int (*visit)(Tell*) = library ? (int (*)(Tell*))(void*)GetProcAddress(library, function) : NULL;
    if (visit) return visit(tell);
    tellAbsent(tell, name);
    return 0;
}

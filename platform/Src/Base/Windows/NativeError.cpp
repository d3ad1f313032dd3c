#include "Base/NativeError.h"

#include "Base/Windows/NativePath.h"
#include "Base/Windows/ThreadLocals.h"

namespace Public::Base {

std::string nativeErrorText(int nativeError) {
    keepThreadLocalsInOrder();  // the last error of each thread is such an object
    constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    wchar_t text[1024];
    DWORD length = ::FormatMessageW(kFlags, nullptr, static_cast<DWORD>(nativeError), 0, text,
                                    sizeof text / sizeof *text, nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) --length;
    if (length == 0) return "Error " + std::to_string(nativeError);
    return fromNative(std::wstring(text, length));
}

}  // namespace Public::Base

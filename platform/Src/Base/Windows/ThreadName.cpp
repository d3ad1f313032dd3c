#include "Base/ThreadName.h"

#include "Base/Windows/WindowsHeaders.h"
#include "Public/Base/StringEx.h"

namespace Public::Base {

void nameThisThread(const std::string& name) {
    // Not on every system that runs this.
    using Describe = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    static const auto describe = reinterpret_cast<Describe>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
    if (describe != nullptr) describe(::GetCurrentThread(), StringEx::string2wstring(name).c_str());
}

}  // namespace Public::Base

#include "Base/Windows/NativePath.h"
#include "Public/Base/System.h"

namespace Public::Base {

std::string System::fromCodePage(const std::string& text) {
    const int length = static_cast<int>(text.size());
    const int needed = ::MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
    std::wstring wide(needed > 0 ? static_cast<size_t>(needed) : 0, L'\0');
    if (needed > 0) ::MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), needed);
    return fromNative(wide);
}

}  // namespace Public::Base

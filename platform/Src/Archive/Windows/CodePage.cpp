#include "../CodePage.h"

#include <algorithm>
#include <climits>

#include "Base/Windows/WindowsHeaders.h"
#include "Public/Base/StringEx.h"

namespace Archive {

bool convertBySystem(std::string_view text, unsigned codePage, std::string& utf8) {
    if (text.empty()) {
        utf8.clear();
        return ::IsValidCodePage(codePage);
    }
    const int length = static_cast<int>(std::min<size_t>(text.size(), INT_MAX));
    const int needed = ::MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<size_t>(std::max(needed, 0)), L'\0');
    if (needed <= 0 || !::MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, text.data(), length, wide.data(), needed))
        return false;
    utf8 = Public::Base::StringEx::wstring2string(wide);
    return true;
}

}  // namespace Archive

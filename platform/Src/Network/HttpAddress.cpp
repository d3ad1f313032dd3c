#include "Network/HttpAddress.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

#include "Public/Base/StringEx.h"

namespace Public::Network {

namespace {

using Parts = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

std::string part(const Parts& parts, CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(parts.get(), which, &text, 0) != CURLUE_OK) return {};
    const std::string copy(text);
    curl_free(text);
    return copy;
}

/// A blank in a user's name is left as it stands by curl.
bool isVisible(char letter) {
    const auto code = static_cast<unsigned char>(letter);
    return code > ' ' && code != 0x7F;
}

}  // namespace

std::string httpAddress(const std::string& text) {
    // curl would take the first word of the path for the host that is not there.
    const auto authority = text.find("://");
    if (authority == std::string::npos || text.compare(authority + 3, 1, "/") == 0) return {};
    if (text.find('\0') != std::string::npos) return {};
    const Parts parts(curl_url(), &curl_url_cleanup);
    if (!parts ||
        curl_url_set(parts.get(), CURLUPART_URL, text.c_str(), CURLU_ALLOW_SPACE | CURLU_URLENCODE) != CURLUE_OK) {
        return {};
    }
    const std::string scheme = Public::Base::StringEx::toLower(part(parts, CURLUPART_SCHEME));
    if ((scheme != "http" && scheme != "https") || part(parts, CURLUPART_HOST).empty()) return {};
    // The fragment is the reader's own; what it holds is not encoded.
    if (curl_url_set(parts.get(), CURLUPART_FRAGMENT, nullptr, 0) != CURLUE_OK) return {};
    const std::string address = part(parts, CURLUPART_URL);
    return std::all_of(address.begin(), address.end(), isVisible) ? address : std::string();
}

}  // namespace Public::Network

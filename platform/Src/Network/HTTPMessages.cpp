// Requests, headers and bodies.
#include "Public/Base/StringEx.h"
#include "Public/Network/HTTPClient.h"

namespace Public::Network {

Base::Value HTTPHeader::header(const std::string& name, unsigned int index) const {
    for (const auto& [field, value] : mFields) {
        if (Base::StringEx::iequals(field, name) && index-- == 0) return value;
    }
    return {};
}

void HTTPHeader::add(const std::string& name, const std::string& value) { mFields.emplace_back(name, value); }

unsigned int WriteContent::write(const Base::SharedBuffer& bytes) {
    mBytes.append(bytes.buf(), bytes.size());
    return static_cast<unsigned int>(bytes.size());
}

HTTPClientRequest::HTTPClientRequest(const std::string& method, const Base::URL& url, HTTPCacheType cacheType)
    : mMethod(method), mUrl(url), mCacheType(cacheType), mContent(std::make_shared<WriteContent>()) {}

}  // namespace Public::Network

// Steps through the text of a JSON document that is known to be valid.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Public/Base/Value.h"

namespace Public::Base {

/// Positions are those of the text's bytes; each is that of the first byte of a value, unless told otherwise.
class JsonScan {
public:
    explicit JsonScan(std::string_view text) : mText(text) {}

    /// Of the document itself.
    uint32_t start() const;
    bool isArray(uint32_t at) const { return mText[at] == '['; }
    bool isObject(uint32_t at) const { return mText[at] == '{'; }
    Value scalar(uint32_t at) const;
    /// The characters of a string without its escapes. @param room where they go when there are escapes
    std::string_view string(uint32_t at, std::string& room) const;

    /// Whether a string, without its escapes, is that text.
    bool says(uint32_t at, std::string_view text) const;

    /// Calls visit(value) for each element of an array, until it gives false.
    template <class Visit>
    void elements(uint32_t array, Visit visit) const {
        for (uint32_t at = skipBlank(array + 1); mText[at] != ']'; at = behindComma(at)) {
            if (!visit(at)) return;
            at = skipValue(at);
        }
    }
    /// Calls visit(key, value) for each member of an object, until it gives false.
    template <class Visit>
    void members(uint32_t object, Visit visit) const {
        for (uint32_t at = skipBlank(object + 1); mText[at] != '}'; at = behindComma(at)) {
            const uint32_t key = at;
            at = skipBlank(skipBlank(skipString(at)) + 1);  // the colon
            if (!visit(key, at)) return;
            at = skipValue(at);
        }
    }

private:
    uint32_t skipBlank(uint32_t at) const;
    uint32_t skipString(uint32_t at) const;
    uint32_t skipValue(uint32_t at) const;
    uint32_t skipContainer(uint32_t at) const;
    uint32_t behindComma(uint32_t at) const;

    std::string_view mText;
};

}  // namespace Public::Base

// JSON text to tree and back.
#pragma once

#include <string>

#include "Public/Base/JsonValue.h"

namespace Public::Base {

/// The one place that knows both the text form and the inside of a JsonValue.
class JsonText {
public:
    static constexpr size_t kLongest = size_t{64} << 20;  ///< bytes of a document

    /// Fills a null value. @return false, leaving it null, for text that is not one acceptable document
    static bool read(const SharedBuffer& text, JsonValue& value, size_t longest = kLongest);
    /// Indented by one tab, no trailing line end.
    static std::string write(const JsonValue& value);

private:
    class Checker;
    static void write(const JsonValue& value, size_t depth, std::string& out);
};

}  // namespace Public::Base

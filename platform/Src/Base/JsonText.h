// JSON text to tree and back.
#pragma once

#include <string>

#include "Public/Base/JsonValue.h"

namespace Public::Base {

/// The one place that knows both the text form and the inside of a JsonValue.
class JsonText {
public:
    /// Fills a null value. @return false, leaving it null, for text that is not one acceptable document
    static bool read(const SharedBuffer& text, JsonValue& value);
    /// Indented by one tab, no trailing line end.
    static std::string write(const JsonValue& value);

private:
    class Reader;
    static void write(const JsonValue& value, size_t depth, std::string& out);
};

}  // namespace Public::Base

// JSON values and their text, as tests of both need them.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "Public/Base/JsonValue.h"

namespace support {

inline std::string write(const Public::Base::JsonValue& value) {
    return value.toStyledString(Public::Base::WriteStyle_Indented).toStdString();
}

inline Public::Base::JsonValue parse(const std::string& text) {
    Public::Base::JsonValue value;
    EXPECT_FALSE(value.read(Public::Base::SharedBuffer(text))) << text;
    return value;
}

}  // namespace support

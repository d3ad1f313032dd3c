// JSON documents: what is read is written as text that reads back the same.
#include <cstddef>
#include <cstdint>

#include "Public/Base/JsonValue.h"
#include "Require.h"

using Public::Base::JsonValue;
using Public::Base::SharedBuffer;

namespace {

std::string textOf(const JsonValue& value) {
    return value.toStyledString(Public::Base::WriteStyle_Indented).toStdString();
}

/// Every conversion of every scalar; none may fail.
void convertAll(const JsonValue& value) {
    (void)value->toInt();
    (void)value->toInt64();
    (void)value->toUint64();
    (void)value->toFloat();
    (void)value->toBool();
    (void)value->toString();
    if (value.isArray()) {
        for (size_t index = 0; index < value.size(); ++index) convertAll(value[index]);
    }
    for (const std::string& key : value.keys()) {
        FUZZ_REQUIRE(value.isMember(key));
        convertAll(value[key.c_str()]);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    JsonValue value;
    if (value.read(SharedBuffer(data, size))) {
        FUZZ_REQUIRE(value.isNull());
        return 0;
    }
    convertAll(value);
    const std::string text = textOf(value);
    JsonValue again;
    FUZZ_REQUIRE(!again.read(SharedBuffer(text)));
    FUZZ_REQUIRE(textOf(again) == text);
    return 0;
}

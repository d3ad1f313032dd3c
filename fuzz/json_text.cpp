// JSON documents: what is read says what another reading of the same text says, and is written as text that reads back
// the same.
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "Public/Base/JsonValue.h"
#include "Require.h"

using Json = nlohmann::ordered_json;
using Public::Base::JsonValue;
using Public::Base::SharedBuffer;

namespace {

std::string textOf(const JsonValue& value) {
    return value.toStyledString(Public::Base::WriteStyle_Indented).toStdString();
}

/// Every conversion of every scalar; none may fail.
void convert(const JsonValue& value) {
    (void)value->toInt();
    (void)value->toInt64();
    (void)value->toUint64();
    (void)value->toFloat();
    (void)value->toBool();
    (void)value->toString();
}

void requireScalar(const JsonValue& value, const Json& expected) {
    FUZZ_REQUIRE(!value.isArray() && !value.isObject());
    FUZZ_REQUIRE(value.isNull() == expected.is_null());
    FUZZ_REQUIRE(value->isBool() == expected.is_boolean());
    FUZZ_REQUIRE(value->isString() == expected.is_string());
    FUZZ_REQUIRE(value->isFloat() == expected.is_number_float());
    FUZZ_REQUIRE(value->isUnsigned() == expected.is_number_unsigned());
    FUZZ_REQUIRE(value->isInteger() == expected.is_number_integer());
    if (expected.is_string()) FUZZ_REQUIRE(value->toString() == expected.get_ref<const std::string&>());
    if (expected.is_boolean()) FUZZ_REQUIRE(value->toBool() == expected.get<bool>());
    if (expected.is_number_float()) FUZZ_REQUIRE(value->toDouble() == expected.get<double>());
    if (expected.is_number_unsigned()) FUZZ_REQUIRE(value->toUint64() == expected.get<uint64_t>());
    if (expected.is_number_integer() && !expected.is_number_unsigned()) {
        FUZZ_REQUIRE(value->toInt64() == expected.get<int64_t>());
    }
}

void requireSame(const JsonValue& value, const Json& expected) {
    convert(value);
    FUZZ_REQUIRE(value.size() == (expected.is_structured() ? expected.size() : expected.is_null() ? 0 : 1));
    if (expected.is_array()) {
        FUZZ_REQUIRE(value.isArray());
        for (size_t index = 0; index < expected.size(); ++index) requireSame(value[index], expected[index]);
    } else if (expected.is_object()) {
        FUZZ_REQUIRE(value.isObject());
        size_t place = 0;
        const auto keys = value.keys();
        for (const auto& [key, member] : expected.items()) {
            FUZZ_REQUIRE(keys[place++] == key);
            FUZZ_REQUIRE(value.isMember(key));
            if (key.find('\0') == std::string::npos) requireSame(value[key.c_str()], member);
        }
    } else {
        requireScalar(value, expected);
    }
}

/// Asks for each part as one that may be changed, which must change nothing.
void touch(JsonValue& value) {
    if (value.isArray()) {
        for (size_t index = 0; index < value.size(); ++index) touch(value[index]);
    }
    for (const std::string& key : value.keys()) {
        if (key.find('\0') == std::string::npos) touch(value[key.c_str()]);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    JsonValue value;
    if (value.read(SharedBuffer(data, size))) {
        FUZZ_REQUIRE(value.isNull());
        return 0;
    }
    requireSame(value, Json::parse(data, data + size));
    const std::string text = textOf(value);
    JsonValue again;
    FUZZ_REQUIRE(!again.read(SharedBuffer(text)));
    FUZZ_REQUIRE(textOf(again) == text);
    touch(again);
    FUZZ_REQUIRE(textOf(again) == text);
    const JsonValue copy = again;
    again.append(copy);
    FUZZ_REQUIRE(textOf(copy) == text);
    return 0;
}

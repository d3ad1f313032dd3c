#include "Public/Base/JsonValue.h"

#include "Base/JsonBranch.h"
#include "Base/JsonScan.h"
#include "Base/JsonText.h"

namespace Public::Base {

namespace {
constexpr size_t kFarthestGrowth = 1048576;
}

JsonValue::JsonValue(ValueType) {}
JsonValue::JsonValue(const std::string& text) : mScalar(text) {}
JsonValue::JsonValue(const char* text) : mScalar(text) {}
JsonValue::JsonValue(int number) : mScalar(number) {}
JsonValue::JsonValue(bool flag) : mScalar(flag) {}
JsonValue::JsonValue(double number) : mScalar(number) {}
JsonValue::JsonValue(const Value& scalar) : mScalar(scalar) {}
JsonValue::JsonValue(const JsonValue& other)
    : mScalar(other.mScalar), mBranch(other.mBranch ? std::make_unique<JsonBranch>(*other.mBranch) : nullptr) {}
JsonValue::JsonValue(JsonValue&& other) noexcept = default;
JsonValue::~JsonValue() = default;

JsonValue::JsonValue(const SharedBuffer& text, uint32_t at) {
    const JsonScan scan({text.buf(), text.size()});
    if (scan.isArray(at) || scan.isObject(at)) {
        mBranch = std::make_unique<JsonBranch>(text, at);
    } else {
        mScalar = scan.scalar(at);
    }
}

// What is assigned is taken out before anything is overwritten: it may be a part of this value.

JsonValue& JsonValue::operator=(const JsonValue& other) {
    JsonValue copy(other);
    swap(copy);
    return *this;
}

JsonValue& JsonValue::operator=(JsonValue&& other) noexcept {
    JsonValue taken(std::move(other));
    swap(taken);
    return *this;
}

void JsonValue::swap(JsonValue& other) noexcept {
    std::swap(mScalar, other.mScalar);
    mBranch.swap(other.mBranch);
}

/// The branch of an array or an object; a value that is not of the kind loses what it held.
JsonBranch& JsonValue::become(bool array) {
    if (!mBranch || mBranch->isArray() != array) {
        *this = JsonValue();
        mBranch = std::make_unique<JsonBranch>(array);
    }
    return *mBranch;
}

ErrorInfo JsonValue::read(const SharedBuffer& text) {
    *this = JsonValue();
    return JsonText::read(text, *this) ? ErrorInfo() : ErrorInfo(ErrorCode_BadDocument, "");
}

SharedBuffer JsonValue::toStyledString(WriteStyle) const { return SharedBuffer(JsonText::write(*this)); }

bool JsonValue::isArray() const { return mBranch && mBranch->isArray(); }

bool JsonValue::isObject() const { return mBranch && !mBranch->isArray(); }

bool JsonValue::isMember(const std::string& key) const { return isObject() && mBranch->find(key) != JsonBranch::kNone; }

bool JsonValue::isNull() const { return !mBranch && mScalar.isNull(); }

size_t JsonValue::size() const {
    if (mBranch) return mBranch->size();
    return mScalar.isNull() ? 0 : 1;
}

std::vector<std::string> JsonValue::keys() const {
    std::vector<std::string> names;
    if (!isObject()) return names;
    names.reserve(mBranch->size());
    for (size_t number = 0; number < mBranch->size(); ++number) names.push_back(mBranch->key(number));
    return names;
}

JsonValue& JsonValue::operator[](const char* key) {
    const std::string name = key != nullptr ? key : "";
    JsonBranch& object = become(false);
    const size_t number = object.find(name);
    return number == JsonBranch::kNone ? object.add(name) : object.changeable(number);
}

JsonValue JsonValue::operator[](const char* key) const {
    if (key == nullptr || !isObject()) return {};
    const size_t number = mBranch->find(key);
    return number == JsonBranch::kNone ? JsonValue() : mBranch->value(number);
}

JsonValue& JsonValue::operator[](size_t index) {
    const size_t present = isArray() ? mBranch->size() : 0;
    if (index > present && index - present > kFarthestGrowth) {
        thread_local JsonValue scratch;
        scratch = JsonValue();
        return scratch;
    }
    JsonBranch& array = become(true);
    if (index >= present) array.grow(index + 1);
    return array.changeable(index);
}

JsonValue JsonValue::operator[](size_t index) const {
    return isArray() && index < mBranch->size() ? mBranch->value(index) : JsonValue();
}

void JsonValue::append(const JsonValue& element) {
    JsonValue copy = element;  // the element may be part of this value
    become(true).append(std::move(copy));
}

}  // namespace Public::Base

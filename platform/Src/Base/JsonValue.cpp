#include "Public/Base/JsonValue.h"

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
JsonValue::~JsonValue() = default;

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
    std::swap(mKind, other.mKind);
    std::swap(mScalar, other.mScalar);
    mMembers.swap(other.mMembers);
    mElements.swap(other.mElements);
}

ErrorInfo JsonValue::read(const SharedBuffer& text) {
    *this = JsonValue();
    return JsonText::read(text, *this) ? ErrorInfo() : ErrorInfo(ErrorCode_BadDocument, "");
}

SharedBuffer JsonValue::toStyledString(WriteStyle) const { return SharedBuffer(JsonText::write(*this)); }

bool JsonValue::isMember(const std::string& key) const {
    for (const auto& [name, value] : mMembers) {
        if (name == key) return true;
    }
    return false;
}

bool JsonValue::isNull() const { return mKind == Kind::Scalar && mScalar.isNull(); }

size_t JsonValue::size() const {
    if (mKind == Kind::Array) return mElements.size();
    if (mKind == Kind::Object) return mMembers.size();
    return mScalar.isNull() ? 0 : 1;
}

std::vector<std::string> JsonValue::keys() const {
    std::vector<std::string> names;
    names.reserve(mMembers.size());
    for (const auto& member : mMembers) names.push_back(member.first);
    return names;
}

JsonValue& JsonValue::operator[](const char* key) {
    if (mKind != Kind::Object) {
        *this = JsonValue();
        mKind = Kind::Object;
    }
    const std::string name = key != nullptr ? key : "";
    for (auto& [present, value] : mMembers) {
        if (present == name) return value;
    }
    return mMembers.emplace_back(name, JsonValue()).second;
}

JsonValue JsonValue::operator[](const char* key) const {
    if (key == nullptr) return {};
    for (const auto& [name, value] : mMembers) {
        if (name == key) return value;
    }
    return {};
}

JsonValue& JsonValue::operator[](size_t index) {
    const size_t present = mKind == Kind::Array ? mElements.size() : 0;
    if (index > present && index - present > kFarthestGrowth) {
        thread_local JsonValue scratch;
        scratch = JsonValue();
        return scratch;
    }
    if (mKind != Kind::Array) {
        *this = JsonValue();
        mKind = Kind::Array;
    }
    if (index >= mElements.size()) mElements.resize(index + 1);
    return mElements[index];
}

JsonValue JsonValue::operator[](size_t index) const {
    return index < mElements.size() ? mElements[index] : JsonValue();
}

void JsonValue::append(const JsonValue& element) {
    JsonValue copy = element;  // the element may be part of this value
    if (mKind != Kind::Array) {
        *this = JsonValue();
        mKind = Kind::Array;
    }
    mElements.push_back(std::move(copy));
}

}  // namespace Public::Base

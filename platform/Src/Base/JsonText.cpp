#include "Base/JsonText.h"

#include <map>
#include <nlohmann/json.hpp>

namespace Public::Base {

namespace {
using Json = nlohmann::ordered_json;
constexpr size_t kDeepest = 64;
}  // namespace

/// Builds the tree from the parser's events. Every event gives false to end the parsing.
class JsonText::Reader {
public:
    using number_integer_t = Json::number_integer_t;
    using number_unsigned_t = Json::number_unsigned_t;
    using number_float_t = Json::number_float_t;
    using string_t = Json::string_t;
    using binary_t = Json::binary_t;

    explicit Reader(JsonValue& root) : mRoot(root) {}

    bool null() { return put(JsonValue()); }
    bool boolean(bool value) { return put(JsonValue(value)); }
    bool number_integer(number_integer_t value) { return put(JsonValue(Value(static_cast<long long>(value)))); }
    bool number_unsigned(number_unsigned_t value) {
        return put(JsonValue(Value(static_cast<unsigned long long>(value))));
    }
    bool number_float(number_float_t value, const string_t&) { return put(JsonValue(value)); }
    bool string(string_t& value) { return put(JsonValue(value)); }
    bool binary(binary_t&) { return false; }
    bool start_object(size_t) { return open(JsonValue::Kind::Object); }
    bool start_array(size_t) { return open(JsonValue::Kind::Array); }
    bool end_object() { return shut(); }
    bool end_array() { return shut(); }
    bool key(string_t& name) {
        mKey = std::move(name);
        return true;
    }
    bool parse_error(size_t, const std::string&, const nlohmann::detail::exception&) { return false; }

private:
    /// A container under construction, with the places of its keys, so that a document of many members stays quick.
    struct Open {
        JsonValue value;
        std::map<std::string, size_t> places;
        std::string key;  // under which it goes into its parent
    };

    bool open(JsonValue::Kind kind) {
        if (mOpen.size() == kDeepest) return false;
        Open& fresh = mOpen.emplace_back();
        fresh.value.mKind = kind;
        fresh.key = mKey;
        return true;
    }

    bool shut() {
        Open done = std::move(mOpen.back());
        mOpen.pop_back();
        mKey = std::move(done.key);
        return put(std::move(done.value));
    }

    bool put(JsonValue value) {
        if (mOpen.empty()) {
            mRoot = std::move(value);
            return true;
        }
        Open& parent = mOpen.back();
        if (parent.value.mKind == JsonValue::Kind::Array) {
            parent.value.mElements.push_back(std::move(value));
            return true;
        }
        auto& members = parent.value.mMembers;
        const auto [place, fresh] = parent.places.emplace(mKey, members.size());
        if (fresh) {
            members.emplace_back(mKey, std::move(value));
        } else {
            members[place->second].second = std::move(value);
        }
        return true;
    }

    JsonValue& mRoot;
    std::vector<Open> mOpen;
    std::string mKey;
};

bool JsonText::read(const SharedBuffer& text, JsonValue& value, size_t longest) {
    // The parser would take a zero byte for the end of the text.
    if (text.size() > longest || std::memchr(text.buf(), 0, text.size()) != nullptr) return false;
    Reader reader(value);
    if (Json::sax_parse(text.buf(), text.buf() + text.size(), &reader)) return true;
    value = JsonValue();
    return false;
}

std::string JsonText::write(const JsonValue& value) {
    std::string out;
    write(value, 0, out);
    return out;
}

namespace {

std::string quoted(const std::string& text) { return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace); }

std::string scalarText(const Value& scalar) {
    if (scalar.isNull()) return "null";
    if (scalar.isString()) return quoted(scalar.toString());
    if (scalar.isFloat()) return Json(scalar.toDouble()).dump();
    return scalar.toString();
}

}  // namespace

void JsonText::write(const JsonValue& value, size_t depth, std::string& out) {
    if (value.mKind == JsonValue::Kind::Scalar) {
        out += scalarText(value.mScalar);
        return;
    }
    const bool array = value.mKind == JsonValue::Kind::Array;
    if (value.empty()) {
        out += array ? "[]" : "{}";
        return;
    }
    const std::string inner = "\n" + std::string(depth + 1, '\t');
    out += array ? '[' : '{';
    const size_t count = value.size();
    for (size_t i = 0; i < count; ++i) {
        if (i != 0) out += ',';
        out += inner;
        if (!array) out += quoted(value.mMembers[i].first) + ": ";
        write(array ? value.mElements[i] : value.mMembers[i].second, depth + 1, out);
    }
    out += "\n" + std::string(depth, '\t');
    out += array ? ']' : '}';
}

}  // namespace Public::Base

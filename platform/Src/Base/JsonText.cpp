#include "Base/JsonText.h"

#include <cstring>
#include <nlohmann/json.hpp>

#include "Base/JsonBranch.h"
#include "Base/JsonScan.h"

namespace Public::Base {

namespace {
using Json = nlohmann::ordered_json;
constexpr size_t kDeepest = 64;
}  // namespace

/// Sees to it that the text is one acceptable document. Every event gives false to end the parsing.
class JsonText::Checker {
public:
    using number_integer_t = Json::number_integer_t;
    using number_unsigned_t = Json::number_unsigned_t;
    using number_float_t = Json::number_float_t;
    using string_t = Json::string_t;
    using binary_t = Json::binary_t;

    bool null() { return true; }
    bool boolean(bool) { return true; }
    bool number_integer(number_integer_t) { return true; }
    bool number_unsigned(number_unsigned_t) { return true; }
    bool number_float(number_float_t, const string_t&) { return true; }
    bool string(string_t&) { return true; }
    bool binary(binary_t&) { return false; }
    bool key(string_t&) { return true; }
    bool start_object(size_t) { return ++mDepth <= kDeepest; }
    bool start_array(size_t) { return ++mDepth <= kDeepest; }
    bool end_object() { return leave(); }
    bool end_array() { return leave(); }
    bool parse_error(size_t, const std::string&, const nlohmann::detail::exception&) { return false; }

private:
    bool leave() {
        --mDepth;
        return true;
    }
    size_t mDepth = 0;
};

bool JsonText::read(const SharedBuffer& text, JsonValue& value, size_t longest) {
    // The parser would take a zero byte for the end of the text.
    if (text.size() > longest || std::memchr(text.buf(), 0, text.size()) != nullptr) return false;
    Checker checker;
    if (!Json::sax_parse(text.buf(), text.buf() + text.size(), &checker)) return false;
    value = JsonValue(text, JsonScan({text.buf(), text.size()}).start());
    return true;
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
    if (!value.mBranch) {
        out += scalarText(value.mScalar);
        return;
    }
    const JsonBranch& branch = *value.mBranch;
    const bool array = branch.isArray();
    if (branch.size() == 0) {
        out += array ? "[]" : "{}";
        return;
    }
    const std::string inner = "\n" + std::string(depth + 1, '\t');
    out += array ? '[' : '{';
    for (size_t number = 0; number < branch.size(); ++number) {
        if (number != 0) out += ',';
        out += inner;
        if (!array) out += quoted(branch.key(number)) + ": ";
        if (const JsonValue* changed = branch.changed(number)) {
            write(*changed, depth + 1, out);
        } else {
            write(branch.value(number), depth + 1, out);
        }
    }
    out += "\n" + std::string(depth, '\t');
    out += array ? ']' : '}';
}

}  // namespace Public::Base

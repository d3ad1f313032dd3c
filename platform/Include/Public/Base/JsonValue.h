// A JSON document tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Public/Base/ErrorInfo.h"
#include "Public/Base/PlatformExport.h"
#include "Public/Base/SharedBuffer.h"
#include "Public/Base/Value.h"

namespace Public::Base {

/// Kind of a fresh value. The null value becomes an object or an array on first use.
enum ValueType : int {
    ValueType_Null = 0,
};

/// How text is written. Style 0: indented by one tab, no trailing line end, keys in the order written.
enum WriteStyle : int {
    WriteStyle_Indented = 0,
};

class JsonBranch;

/// A null, a scalar, an array or an object (RFC 8259). Scalars convert freely through Value. Members and elements of a
/// value of another kind read as null; writing one turns the value into an object or an array.
/// Plain value with deep copies: one thread at a time, reading too.
///
/// A document that was read stays the text that it was, shared by its parts and their copies. A part that is looked
/// into takes a few bytes for each of its values, and a value of its own only where it is asked for as one that may be
/// changed. So a hostile document costs a small multiple of its text; a const value is the cheaper one to read.
class ORV_PLATFORM_API JsonValue {
public:
    JsonValue(ValueType type = ValueType_Null);  // NOLINT(google-explicit-constructor)
    JsonValue(const std::string& text);          // NOLINT(google-explicit-constructor)
    JsonValue(const char* text);                 // NOLINT(google-explicit-constructor)
    JsonValue(int number);                       // NOLINT(google-explicit-constructor)
    JsonValue(bool flag);                        // NOLINT(google-explicit-constructor)
    JsonValue(double number);                    // NOLINT(google-explicit-constructor)
    JsonValue(const Value& scalar);              // NOLINT(google-explicit-constructor)
    JsonValue(const JsonValue& other);
    JsonValue(JsonValue&& other) noexcept;
    /// One of the two may be a part of the other.
    JsonValue& operator=(const JsonValue& other);
    JsonValue& operator=(JsonValue&& other) noexcept;
    ~JsonValue();

    /// Replaces this value by what the text holds. Fails with code -301, leaving a null value, on anything that is not
    /// one JSON document in UTF-8, is nested deeper than 64, or is longer than 64 MiB. A key that stands twice in an
    /// object keeps its first place and its last value.
    ErrorInfo read(const SharedBuffer& text);
    /// Text in UTF-8; bytes that are not UTF-8 become replacement characters. A null value gives "null".
    SharedBuffer toStyledString(WriteStyle style) const;

    bool isMember(const std::string& key) const;
    bool isArray() const;
    bool isObject() const;
    bool isNull() const;
    /// True for null and for an array or object without elements.
    bool empty() const { return size() == 0; }
    /// Elements of an array, members of an object, 1 for a scalar, 0 for null.
    size_t size() const;
    /// Keys of an object in document order; empty for every other kind.
    std::vector<std::string> keys() const;

    // References to members and elements stay good while the value grows, until it becomes another kind, is assigned,
    // read anew or destroyed.

    /// The member of that key, made when it is not there. A value that is no object becomes one, losing what it held.
    JsonValue& operator[](const char* key);
    /// A copy of the member, or null.
    JsonValue operator[](const char* key) const;
    /// The element at that index; the array grows with nulls up to it. A value that is no array becomes one. An index
    /// beyond 1048576 elements past the end is refused: a scratch value is returned.
    JsonValue& operator[](size_t index);
    /// A copy of the element, or null.
    JsonValue operator[](size_t index) const;
    JsonValue& operator[](int index) { return (*this)[static_cast<size_t>(index)]; }
    JsonValue operator[](int index) const { return (*this)[static_cast<size_t>(index)]; }

    /// Appends to an array; a value that is no array becomes one.
    void append(const JsonValue& element);

    /// The scalar; a null Value for arrays and objects.
    Value* operator->() { return &mScalar; }
    const Value* operator->() const { return &mScalar; }

private:
    friend class JsonBranch;
    friend class JsonText;

    /// @param at where the value begins in the text of a valid document
    JsonValue(const SharedBuffer& text, uint32_t at);
    void swap(JsonValue& other) noexcept;
    JsonBranch& become(bool array);

    Value mScalar;
    std::unique_ptr<JsonBranch> mBranch;  // of an array or an object; null for a scalar
};

}  // namespace Public::Base

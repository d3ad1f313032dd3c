// What an array or an object holds.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Public/Base/JsonValue.h"

namespace Public::Base {

/// The elements of an array or the members of an object, by their number. One that was read from a document is at first
/// only a place in the document's text; when it is first looked into, it learns where its own values begin, four bytes
/// each. A value becomes a JsonValue when it is asked for, and stays one when it may be changed.
class JsonBranch {
public:
    static constexpr size_t kNone = static_cast<size_t>(-1);

    explicit JsonBranch(bool array) : mArray(array) {}
    /// @param at where it begins in the text of a valid document
    JsonBranch(const SharedBuffer& text, uint32_t at);
    JsonBranch(const JsonBranch& other);
    JsonBranch& operator=(const JsonBranch&) = delete;
    ~JsonBranch();

    bool isArray() const { return mArray; }
    size_t size() const;
    JsonValue value(size_t number) const;
    /// The value, when it may have been changed; else null.
    const JsonValue* changed(size_t number) const;
    /// Stays where it is as long as the branch lives.
    JsonValue& changeable(size_t number);
    std::string key(size_t number) const;
    /// Number of the member, or kNone.
    size_t find(std::string_view key) const;

    void append(JsonValue value);
    /// A member of that key, which must not be there.
    JsonValue& add(std::string key);
    /// Makes an array longer, with nulls.
    void grow(size_t count);

private:
    struct Sorted;

    void look() const;
    void lookForElements() const;
    void lookForMembers() const;
    void lookForManyMembers() const;
    void sortAlike(std::span<Sorted> alike) const;
    void dropRepeated(std::vector<Sorted>& order) const;
    void closeGaps(std::vector<Sorted>& order) const;
    std::string_view keyText(uint32_t place, std::string& room) const;
    size_t findAmongFew(std::string_view key) const;
    size_t firstNotBefore(std::string_view key) const;
    void noteKey(std::string_view key, uint32_t number);
    uint32_t keep(JsonValue value);

    const bool mArray;
    const SharedBuffer mText;
    const uint32_t mAt = 0;
    mutable bool mLooked = true;
    mutable std::vector<uint32_t> mValues;  // places of the values
    mutable std::vector<uint32_t> mKeys;    // of an object: places of the keys
    mutable std::vector<uint32_t> mByKey;   // of an object: numbers of the members, ascending by digest, then key
    std::vector<std::unique_ptr<JsonValue>> mChanged;
    std::vector<std::string> mNames;  // keys of members that were added
};

}  // namespace Public::Base

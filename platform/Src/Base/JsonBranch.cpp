#include "Base/JsonBranch.h"

#include <algorithm>

#include "Base/JsonScan.h"

namespace Public::Base {

namespace {

// A place is a position in the text, or, with this bit, an index into what was changed or added.
constexpr uint32_t kOwn = 0x80000000U;
constexpr uint32_t kNullPlace = 0xFFFFFFFFU;

JsonScan scan(const SharedBuffer& text) { return JsonScan({text.buf(), text.size()}); }

}  // namespace

/// A member with the first bytes of its key in front of it, which spares most looks into the text.
struct JsonBranch::Sorted {
    Sorted(std::string_view key, uint32_t member) : head(0), tail(0), number(member) {
        for (size_t i = 0; i < 8; ++i) {
            uint32_t& part = i < 4 ? head : tail;
            part = part << 8 | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
        }
    }
    uint32_t head, tail, number;
};

JsonBranch::JsonBranch(const SharedBuffer& text, uint32_t at)
    : mArray(scan(text).isArray(at)), mText(text), mAt(at), mLooked(false) {}

JsonBranch::JsonBranch(const JsonBranch& other)
    : mArray(other.mArray),
      mText(other.mText),
      mAt(other.mAt),
      mLooked(other.mLooked),
      mValues(other.mValues),
      mKeys(other.mKeys),
      mByKey(other.mByKey),
      mNames(other.mNames) {
    mChanged.reserve(other.mChanged.size());
    for (const auto& value : other.mChanged) mChanged.push_back(std::make_unique<JsonValue>(*value));
}

JsonBranch::~JsonBranch() = default;

void JsonBranch::look() const {
    if (mLooked) return;
    mArray ? lookForElements() : lookForMembers();
    mLooked = true;
}

// Counted first, so that the list of a long array never has room for more than there is.
void JsonBranch::lookForElements() const {
    size_t count = 0;
    scan(mText).elements(mAt, [&](uint32_t) { ++count; });
    mValues.reserve(count);
    scan(mText).elements(mAt, [&](uint32_t value) { mValues.push_back(value); });
}

void JsonBranch::lookForMembers() const {
    size_t count = 0;
    scan(mText).members(mAt, [&](uint32_t, uint32_t) { ++count; });
    mKeys.reserve(count);
    mValues.reserve(count);
    std::vector<Sorted> order;
    order.reserve(count);
    std::string room;
    scan(mText).members(mAt, [&](uint32_t key, uint32_t value) {
        order.emplace_back(keyText(key, room), static_cast<uint32_t>(mKeys.size()));
        mKeys.push_back(key);
        mValues.push_back(value);
    });
    std::string leftRoom, rightRoom;
    std::sort(order.begin(), order.end(), [&](const Sorted& left, const Sorted& right) {
        if (left.head != right.head) return left.head < right.head;
        if (left.tail != right.tail) return left.tail < right.tail;
        const int sense = keyText(mKeys[left.number], leftRoom).compare(keyText(mKeys[right.number], rightRoom));
        return sense != 0 ? sense < 0 : left.number < right.number;
    });
    dropRepeated(order);
}

/// A key that stands twice keeps its first place and its last value.
void JsonBranch::dropRepeated(std::vector<Sorted>& order) const {
    std::string room, firstRoom;
    for (size_t begin = 0, end = 0; begin < order.size(); begin = end) {
        const uint32_t first = order[begin].number;
        const std::string_view key = keyText(mKeys[first], firstRoom);
        for (end = begin + 1; end < order.size() && keyText(mKeys[order[end].number], room) == key; ++end) {
            mValues[first] = mValues[order[end].number];
            mKeys[order[end].number] = kNullPlace;
        }
        mByKey.push_back(first);
    }
    if (mByKey.size() == order.size()) return;
    uint32_t kept = 0;
    for (uint32_t number = 0; number < mKeys.size(); ++number) {
        if (mKeys[number] == kNullPlace) continue;
        order[number].number = kept;
        mKeys[kept] = mKeys[number];
        mValues[kept++] = mValues[number];
    }
    mKeys.resize(kept);
    mValues.resize(kept);
    for (uint32_t& number : mByKey) number = order[number].number;
}

std::string_view JsonBranch::keyText(uint32_t place, std::string& room) const {
    if ((place & kOwn) != 0) return mNames[place & ~kOwn];
    return scan(mText).string(place, room);
}

size_t JsonBranch::size() const {
    look();
    return mValues.size();
}

JsonValue JsonBranch::value(size_t number) const {
    look();
    if (const JsonValue* own = changed(number)) return *own;
    const uint32_t place = mValues[number];
    return place == kNullPlace ? JsonValue() : JsonValue(mText, place);
}

const JsonValue* JsonBranch::changed(size_t number) const {
    look();
    const uint32_t place = mValues[number];
    return (place & kOwn) != 0 && place != kNullPlace ? mChanged[place & ~kOwn].get() : nullptr;
}

JsonValue& JsonBranch::changeable(size_t number) {
    if (!changed(number)) mValues[number] = keep(value(number));
    return *mChanged[mValues[number] & ~kOwn];
}

uint32_t JsonBranch::keep(JsonValue value) {
    mChanged.push_back(std::make_unique<JsonValue>(std::move(value)));
    return kOwn | static_cast<uint32_t>(mChanged.size() - 1);
}

std::string JsonBranch::key(size_t number) const {
    look();
    std::string room;
    return std::string(keyText(mKeys[number], room));
}

size_t JsonBranch::firstNotBefore(std::string_view key) const {
    look();
    std::string room;
    const auto found = std::lower_bound(
        mByKey.begin(), mByKey.end(), key,
        [&](uint32_t number, std::string_view wanted) { return keyText(mKeys[number], room) < wanted; });
    return static_cast<size_t>(found - mByKey.begin());
}

size_t JsonBranch::find(std::string_view key) const {
    const size_t index = firstNotBefore(key);
    std::string room;
    if (index == mByKey.size() || keyText(mKeys[mByKey[index]], room) != key) return kNone;
    return mByKey[index];
}

void JsonBranch::append(JsonValue value) {
    look();
    mValues.push_back(keep(std::move(value)));
}

JsonValue& JsonBranch::add(std::string key) {
    const size_t index = firstNotBefore(key);
    mByKey.insert(mByKey.begin() + static_cast<std::ptrdiff_t>(index), static_cast<uint32_t>(mKeys.size()));
    mKeys.push_back(kOwn | static_cast<uint32_t>(mNames.size()));
    mNames.push_back(std::move(key));
    append(JsonValue());
    return *mChanged.back();
}

void JsonBranch::grow(size_t count) {
    look();
    mValues.resize(count, kNullPlace);
}

}  // namespace Public::Base

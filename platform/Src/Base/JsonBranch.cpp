#include "Base/JsonBranch.h"

#include <algorithm>

#include "Base/JsonScan.h"

namespace Public::Base {

namespace {

// A place is a position in the text, or, with this bit, an index into what was changed or added.
constexpr uint32_t kOwn = 0x80000000U;
constexpr uint32_t kNullPlace = 0xFFFFFFFFU;
// Members are found one by one as long as there are fewer.
constexpr size_t kFew = 24;

/// FNV-1a. Texts made to have the same digest cost time, no more.
uint64_t digest(std::string_view text) {
    uint64_t sum = 14695981039346656037U;
    for (const char letter : text) sum = (sum ^ static_cast<unsigned char>(letter)) * 1099511628211U;
    return sum;
}

JsonScan scan(const SharedBuffer& text) { return JsonScan({text.buf(), text.size()}); }

}  // namespace

/// A member by the digest of its key: members are told apart by it without a look into the text. Halved, so that it
/// takes no more room than it must.
struct JsonBranch::Sorted {
    Sorted(std::string_view key, uint32_t member)
        : high(static_cast<uint32_t>(digest(key) >> 32)), low(static_cast<uint32_t>(digest(key))), number(member) {}
    auto operator<=>(const Sorted&) const = default;
    bool likeKey(const Sorted& other) const { return high == other.high && low == other.low; }

    uint32_t high, low, number;
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
    for (auto* list : {&mValues, &mKeys, &mByKey}) list->clear();  // of a look that memory did not suffice for
    mArray ? lookForElements() : lookForMembers();
    mLooked = true;
}

// Counted when there are many, so that the list of a long array never has room for more than there is.
void JsonBranch::lookForElements() const {
    const auto take = [&](uint32_t value) {
        mValues.push_back(value);
        return mValues.size() < kFew;
    };
    scan(mText).elements(mAt, take);
    if (mValues.size() < kFew) return;
    size_t count = 0;
    scan(mText).elements(mAt, [&](uint32_t) { return ++count, true; });
    mValues.clear();
    mValues.reserve(count);
    scan(mText).elements(mAt, [&](uint32_t value) { return mValues.push_back(value), true; });
}

void JsonBranch::lookForMembers() const {
    std::string room;
    const auto take = [&](uint32_t key, uint32_t value) {
        const size_t present = findAmongFew(keyText(key, room));
        if (present != kNone) {
            mValues[present] = value;
        } else {
            mKeys.push_back(key);
            mValues.push_back(value);
        }
        return mKeys.size() < kFew;
    };
    scan(mText).members(mAt, take);
    if (mKeys.size() == kFew) lookForManyMembers();
}

void JsonBranch::lookForManyMembers() const {
    size_t count = 0;
    scan(mText).members(mAt, [&](uint32_t, uint32_t) { return ++count, true; });
    for (auto* list : {&mKeys, &mValues}) {
        list->clear();
        list->reserve(count);
    }
    std::vector<Sorted> order;
    order.reserve(count);
    std::string room;
    scan(mText).members(mAt, [&](uint32_t key, uint32_t value) {
        order.emplace_back(keyText(key, room), static_cast<uint32_t>(mKeys.size()));
        mKeys.push_back(key);
        mValues.push_back(value);
        return true;
    });
    std::sort(order.begin(), order.end());
    dropRepeated(order);
}

/// Sorts by key what has the same digest but not the same key.
void JsonBranch::sortAlike(std::span<Sorted> alike) const {
    std::string leftRoom, rightRoom;
    const auto keyOf = [&](const Sorted& member, std::string& room) { return keyText(mKeys[member.number], room); };
    const std::string_view first = keyOf(alike.front(), leftRoom);
    if (std::all_of(alike.begin(), alike.end(), [&](const Sorted& each) { return keyOf(each, rightRoom) == first; })) {
        return;
    }
    std::sort(alike.begin(), alike.end(), [&](const Sorted& left, const Sorted& right) {
        const int sense = keyOf(left, leftRoom).compare(keyOf(right, rightRoom));
        return sense != 0 ? sense < 0 : left.number < right.number;
    });
}

/// A key that stands twice keeps its first place and its last value.
void JsonBranch::dropRepeated(std::vector<Sorted>& order) const {
    const auto endOfAlike = [&](size_t begin) {
        size_t end = begin;
        while (end < order.size() && order[end].likeKey(order[begin])) ++end;
        return end;
    };
    std::string room, firstRoom;
    for (size_t begin = 0, endAlike = 0; begin < order.size();) {
        if (begin == endAlike) {
            endAlike = endOfAlike(begin);
            if (endAlike - begin > 1) sortAlike({&order[begin], endAlike - begin});
        }
        const uint32_t first = order[begin].number;
        const std::string_view key = keyText(mKeys[first], firstRoom);
        for (++begin; begin < endAlike && keyText(mKeys[order[begin].number], room) == key; ++begin) {
            mValues[first] = mValues[order[begin].number];
            mKeys[order[begin].number] = kNullPlace;
        }
        mByKey.push_back(first);
    }
    if (mByKey.size() < order.size()) closeGaps(order);
}

/// Numbers anew the members that are left. @param order its numbers are not needed any more
void JsonBranch::closeGaps(std::vector<Sorted>& order) const {
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

size_t JsonBranch::findAmongFew(std::string_view key) const {
    for (size_t number = 0; number < mKeys.size(); ++number) {
        const uint32_t place = mKeys[number];
        if ((place & kOwn) != 0 ? mNames[place & ~kOwn] == key : scan(mText).says(place, key)) return number;
    }
    return kNone;
}

size_t JsonBranch::firstNotBefore(std::string_view key) const {
    const uint64_t sum = digest(key);
    std::string room;
    const auto found = std::lower_bound(mByKey.begin(), mByKey.end(), key, [&](uint32_t number, std::string_view) {
        const std::string_view present = keyText(mKeys[number], room);
        const uint64_t presentSum = digest(present);
        return presentSum != sum ? presentSum < sum : present < key;
    });
    return static_cast<size_t>(found - mByKey.begin());
}

size_t JsonBranch::find(std::string_view key) const {
    look();
    if (mByKey.empty()) return findAmongFew(key);
    const size_t index = firstNotBefore(key);
    std::string room;
    if (index == mByKey.size() || keyText(mKeys[mByKey[index]], room) != key) return kNone;
    return mByKey[index];
}

void JsonBranch::noteKey(std::string_view key, uint32_t number) {
    mByKey.insert(mByKey.begin() + static_cast<std::ptrdiff_t>(firstNotBefore(key)), number);
}

void JsonBranch::append(JsonValue value) {
    look();
    mValues.push_back(keep(std::move(value)));
}

JsonValue& JsonBranch::add(std::string key) {
    append(JsonValue());
    mKeys.push_back(kOwn | static_cast<uint32_t>(mNames.size()));
    mNames.push_back(std::move(key));
    if (mKeys.size() >= kFew) {
        std::string room;
        for (size_t number = mByKey.size(); number < mKeys.size(); ++number) {
            noteKey(keyText(mKeys[number], room), static_cast<uint32_t>(number));
        }
    }
    return *mChanged.back();
}

void JsonBranch::grow(size_t count) {
    look();
    mValues.resize(count, kNullPlace);
}

}  // namespace Public::Base

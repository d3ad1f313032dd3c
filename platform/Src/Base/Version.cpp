#include "Public/Base/Version.h"

#include <charconv>
#include <climits>
#include <string_view>

namespace Public::Base {

namespace {

constexpr size_t kLongestRevision = 32;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isRevision(std::string_view text) {
    if (text.empty() || text.size() > kLongestRevision) return false;
    for (const char c : text) {
        if (!isDigit(c) && !(c >= 'A' && c <= 'Z') && !(c >= 'a' && c <= 'z') && c != '_') return false;
    }
    return true;
}

/// Takes a decimal number of 0 to INT_MAX off the front.
bool takeNumber(std::string_view& text, int& number) {
    if (text.empty() || !isDigit(text.front())) return false;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    return true;
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
    if (text.substr(0, prefix.size()) != prefix) return false;
    text.remove_prefix(prefix.size());
    return true;
}

}  // namespace

Version::Version(const std::string& text, int) {
    Version read;
    std::string_view rest = text;
    do {
        if (read.mCount == 4 || !takeNumber(rest, read.mNumbers[static_cast<size_t>(read.mCount)])) return;
        ++read.mCount;
    } while (takePrefix(rest, "."));
    if (takePrefix(rest, "-oem") && !takeNumber(rest, read.mOem)) return;
    if (takePrefix(rest, "-b") && !takeNumber(rest, read.mBuild)) return;
    if (takePrefix(rest, "-r")) {
        if (!isRevision(rest)) return;
        read.mRevision = rest;
        rest = {};
    }
    if (rest.empty()) *this = read;
}

bool Version::operator<(const Version& other) const { return compare(other) < 0; }

bool Version::operator==(const Version& other) const { return compare(other) == 0; }

int Version::carriedOem() const { return mCount != 0 && mOem > 0 ? mOem : 0; }

int Version::carriedBuild() const { return mCount != 0 && mBuild > 0 ? mBuild : 0; }

std::string_view Version::carriedRevision() const {
    return mCount != 0 && isRevision(mRevision) ? std::string_view(mRevision) : std::string_view();
}

int Version::compare(const Version& other) const {
    for (size_t i = 0; i < mNumbers.size(); ++i) {
        if (mNumbers[i] != other.mNumbers[i]) return mNumbers[i] < other.mNumbers[i] ? -1 : 1;
    }
    if (carriedOem() != other.carriedOem()) return carriedOem() < other.carriedOem() ? -1 : 1;
    if (carriedBuild() != other.carriedBuild()) return carriedBuild() < other.carriedBuild() ? -1 : 1;
    return carriedRevision().compare(other.carriedRevision());
}

std::string Version::toString() const {
    std::string text = toSimpleString();
    if (carriedOem() != 0) text += "-oem" + std::to_string(carriedOem());
    if (carriedBuild() != 0) text += "-b" + std::to_string(carriedBuild());
    if (!carriedRevision().empty()) text.append("-r").append(carriedRevision());
    return text;
}

std::string Version::toSimpleString() const {
    std::string text;
    for (int i = 0; i < mCount; ++i) {
        if (i != 0) text += '.';
        text += std::to_string(mNumbers[static_cast<size_t>(i)]);
    }
    return text;
}

}  // namespace Public::Base

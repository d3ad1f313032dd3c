// A dotted version number with edition, build and revision.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Text form: N[.N[.N[.N]]][-oemN][-bN][-rTEXT]. One to four decimal numbers of 0 to 2147483647, then the edition, the
/// build and the revision, each only when it is not 0 or empty, in this order; TEXT is 1 to 32 of A-Z, a-z, 0-9, "_".
/// Any other text gives the empty version, so that no text from outside carries a separator into a path.
/// The order is total: numbers (missing ones count as 0), then OEM, Build, Revision by bytes.
/// Plain value: one thread at a time.
struct ORV_PLATFORM_API Version {
    Version() = default;
    /// @param text see above   @param reserved always 0
    explicit Version(const std::string& text, int reserved = 0);
    Version(const Version&) = default;
    Version& operator=(const Version&) = default;
    virtual ~Version() = default;

    int& Build() { return mBuild; }
    int Build() const { return mBuild; }
    std::string& Revision() { return mRevision; }
    const std::string& Revision() const { return mRevision; }
    /// Number of the branded edition that the version belongs to.
    int& OEM() { return mOem; }
    int OEM() const { return mOem; }

    bool operator<(const Version& other) const;
    bool operator<=(const Version& other) const { return !(other < *this); }
    bool operator>(const Version& other) const { return other < *this; }
    bool operator>=(const Version& other) const { return !(*this < other); }
    bool operator==(const Version& other) const;
    bool operator!=(const Version& other) const { return !(*this == other); }

    /// The whole text form, with as many numbers as were read; empty for the empty version.
    /// Version(v.toString(), 0) == v for every v, also one changed through Build(), Revision() or OEM(): what the text
    /// form cannot carry there (a negative number, a revision of other characters) counts as 0 or empty everywhere.
    std::string toString() const;
    /// The dotted numbers alone.
    std::string toSimpleString() const;

private:
    int compare(const Version& other) const;
    // The parts as the text form can carry them.
    int carriedOem() const;
    int carriedBuild() const;
    std::string_view carriedRevision() const;

    std::array<int, 4> mNumbers{};
    int mCount = 0;  // numbers read from the text; 0 is the empty version
    int mOem = 0;
    int mBuild = 0;
    std::string mRevision;
};

}  // namespace Public::Base

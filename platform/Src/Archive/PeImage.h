// The executable's heads in front of a package.
#pragma once

#include <vector>

#include "Bytes.h"

namespace Archive {

/// What the reader wants of a PE file: the machine, where its sections lie, and the resources.
class PeImage {
public:
    /// @return false when the file does not begin with a PE head; the object is then empty
    bool parse(ByteView file);

    /// The stub is built for 64-bit machines.
    bool isWide() const { return mMachine == 0x8664; }
    /// File offset behind the last section's raw data, 0 without a PE head.
    uint64_t sectionsEnd() const { return mSectionsEnd; }
    /// The resource directory up to the end of its section, empty when there is none.
    ByteView resources() const { return at(mResourceAddress); }
    /// Bytes at a virtual address up to the end of its section's raw data; empty outside all sections.
    ByteView at(uint32_t address) const;

private:
    struct Section {
        uint32_t address, rawSize, rawOffset;
    };
    void readResourceAddress(ByteView optionalHead);

    ByteView mFile;
    uint16_t mMachine = 0;
    uint32_t mResourceAddress = 0;
    uint64_t mSectionsEnd = 0;
    std::vector<Section> mSections;
};

}  // namespace Archive

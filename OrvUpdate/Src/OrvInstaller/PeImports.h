// Reading the import table of a Windows module.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "Public/Base/Function.h"

namespace Tarnwick::OrvUpdate {

/// A module's bytes, none of which is trusted: what leads out of the file ends the reading there, and no count in it
/// makes the reading long.
class PeImports {
public:
    /// @param file must stay in place as long as this object
    explicit PeImports(std::span<const unsigned char> file);

    /// True when the file begins as a program does.
    bool isProgram() const;
    /// Calls the visitor with each module name of the import table, in its order, also with one that stands there
    /// twice. Names longer than a file name can be are passed over.
    void forEach(const Public::Base::Function<void(std::string_view name)>& visit) const;

private:
    struct Section {
        uint64_t address;
        uint64_t size;
        uint64_t offset;  // in the file
    };

    uint32_t number(uint64_t offset, unsigned width) const;
    /// The file offset of an address in the loaded module; 0 when no section holds it.
    uint64_t offsetOf(uint32_t address) const;
    std::string_view textAt(uint64_t offset) const;

    std::span<const unsigned char> mFile;
    uint64_t mNtHeader;
    std::vector<Section> mSections;
};

}  // namespace Tarnwick::OrvUpdate

// Builds small Windows modules with the tables that a test wants.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace support {

/// What a module is to hold.
struct PeSpec {
    bool is64 = true;                  ///< PE32+, else PE32
    std::vector<std::string> imports;  ///< names of modules; of each one function is imported by number
    std::vector<std::string> exports;  ///< names of functions
    std::string trailer;               ///< appended to the file, to tell modules apart
};

/// A module that other tools read too, and where its parts lie, so that a test can damage them.
struct PeFile {
    static constexpr uint32_t kSectionAddress = 0x1000;  ///< in the loaded module

    std::string bytes;
    size_t ntHeader = 0;       ///< file offset, as are the following
    size_t sectionHeader = 0;  ///< of the one section
    size_t sectionData = 0;
    size_t importTable = 0;
    std::vector<size_t> importNames;

    size_t importDirectoryField() const;  ///< where the header tells the import table's address
    size_t exportDirectoryField() const;
    /// Address in the loaded module of a place in the section's data.
    uint32_t addressOf(size_t fileOffset) const;
    void set16(size_t fileOffset, uint16_t value);
    void set32(size_t fileOffset, uint32_t value);
};

PeFile buildPe(const PeSpec& spec);

}  // namespace support

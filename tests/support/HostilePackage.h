// Holds the package reader to its limits on packages that mean harm.
#pragma once

#include <string>

#include "Archive/IExtractOutFile.h"

namespace support {

/// What came of reading a package.
struct PackageReading {
    enum Outcome {
        Refused,  ///< did not open
        Failed,   ///< opened, but not all of it could be extracted
        Whole,
    };
    Outcome outcome = Refused;
    IExtractOutFile::ErrorCode error = IExtractOutFile::ErrorCode_None;
    uint64_t bytes = 0;   ///< handed to the sink
    size_t items = 0;     ///< handed to the sink
    uint64_t memory = 0;  ///< the most that was allocated at once
    double seconds = 0;
};

/// Opens the package, asks for all that it tells, extracts it and reads every byte. Fails the test when that takes more
/// than 20 seconds or 256 MiB of memory, or when the reader breaks its contract with the sink.
PackageReading readHostile(const std::string& path);
/// The same for bytes, which are written to the path first.
PackageReading readHostile(const std::string& path, const std::string& bytes);

}  // namespace support

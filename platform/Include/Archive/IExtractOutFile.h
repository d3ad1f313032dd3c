// The sink that the package reader drives.
#pragma once

#include <string>

#include "Public/Base/PlatformExport.h"

/// Receives the items of a package, one after another, on the thread that called NSISDecompile::extract.
class ORV_PLATFORM_API IExtractOutFile {
public:
    enum ErrorCode : int {
        ErrorCode_None = 0,
        ErrorCode_Open = 1,       ///< the package is not open, or its file cannot be read
        ErrorCode_Format = 2,     ///< a length, an offset or a count contradicts the file
        ErrorCode_Data = 3,       ///< a compressed item does not decode
        ErrorCode_Checksum = 4,   ///< the checksum over the package does not hold
        ErrorCode_Limit = 5,      ///< more output than a package may give
        ErrorCode_Cancelled = 6,  ///< closed while it was being extracted
    };

    virtual ~IExtractOutFile() = default;
    /// A new item begins. @param name path inside the package, with backslashes   @param flag not used
    /// @return false ends the extraction before this item
    virtual bool open(const std::string& name, bool flag) = 0;
    /// All bytes of the current item, in one call; not called for an empty item. @return false when the sink does not
    /// want or could not take them; the extraction goes on with the next item
    virtual bool write(const char* data, unsigned int size) = 0;
    /// The current item ends. The result is not looked at.
    virtual bool close() = 0;
    /// The extraction met an error, and ends.
    virtual void setError(ErrorCode code) = 0;
};

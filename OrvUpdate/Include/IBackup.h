// Saves files before an upgrade overwrites them, and puts them back.
#pragma once

#include <string>

#include "IVersion.h"
#include "OrvUpdateExport.h"
#include "Public/Base/Function.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::Function;

/// Every operation runs to its end on the calling thread and calls back on it. One thread at a time.
class ORV_UPDATE_API IBackup {
public:
    /// Gets a file's relative name and the result of its copy.
    using FileCallback = Function<void(const std::string& name, const ErrorInfo& result)>;

    virtual ~IBackup() = default;
    /// Saves every file below dir, flat: names of sub-directories are lost, and of two files of one name the last one
    /// stays. @param callback once for each file, may be empty   @return code 0; failures reach the callback only
    virtual ErrorInfo backup(const std::string& dir, const FileCallback& callback) = 0;
    /// Saves the file of that name relative to dir, sub-directories included. @return code 0, also when there is no
    /// such file; the system's error when it cannot be copied
    virtual ErrorInfo backup(const std::string& name, const std::string& dir) = 0;
    /// Puts back every file of the backup, with the sub-directories that they lie in, which must exist below dir.
    /// @return code 0; failures reach the callback only
    virtual ErrorInfo restore(const std::string& dir, const FileCallback& callback) = 0;
    /// Puts back the file of that name, making its directory. @return the system's error when it cannot be copied, also
    /// when it was never saved
    virtual ErrorInfo restore(const std::string& name, const std::string& dir) = 0;
    /// Removes the backup. @return the system's error when that fails
    virtual ErrorInfo clear() = 0;
};

}  // namespace Tarnwick::OrvUpdate

// The files that pushes write.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "FileObject.h"

namespace Tarnwick::OrvUpdate {

/// Knows which transfers have written lately, so that a package that lay there before is told from what the transfer
/// itself has written. One thread at a time.
class PushedFiles {
public:
    /// Opens the package file for a chunk. A transfer that begins takes what lies there away, so that a test or an
    /// installation that is reading it keeps it whole, and no end of a longer package stays behind; one that goes on,
    /// after its file has been closed, keeps what it has written. While another transfer of the same package is under
    /// way, both write one file.
    /// @param position of the chunk   @return null when the file cannot be opened (ErrorInfo::getLastError)
    std::shared_ptr<FileObject> open(const std::string& transferId, const std::string& path, uint32_t position);

private:
    struct Writer {
        std::string transferId;
        std::string path;
        std::weak_ptr<FileObject> file;
    };

    bool begins(const std::string& transferId, const std::string& path, uint32_t position) const;

    std::deque<Writer> mWriters;  // the last ones
};

}  // namespace Tarnwick::OrvUpdate

// The sink of the package test.
#pragma once

#include <cstdint>
#include <string>

#include "Archive/IExtractOutFile.h"

namespace Tarnwick::OrvUpdate {

/// Observes the items of a package and keeps nothing of them: which components it holds and their word size.
class NsisParse : public IExtractOutFile {
public:
    bool open(const std::string& name, bool flag) override;
    bool write(const char* data, unsigned int size) override;
    bool close() override;
    void setError(ErrorCode code) override;

    uint32_t systemBits() const { return mSystemBits; }
    bool hasClient() const { return mHasClient; }
    bool hasServer() const { return mHasServer; }
    /// The last code given to setError, 0 when none.
    ErrorCode errorCode() const { return mErrorCode; }

private:
    uint32_t mSystemBits = 0;  // 0 unknown, 32, 64
    bool mHasClient = false;
    bool mHasServer = false;
    bool mWantData = false;  // write looks at the bytes of the current item
    ErrorCode mErrorCode = ErrorCode_None;
};

}  // namespace Tarnwick::OrvUpdate

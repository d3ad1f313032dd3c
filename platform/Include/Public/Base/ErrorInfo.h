// The result of nearly every operation, and the table of all error codes.
#pragma once

#include <string>

#include "Public/Base/PlatformExport.h"

namespace Public::Base {

/// Every code that this library makes, with its meaning. Numbers are never reused. A code that stands nowhere here is
/// a failure of the operating system: -(10000 + its native number).
enum ErrorCode : int {
    ErrorCode_Success = 0,
    ErrorCode_Failed = -1,               ///< general: unreadable text, an absent object, a refused request
    ErrorCode_NotSupported = -2,         ///< this object does not offer the operation
    ErrorCode_NoInstallDir = -4,         ///< the install directory is empty
    ErrorCode_AuthFailed = -105,         ///< HTTP status 401
    ErrorCode_NoConnection = -200,       ///< no connection to the peer
    ErrorCode_NetworkTimeout = -201,     ///< HTTP status 408, or no response at all
    ErrorCode_RequestTimeout = -202,     ///< a request on the queue got no answer in time
    ErrorCode_LinkDead = -203,           ///< the link to a peer is absent or dead
    ErrorCode_NoSuchNode = -204,         ///< the queue knows no node of that id
    ErrorCode_BadDocument = -301,        ///< a document is not valid JSON or lacks a required member
    ErrorCode_PackageUnreadable = -302,  ///< a package cannot be opened or read, or its signature is bad
    ErrorCode_RequestError = -304,       ///< any other HTTP status than 200
    ErrorCode_PackageIncomplete = -308,  ///< a package lacks its client or its server part
    ErrorCode_PeerHasEnough = -415,      ///< a peer wants no more; the push ends as a success
    ErrorCode_PackageInvalid = -416,     ///< a package file is missing or invalid
    ErrorCode_UploadRunning = -417,      ///< an upload is already running
    ErrorCode_PeerUnreachable = -425,    ///< the peer is not reachable
    ErrorCode_PeerNotReady = -426,       ///< the peer is reachable but not ready
    ErrorCode_PackageMismatch = -428,    ///< a package's version or word size differs from what was expected
    ErrorCode_OutputOpen = -602,         ///< an output file cannot be opened
    ErrorCode_OutputWrite = -603,        ///< a short write to an output file
    ErrorCode_ArchiveError = -606,       ///< the package reader reported an error
};

/// A code and a message. Plain value: one thread at a time.
class ORV_PLATFORM_API ErrorInfo {
public:
    ErrorInfo() = default;
    /// @param code    0 for success; any int is taken, also one that ErrorCode does not name
    /// @param message text for people; nearly always empty, since the code says it all
    ErrorInfo(ErrorCode code, const std::string& message);
    ErrorInfo(int code, const std::string& message);

    /// True when this value carries an error.
    operator bool() const { return mCode != ErrorCode_Success; }  // NOLINT(google-explicit-constructor)
    /// True on success.
    bool operator!() const { return mCode == ErrorCode_Success; }

    ErrorCode errorCode() const { return mCode; }
    const std::string& errorMessage() const { return mMessage; }

    /// The error of the last foundation call that failed on this thread; a later success does not clear it.
    /// Code 0 when none has failed yet.
    static ErrorInfo getLastError();
    /// Records a failure of the operating system on this thread: code -(10000 + nativeError), the system's own text.
    static void setLastSystemError(int nativeError);
    /// Records any other failure on this thread.
    static void setLastError(const ErrorInfo& error);

private:
    ErrorCode mCode = ErrorCode_Success;
    std::string mMessage;
};

}  // namespace Public::Base

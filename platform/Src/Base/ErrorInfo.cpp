#include "Public/Base/ErrorInfo.h"

#include "Base/NativeError.h"

namespace Public::Base {

namespace {
thread_local ErrorInfo tLastError;
}

ErrorInfo::ErrorInfo(ErrorCode code, const std::string& message) : mCode(code), mMessage(message) {}

ErrorInfo::ErrorInfo(int code, const std::string& message) : mCode(static_cast<ErrorCode>(code)), mMessage(message) {}

ErrorInfo ErrorInfo::getLastError() { return tLastError; }

void ErrorInfo::setLastSystemError(int nativeError) {
    tLastError = ErrorInfo(-(10000 + nativeError), nativeErrorText(nativeError));
}

void ErrorInfo::setLastError(const ErrorInfo& error) { tLastError = error; }

}  // namespace Public::Base

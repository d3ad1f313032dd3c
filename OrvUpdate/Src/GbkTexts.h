// The fixed Chinese messages, as GBK bytes.
#pragma once

namespace Tarnwick::OrvUpdate {

/// "cancelled by the user": the host refused the installation.
inline constexpr char kTextCancelledByUser[] = "\xD3\xC3\xBB\xA7\xC8\xA1\xCF\xFB\xC9\xFD\xBC\xB6";
/// "network time-out": the cloud did not answer.
inline constexpr char kTextNetworkTimeout[] = "\xCD\xF8\xC2\xE7\xB3\xAC\xCA\xB1";
/// "authentication failed": the cloud refused the credentials.
inline constexpr char kTextAuthFailed[] = "\xC8\xA8\xCF\xDE\xC8\xCF\xD6\xA4\xCA\xA7\xB0\xDC";
/// "request error": the cloud answered with another status than 200.
inline constexpr char kTextRequestError[] = "\xC7\xEB\xC7\xF3\xB4\xED\xCE\xF3";

}  // namespace Tarnwick::OrvUpdate

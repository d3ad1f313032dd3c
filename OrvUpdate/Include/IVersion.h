// One installer package of one program role for one platform.
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "OrvUpdateExport.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/JsonValue.h"
#include "Public/Base/SystemType.h"
#include "Public/Base/Version.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::ErrorInfo;
using Public::Base::JsonValue;
using Public::Base::ProjectType;
using Public::Base::SystemBits;
using Public::Base::SystemType;
using Public::Base::Version;

class IDownload;
class IGetConnection;
class IVersionRequest;

/// Role of a program. All is a wildcard: an entry of type All matches a request for any type.
enum VersionType : int {
    VersionType_Unknown = 0,
    VersionType_All = 1,
    VersionType_Client = 2,
    VersionType_Server = 3,
    VersionType_VideoWall = 4,
    VersionType_Analytics = 5,
};

/// How a package came to this machine.
enum VersionSource : int {
    VersionSource_Unknown = 0,
    VersionSource_Online = 1,
    VersionSource_Manual = 2,
};

/// Where the catalogue learnt of an entry. Each source of knowledge replaces only its own entries.
enum StoragePosition : int {
    StoragePosition_None = 0,
    StoragePosition_Local = 1,  ///< a package on this disk
    StoragePosition_Cloud = 2,  ///< announced by the update cloud
    StoragePosition_Node = 3,   ///< announced by a node of the cluster
};

/// How the whole system sees a version. Entries of a catalogue are shared; they are filled by whoever makes them and
/// read from any thread afterwards. Setters return code 0 in every case.
class ORV_UPDATE_API IVersion {
public:
    virtual ~IVersion() = default;

    /// By version, then bits, system type, version type, source, as signed integers. Neither position, server nor URL
    /// takes part: two entries that differ only there are one entry to a set, and the first one in stays.
    virtual bool operator<(const std::shared_ptr<IVersion>& other) const = 0;

    virtual SystemType getSystemType() const = 0;
    virtual SystemBits getSystemBits() const = 0;
    virtual ProjectType getProjectType() const = 0;
    virtual VersionType getVersionType() const = 0;
    virtual VersionSource getVersionSource() const = 0;
    virtual StoragePosition getStoragePosition() const = 0;
    virtual std::string getDescribe() const = 0;
    virtual Version getVersion() const = 0;
    /// Always empty.
    virtual std::string getChangeLog() const = 0;
    /// Always 0.
    virtual unsigned long long getFileSize() const = 0;
    /// The file given to setLocalFileName, else the place of the package in the store.
    virtual std::string getPackageFile() const = 0;

    /// The version's one transfer, chosen and made on first use; null when no transfer is possible now. Scans the
    /// store.
    /// @param request gives the connection to peers; may lack one, local and cloud versions do without
    virtual std::shared_ptr<IDownload> getDownload(const std::shared_ptr<IVersionRequest>& request) = 0;
    /// @param connection reaches peers; null when none is to be had
    virtual std::shared_ptr<IDownload> getDownload(const std::shared_ptr<IGetConnection>& connection) = 0;

    /// The version document: an object with the seven members "softversion", "serverid", "description", "systemType",
    /// "systemBits", "versionType", "versionSource".
    virtual JsonValue buildVersionInfo() const = 0;

    virtual ErrorInfo setSystemType(SystemType systemType) = 0;
    virtual ErrorInfo setVersionType(VersionType versionType) = 0;
    virtual ErrorInfo setVersionSource(VersionSource source) = 0;
    virtual ErrorInfo setSystemBits(SystemBits bits) = 0;
    virtual ErrorInfo setStoragePosition(StoragePosition position) = 0;
    /// Stores nothing.
    virtual ErrorInfo setProjectType(ProjectType projectType) = 0;
    virtual ErrorInfo setDescribe(const std::string& text) = 0;
    /// A text that is no version gives the empty version.
    virtual ErrorInfo setVersion(const std::string& text) = 0;
    /// Stores nothing.
    virtual ErrorInfo setChangeLog(const std::string& text) = 0;
    /// Stores nothing.
    virtual ErrorInfo setFileSize(unsigned long long bytes) = 0;
    /// Path of the package file, once one is known. May be called on a shared entry, from any thread.
    virtual ErrorInfo setLocalFileName(const std::string& path) = 0;

    /// Writes the content as the package's file in the store, whatever setLocalFileName was given. Makes no directory.
    /// @return the error of the file system on failure
    virtual ErrorInfo saveVersion(const std::string& content) = 0;

    /// Id of the server that holds the package.
    virtual std::string getServerid() const = 0;
    /// Download URL of a cloud entry.
    virtual std::string getUrl() const = 0;
};

}  // namespace Tarnwick::OrvUpdate

/// The order of every set of versions. A null pointer comes first.
template <>
struct std::less<std::shared_ptr<Tarnwick::OrvUpdate::IVersion>> {
    bool operator()(const std::shared_ptr<Tarnwick::OrvUpdate::IVersion>& left,
                    const std::shared_ptr<Tarnwick::OrvUpdate::IVersion>& right) const {
        if (!left || !right) return !left && right;
        return *left < right;
    }
};

namespace Tarnwick::OrvUpdate {
using VersionSet = std::set<std::shared_ptr<IVersion>>;
}

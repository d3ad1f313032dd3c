// The newest compatibility document known anywhere in the system.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "IVersionCompatible.h"
#include "Public/Base/SharedBuffer.h"
#include "Public/Network/IOWorker.h"
#include "Public/Network/NetAddr.h"
#include "Tarnwick/MQ/TWServerInfo.h"

namespace Tarnwick::OrvUpdate {

class NewestDocument;

/// Begins with the file of a former run or the document that the program carries, whichever is newer, fetches newer
/// ones from peers that the host tells it of, and keeps the newest on disk. The document only ever goes up in version.
///
/// Made by a host program, owned by a std::shared_ptr; any thread may call any operation. Copies share one state. An
/// answer that comes when the object is gone is dropped.
class ORV_UPDATE_API maxVersionCompatible : public std::enable_shared_from_this<maxVersionCompatible> {
public:
    /// @param directory of the file "maxVersiomCompatible.dat"; made when a newer document is first saved
    /// @param worker    for the fetches; without one nothing is fetched
    maxVersionCompatible(const std::string& directory, const std::shared_ptr<Public::Network::IOWorker>& worker);

    /// Takes the text for a document, when it is one, and newer than the one held. @return true
    virtual bool loadLocalmaxVersionCompatibleFile(const Public::Base::SharedBuffer& text);
    /// Asks IVersionCompatible::isClientCompatibleFromSystem of the newest document.
    virtual bool checkClientToSystemVersionIsCompatible(VersionType type, const VersionCompatibles& client,
                                                        const VersionCompatibles& system);
    /// Asks IVersionCompatible::isServerCompatibleFromServer of the newest document.
    virtual bool checkServerToServerVersionIsCompatible(const VersionCompatibles& first,
                                                        const VersionCompatibles& second);
    /// Looks at every reachable server. One without an address is asked for through the first address met.
    virtual void inputSystemServerListInfo(const std::map<std::string, Tarnwick::MQ::TWServerInfo>& servers);
    /// Fetches the server's document unless its version is at most that of the one held. Returns at once; a fetch that
    /// fails changes nothing.
    virtual void inputSystemServerInfo(const Public::Network::NetAddr& address, const std::string& serverId,
                                       const std::string& version);
    /// Version of the newest document.
    virtual std::string compatibleVersion();
    /// What the file holds, which is nothing when no document was ever saved. @return true
    virtual bool getVersionCompatibleBuffer(Public::Base::SharedBuffer& text);
    virtual std::shared_ptr<IVersionCompatible> getVersionCompatible();
    virtual ~maxVersionCompatible() = default;
    maxVersionCompatible(const maxVersionCompatible&) = default;
    maxVersionCompatible& operator=(const maxVersionCompatible&) = default;

private:
    void fetchDocument(const std::string& url, const std::string& secureUrl, const JsonValue& question);

    std::shared_ptr<NewestDocument> mState;
};

}  // namespace Tarnwick::OrvUpdate

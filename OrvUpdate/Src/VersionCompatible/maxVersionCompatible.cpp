// The newest document: where it begins, and what it is asked.
#include "maxVersionCompatible.h"

#include "VersionCompatible/DefaultDocument.h"
#include "VersionCompatible/NewestDocument.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::SharedBuffer;

maxVersionCompatible::maxVersionCompatible(const std::string& directory,
                                           const std::shared_ptr<Public::Network::IOWorker>& worker)
    : mState(std::make_shared<NewestDocument>(directory, worker)) {
    mState->loadFromFile();
    maxVersionCompatible::loadLocalmaxVersionCompatibleFile(SharedBuffer(kDefaultDocument));
}

bool maxVersionCompatible::loadLocalmaxVersionCompatibleFile(const SharedBuffer& text) {
    mState->loadFromText(text);
    return true;
}

bool maxVersionCompatible::checkClientToSystemVersionIsCompatible(VersionType type, const VersionCompatibles& client,
                                                                  const VersionCompatibles& system) {
    const auto document = mState->current();
    return document && document->isClientCompatibleFromSystem(type, system, client);
}

bool maxVersionCompatible::checkServerToServerVersionIsCompatible(const VersionCompatibles& first,
                                                                  const VersionCompatibles& second) {
    const auto document = mState->current();
    return document && document->isServerCompatibleFromServer(first, second);
}

std::string maxVersionCompatible::compatibleVersion() { return mState->version(); }

bool maxVersionCompatible::getVersionCompatibleBuffer(SharedBuffer& text) {
    text = mState->saved();
    return true;
}

std::shared_ptr<IVersionCompatible> maxVersionCompatible::getVersionCompatible() { return mState->current(); }

}  // namespace Tarnwick::OrvUpdate

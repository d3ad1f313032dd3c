// The compatibility document that a node holds, and its file.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "IVersionCompatible.h"
#include "Public/Base/SharedBuffer.h"

namespace Public::Network {
class IOWorker;
}

namespace Tarnwick::OrvUpdate {

/// The state of maxVersionCompatible, shared by its copies. Any thread may call any operation. Documents are read
/// outside both locks, and asked outside the state's, since reading writes to the host's log.
class NewestDocument {
public:
    NewestDocument(const std::string& directory, const std::shared_ptr<Public::Network::IOWorker>& worker)
        : mDirectory(directory), mIOWorker(worker) {}

    /// Takes what the file holds; the file stays as it is.
    void loadFromFile();
    /// Takes the text for a document, and writes it to the file when it is newer than the one held.
    void loadFromText(const std::string& text);

    /// Null until the first load.
    std::shared_ptr<IVersionCompatible> current() const;
    std::string version() const;
    /// What the file holds.
    Public::Base::SharedBuffer saved() const;
    const std::shared_ptr<Public::Network::IOWorker>& worker() const { return mIOWorker; }

private:
    /// @return false when the one held is as new
    bool adoptDocument(const std::shared_ptr<IVersionCompatible>& document);
    void save(const std::string& text) const;
    std::string path() const;

    const std::string mDirectory;
    const std::shared_ptr<Public::Network::IOWorker> mIOWorker;
    std::mutex mAdoption;       // one adoption with its saving at a time, so that the file never falls behind
    mutable std::mutex mMutex;  // guards the next two; may be taken under mAdoption
    std::shared_ptr<IVersionCompatible> mCurrentDocument;
    std::string mCompatibleVersion;
};

}  // namespace Tarnwick::OrvUpdate

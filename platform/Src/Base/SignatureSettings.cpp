#include "SignatureSettings.h"

#include <algorithm>
#include <mutex>

#include "Public/Base/Signature.h"

namespace Public::Base {
namespace {

struct Holder {
    std::mutex mutex;
    std::shared_ptr<const SignatureSettings> settings = std::make_shared<SignatureSettings>();
};

Holder& holder() {
    static Holder instance;
    return instance;
}

template <typename Change>
void changeSettings(Change change) {
    Holder& held = holder();
    std::lock_guard lock(held.mutex);
    auto changed = std::make_shared<SignatureSettings>(*held.settings);
    change(*changed);
    held.settings = std::move(changed);
}

}  // namespace

std::shared_ptr<const SignatureSettings> SignatureSettings::current() {
    Holder& held = holder();
    std::lock_guard lock(held.mutex);
    return held.settings;
}

bool SignatureSettings::acceptsPublisher(const std::string& commonName) const {
    return publishers.empty() ||
           (!commonName.empty() && std::find(publishers.begin(), publishers.end(), commonName) != publishers.end());
}

void Signature::setTrustedRoots(const std::string& pemFile) {
    changeSettings([&](SignatureSettings& settings) {
        settings.rootsFile = pemFile.empty() ? SignatureSettings().rootsFile : pemFile;
    });
}

void Signature::setTrustedPublishers(const std::vector<std::string>& names) {
    changeSettings([&](SignatureSettings& settings) { settings.publishers = names; });
}

}  // namespace Public::Base

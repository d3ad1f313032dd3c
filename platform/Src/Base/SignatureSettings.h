// Whom Signature::Verify trusts.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace Public::Base {

/// An unchanging record: a verification that runs keeps the one it began with. Thread-safe.
struct SignatureSettings {
    std::string rootsFile = "/etc/orv/trusted.pem";
    std::vector<std::string> publishers;

    bool acceptsPublisher(const std::string& commonName) const;

    static std::shared_ptr<const SignatureSettings> current();
};

}  // namespace Public::Base

// The update cloud of the demonstration.
#pragma once

#include <string>
#include <vector>

/// Announces one version and its notes, and serves the package: what a real cloud does, from memory.
class UpdateCloud {
public:
    struct Release {
        std::string version;
        std::string date;  ///< "yyyy-MM-dd HH:mm:ss", in China's time
        std::string note;
    };

    virtual ~UpdateCloud() = default;

    /// Host and port.
    virtual std::string address() const = 0;
    /// From now on this version is on offer, with that package. @param bytesPerSecond 0 is as fast as it goes
    virtual void offer(const Release& release, const std::string& packageBytes, size_t bytesPerSecond) = 0;
    /// Adds a release note to the list, newest last.
    virtual void publish(const Release& release) = 0;
};

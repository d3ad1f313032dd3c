// A variable of this process's environment, set for a while.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace support {

/// Null takes the variable away.
void setEnvironment(const char* name, const char* value);

/// Has its value for as long as the object lives, and then what it had before.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const char* value) : mName(name) {
        if (const char* const before = std::getenv(name)) mBefore = before;  // NOLINT(concurrency-mt-unsafe)
        setEnvironment(name, value);
    }
    ~EnvironmentVariable() { setEnvironment(mName, mBefore ? mBefore->c_str() : nullptr); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    const char* const mName;
    std::optional<std::string> mBefore;
};

}  // namespace support

#include "EnvironmentVariable.h"

namespace support {

void setEnvironment(const char* name, const char* value) {
    if (value != nullptr) {
        ::setenv(name, value, 1);
    } else {
        ::unsetenv(name);
    }
}

}  // namespace support

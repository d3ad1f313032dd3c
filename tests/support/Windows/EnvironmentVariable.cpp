#include "EnvironmentVariable.h"

#include <stdlib.h>

namespace support {

// The C library keeps a copy of the environment, and changes the system's with its own.
void setEnvironment(const char* name, const char* value) { ::_putenv_s(name, value != nullptr ? value : ""); }

}  // namespace support

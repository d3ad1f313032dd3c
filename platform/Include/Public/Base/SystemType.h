// The platforms that a package can be made for.
#pragma once

namespace Public::Base {

/// Operating system of a package. The numbers travel in documents and stay as they are.
enum SystemType : int {
    SystemType_Unknown = 0,
    SystemType_Windows = 1,
    SystemType_Linux = 2,
    SystemType_Mac = 3,
    SystemType_Android = 4,
    SystemType_IOS = 5,
};

/// Word size of a package. Any other number counts as unknown.
enum SystemBits : int {
    SystemBits_Unknown = 0,
    SystemBits_32 = 32,
    SystemBits_64 = 64,
};

/// Product line of a package. Only 0 occurs; filters take it as "any".
enum ProjectType : int {
    ProjectType_Unknown = 0,
};

}  // namespace Public::Base

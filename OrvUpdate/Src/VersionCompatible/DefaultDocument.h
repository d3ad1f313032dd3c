// The compatibility document that the program carries.
#pragma once

namespace Tarnwick::OrvUpdate {

extern const char kDefaultDocument[];

}  // namespace Tarnwick::OrvUpdate

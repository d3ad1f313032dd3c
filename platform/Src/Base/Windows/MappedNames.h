// Takes the names from files that this process has mapped.
#pragma once

#include <cstdint>
#include <string>

namespace Public::Base {

/// The system may refuse to delete a file that is mapped, but lets it be renamed. What is to be removed while this
/// process reads it is moved out of the way, under a name beside it, and deleted as soon as nothing of it is mapped
/// here any more. All threads.
namespace MappedNames {

void add(uint64_t volume, uint64_t number);
void drop(uint64_t volume, uint64_t number);
/// @return false when the file is not mapped here or cannot be moved
bool moveAside(const std::wstring& native);
/// Leaves the file where it is until then. @return false when it is not mapped here
bool deleteLater(const std::wstring& native);

}  // namespace MappedNames

}  // namespace Public::Base

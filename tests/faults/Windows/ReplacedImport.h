// The functions of the system that this program imports, replaced by others that ask the layer first. What the program
// is linked from calls them too: the engine, the HTTP library, the standard library. What the system's own libraries
// call among each other is not seen.
#pragma once

#include <winsock2.h>

#include <windows.h>

#include "ImportHook.h"

/// Makes the system's function known as real::NAME. Begins and ends outside of all namespaces.
#define ORV_IMPORT(name)                               \
    extern "C" decltype(&::name) __imp_##name;         \
    namespace faults::real {                           \
    constinit inline decltype(&::name) name = nullptr; \
    }

/// Lets calls of the function go to replaced::NAME.
#define ORV_REPLACE(name) faults::replaceImport(__imp_##name, faults::real::name, &faults::replaced::name)

namespace faults {

/// For as long as the program runs.
template <class Function>
void replaceImport(Function& place, Function& real, Function replacement) {
    real = place;
    [[maybe_unused]] const auto* stays = new support::ImportHook<Function>(&place, replacement);
}

void replaceFileCalls();
void replaceDirectoryCalls();
void replaceSocketCalls();

}  // namespace faults

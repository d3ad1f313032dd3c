// Puts a function in the place of one that this program imports.
#pragma once

#include <windows.h>

#include <stdexcept>

namespace support {

/// While it lives, all calls that this program makes of an imported function come to another one.
template <typename Function>
class ImportHook {
public:
    /// @param place where the program keeps the address of the function: the symbol "__imp_" with its name
    ImportHook(Function* place, Function replacement) : mPlace(place), mOriginal(*place) { put(replacement); }
    ~ImportHook() { put(mOriginal); }
    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

    Function original() const { return mOriginal; }

private:
    void put(Function function) {
        DWORD before = 0;
        if (::VirtualProtect(mPlace, sizeof *mPlace, PAGE_READWRITE, &before) == 0) {
            throw std::runtime_error("the program's imports cannot be changed");
        }
        *mPlace = function;
        ::VirtualProtect(mPlace, sizeof *mPlace, before, &before);
    }

    Function* const mPlace;
    const Function mOriginal;
};

}  // namespace support

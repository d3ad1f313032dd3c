// The import table of a module, read from a block of exactly these bytes.
#include <cstddef>
#include <cstdint>

#include "OrvInstaller/PeImports.h"
#include "Require.h"

using Tarnwick::OrvUpdate::PeImports;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const PeImports imports({data, size});
    FUZZ_REQUIRE(!imports.isProgram() || (size >= 2 && data[0] == 'M' && data[1] == 'Z'));
    size_t count = 0;
    imports.forEach([&](std::string_view name) {
        ++count;
        FUZZ_REQUIRE(!name.empty() && name.size() <= 255);
        FUZZ_REQUIRE(name.find('\0') == std::string_view::npos);
        const auto* begin = reinterpret_cast<const uint8_t*>(name.data());
        FUZZ_REQUIRE(begin >= data && begin + name.size() < data + size);
    });
    FUZZ_REQUIRE(count <= 65536);
    return 0;
}

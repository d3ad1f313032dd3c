// Names of a package's items: one that is accepted lies below the directory that it is put behind, on every system.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "RelativeName.h"
#include "Require.h"

using namespace Tarnwick::OrvUpdate;

namespace {

/// As a system reads a part that lets points and blanks fall away at the end of a name.
std::string_view trimmed(std::string_view part) {
    if (part == "." || part == "..") return part;
    while (part.size() > 2 && (part.back() == '.' || part.back() == ' ')) part.remove_suffix(1);
    return part;
}

/// How many directories above its beginning the path leads at its highest.
int highest(std::string_view path) {
    int depth = 0, least = 0;
    while (!path.empty()) {
        const size_t end = std::min(path.find('/'), path.size());
        const std::string_view part = trimmed(path.substr(0, end));
        if (part == "..") {
            least = std::min(least, --depth);
        } else if (!part.empty() && part != ".") {
            ++depth;
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return least;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string name(reinterpret_cast<const char*>(data), size);
    if (!isPlainRelativeName(name)) return 0;
    std::string path = name;
    std::replace(path.begin(), path.end(), '\\', '/');
    FUZZ_REQUIRE(!leadsUp(name));
    FUZZ_REQUIRE(!path.empty() && path.front() != '/');
    FUZZ_REQUIRE(path.find(':') == std::string::npos);
    FUZZ_REQUIRE(highest(path) == 0);
    // The same place by another spelling is judged alike.
    FUZZ_REQUIRE(isPlainRelativeName(path));
    FUZZ_REQUIRE(isPlainRelativeName("x\\" + name));
    return 0;
}

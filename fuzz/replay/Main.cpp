// Feeds a fuzz target the inputs that are kept for it, with any compiler: NAME DIRECTORY
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

/// In a block of exactly its size, so that a sanitizer sees a read beyond it.
void feed(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    const std::unique_ptr<uint8_t[]> input(new uint8_t[content.size()]);
    std::copy(content.begin(), content.end(), input.get());
    LLVMFuzzerTestOneInput(input.get(), content.size());
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    LLVMFuzzerTestOneInput(nullptr, 0);
    size_t fed = 0;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1], missing)) {
        if (!entry.is_regular_file()) continue;
        std::printf("%s\n", entry.path().string().c_str());
        std::fflush(stdout);
        feed(entry.path());
        ++fed;
    }
    std::printf("%zu inputs\n", fed);
    return fed == 0 ? 1 : 0;
}

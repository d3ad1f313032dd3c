// Directories under names that a program easily stumbles over.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace support {

struct UncommonPlace {
    std::string name;
    std::string path;  ///< to be put behind a directory, with a separator in front
};

inline void PrintTo(const UncommonPlace& place, std::ostream* out) { *out << place.name; }

inline std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

/// For a test that runs in each. The long ones lie beyond the 260 characters that some calls of Windows take.
inline std::vector<UncommonPlace> uncommonPlaces() {
    return {{"Chinese", "/视频管理 系统/升级仓库"},
            {"Western", "/Größe/Übungs-Süd é"},
            {"Blanks", "/Program Files  (x86)/Orv & Co/a b"},
            {"Signs", "/100% ['a']/+~#@!{};=,^$/%TEMP%"},
            {"Long", repeated("/a directory of a long name", 12)},
            {"LongChinese", repeated("/一个相当长的升级仓库目录名称用于测试", 20)}};
}

inline std::string nameOfPlace(const testing::TestParamInfo<UncommonPlace>& info) { return info.param.name; }

}  // namespace support

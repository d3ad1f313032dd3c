#include "FileTimes.h"

#include <filesystem>

namespace fs = std::filesystem;

int64_t support::modifiedTime(const std::string& path) { return fs::last_write_time(path).time_since_epoch().count(); }

void support::setModifiedTime(const std::string& path, int64_t ticks) {
    fs::last_write_time(path, fs::file_time_type(fs::file_time_type::duration(ticks)));
}

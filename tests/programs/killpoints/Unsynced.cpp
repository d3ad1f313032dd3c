#include "Unsynced.h"

#include <atomic>
#include <fstream>
#include <string>
#include <string_view>

#include "Public/Base/Process.h"

namespace fs = std::filesystem;

namespace {

fs::file_type typeOf(const fs::path& path) {
    std::error_code ignored;
    return fs::symlink_status(path, ignored).type();
}

}  // namespace

void Unsynced::removing(const Path& path) {
    static std::atomic<unsigned> sKept{0};
    const fs::file_type there = typeOf(path);
    if (there == fs::file_type::not_found) return;
    Name name{path, {}, there == fs::file_type::directory};
    if (!name.wasDirectory) {
        name.kept = mAttic / (std::to_string(Public::Base::Process::getProcessId()) + "-" + std::to_string(sKept++));
        std::error_code ignored;
        fs::create_hard_link(path, name.kept, ignored);
    }
    mNames.push_back(name);
}

void Unsynced::renaming(const Path& from, const Path& to) {
    removing(from);
    if (typeOf(to) != fs::file_type::not_found) {
        removing(to);
    } else {
        created(to);
    }
    if (mSpoilt.erase(from) != 0) spoil(to);
}

void Unsynced::synced(const Path& path) {
    mSpoilt.erase(path);
    std::erase_if(mNames, [&](const Name& name) { return name.path.parent_path() == path; });
}

void Unsynced::lose(bool names) const {
    using namespace std::literals;
    for (const auto& path : mSpoilt) {
        if (typeOf(path) == fs::file_type::regular) std::ofstream(path, std::ios::binary) << "\0\0spoilt"sv;
    }
    if (!names) return;
    std::error_code ignored;
    for (auto name = mNames.rbegin(); name != mNames.rend(); ++name) {
        if (name->wasDirectory) {
            fs::create_directory(name->path, ignored);
        } else if (name->kept.empty()) {
            fs::remove_all(name->path, ignored);
        } else {
            fs::rename(name->kept, name->path, ignored);
        }
    }
}

// Every operation that takes a path.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Public/Base/Directory.h"
#include "Public/Base/File.h"
#include "Public/Base/System.h"

namespace support {

using Public::Base::AccessMode_Exists;
using Public::Base::Directory;
using Public::Base::File;
using Public::Base::FileListing;
using Public::Base::ListedFile;
using Public::Base::MappedFile;
using Public::Base::OpenMode_Create;
using Public::Base::OpenMode_CreateKeep;
using Public::Base::OpenMode_Read;
using Public::Base::SharedBuffer;
using Public::Base::System;

/// Something that is done to a path; spare is the path of a file that is there.
struct Operation {
    const char* name;
    std::function<bool(const std::string& path, const std::string& spare)> succeeds;
};

inline const std::vector<Operation>& operations() {
    static const std::vector<Operation> all = {
        {"OpenToRead", [](const auto& path, const auto&) { return File().open(path, OpenMode_Read); }},
        {"OpenToCreate", [](const auto& path, const auto&) { return File().open(path, OpenMode_Create); }},
        {"OpenToKeep", [](const auto& path, const auto&) { return File().open(path, OpenMode_CreateKeep); }},
        {"Access", [](const auto& path, const auto&) { return File::access(path, AccessMode_Exists); }},
        {"Load", [](const auto& path, const auto&) { return !File::load(path).empty(); }},
        {"Save", [](const auto& path, const auto&) { return File::save(path, SharedBuffer("x")); }},
        {"GetLength", [](const auto& path, const auto&) { return File::getLength(path) != 0; }},
        {"Remove", [](const auto& path, const auto&) { return File::remove(path); }},
        {"CopyFrom", [](const auto& path, const auto& spare) { return File::copy(path, spare); }},
        {"CopyTo", [](const auto& path, const auto& spare) { return File::copy(spare, path); }},
        {"MapFile",
         [](const auto& path, const auto&) { return MappedFile().open(path) == MappedFile::Result::Mapped; }},
        {"SystemCopyFrom", [](const auto& path, const auto& spare) { return System::copyFile(path, spare); }},
        {"SystemCopyTo", [](const auto& path, const auto& spare) { return System::copyFile(spare, path); }},
    };
    return all;
}

inline const std::vector<Operation>& directoryOperations() {
    static const std::vector<Operation> all = {
        {"MakeDirectory", [](const auto& path, const auto&) { return File::makeDirectory(path); }},
        {"RemoveDirectory", [](const auto& path, const auto&) { return File::removeDirectory(path); }},
        {"ReadDirectory", [](const auto& path, const auto&) { return Directory(path).isOpen(); }},
        {"ListFiles",
         [](const auto& path, const auto&) {
             ListedFile file;
             return FileListing(path).next(file);
         }},
    };
    return all;
}

inline void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

}  // namespace support

// A directory of a test's own for what is done to files, one kind of test for each operation.
#pragma once

#include "FileText.h"
#include "Public/Base/Directory.h"
#include "Public/Base/ErrorInfo.h"
#include "Public/Base/File.h"
#include "Public/Base/System.h"
#include "SystemErrors.h"
#include "TempDir.h"

namespace support {

class FileTest : public testing::Test {
protected:
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }
    static int lastError() { return Public::Base::ErrorInfo::getLastError().errorCode(); }
    TempDir mDir;
};

class FileOperations : public FileTest {};
class RemoveDirectory : public FileTest {};

/// A file that another takes the place of.
class ReplacedFile : public FileTest {
protected:
    static std::string textOf(const Public::Base::MappedFile& file) {
        return {reinterpret_cast<const char*>(file.data()), file.size()};
    }
};

class MappedFileTest : public ReplacedFile {};

class DirectoryTest : public FileTest {
protected:
    static std::map<std::string, Public::Base::Dirent> entriesOf(const std::string& path) {
        std::map<std::string, Public::Base::Dirent> entries;
        Public::Base::Directory directory(path);
        for (Public::Base::Dirent entry; directory.read(entry);) entries[entry.name] = entry;
        return entries;
    }
};

class FileListingTest : public FileTest {
protected:
    static std::vector<Public::Base::ListedFile> list(const std::string& path) {
        std::vector<Public::Base::ListedFile> files;
        Public::Base::FileListing listing(path);
        for (Public::Base::ListedFile file; listing.next(file);) files.push_back(file);
        return files;
    }
    static std::map<std::string, unsigned> attributesIn(const std::string& path) {
        std::map<std::string, unsigned> attributes;
        for (const auto& file : list(path)) attributes[file.name] = file.attributes;
        return attributes;
    }
};

}  // namespace support

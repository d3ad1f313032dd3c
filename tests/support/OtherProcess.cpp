#include "OtherProcess.h"

#include <cstdio>

#include "FileKinds.h"
#include "Public/Base/DirectoryLock.h"
#include "Public/Base/File.h"
#include "Public/Base/System.h"

namespace support {

using Public::Base::DirectoryLock;
using Public::Base::File;
using Public::Base::MappedFile;

int actAsOtherProcess(const std::string& deed, const std::string& path) {
    DirectoryLock lock;
    File file(path);
    MappedFile mapped;
    std::unique_ptr<WithheldFile> withheld;
    bool did = true;
    switch (static_cast<OtherProcess::Deed>(deed.front())) {
        case OtherProcess::Deed::Nothing:
            break;
        case OtherProcess::Deed::LockDirectory:
            did = lock.take(path) == DirectoryLock::Result::Taken;
            break;
        case OtherProcess::Deed::OpenToRead:
            did = file.open(Public::Base::OpenMode_Read);
            break;
        case OtherProcess::Deed::OpenToWrite:
            did = file.open(Public::Base::OpenMode_CreateKeep);
            break;
        case OtherProcess::Deed::MapFile:
            did = mapped.open(path) == MappedFile::Result::Mapped;
            break;
        case OtherProcess::Deed::Withhold:
            withheld = std::make_unique<WithheldFile>(path);
            break;
    }
    std::fputc(did ? '1' : '0', stdout);
    std::fflush(stdout);
    // Nobody writes to it; it ends with whoever started this process.
    while (std::fgetc(stdin) != EOF) {
    }
    return 0;
}

}  // namespace support

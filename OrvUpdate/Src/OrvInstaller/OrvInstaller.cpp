#include "OrvInstaller.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "EngineLog.h"
#include "OutputFile.h"
#include "ParentDirectory.h"
#include "Public/Base/StringEx.h"

namespace Tarnwick::OrvUpdate {

using namespace Public::Base;

namespace {

enum Layout : int {
    Layout_Unread = 0,
    Layout_Tree = 1,  // a directory a component
    Layout_Msi = 2,   // an .msi file a component
};

/// How an item shows the role that it belongs to.
struct RoleMark {
    VersionType role;
    std::string_view text;
};
constexpr std::array<RoleMark, 3> kDirectories = {RoleMark{VersionType_Client, "Orv Client\\"},
                                                  RoleMark{VersionType_Server, "Orv Server\\"},
                                                  RoleMark{VersionType_VideoWall, "Orv VideoWall\\"}};
constexpr std::array<RoleMark, 4> kEndings = {
    RoleMark{VersionType_VideoWall, "VideoWall.msi"}, RoleMark{VersionType_Server, "Server.msi"},
    RoleMark{VersionType_Client, "Client.msi"}, RoleMark{VersionType_Analytics, "Analytics.msi"}};

bool isMsi(const std::string& item) {
    return std::any_of(kEndings.begin(), kEndings.end(),
                       [&](const RoleMark& mark) { return item.ends_with(mark.text); });
}

/// The mark of a role, or null for a role without one, which takes every item.
template <size_t Count>
const RoleMark* markOf(VersionType role, const std::array<RoleMark, Count>& marks) {
    const auto mark = std::find_if(marks.begin(), marks.end(), [&](const RoleMark& one) { return one.role == role; });
    return mark == marks.end() ? nullptr : &*mark;
}

}  // namespace

OrvInstaller::OrvInstaller(const std::shared_ptr<IBackup>& backup, const std::string& packageFile, VersionType type)
    : Thread("InstallThread"), mPackageFile(packageFile), mVersionType(type), mBackup(backup) {
    auto package = std::make_shared<NSISDecompile>();
    if (!package->open(mPackageFile, "") || !package->getItems(mItems)) return;
    mPackageVersion = std::any_of(mItems.begin(), mItems.end(), isMsi) ? Layout_Msi : Layout_Tree;
    mDecompile = package;
}

OrvInstaller::~OrvInstaller() {
    if (mDecompile) mDecompile->close();
    stop();
}

ErrorInfo OrvInstaller::start(const std::string& installDir, bool, const Function<void()>&) {
    if (!mDecompile || onInstallThread()) return ErrorInfo(ErrorCode_Failed, "");
    auto self = shared_from_this();
    destroyThread();
    mInstallDir = installDir;
    mStopping = false;
    mFinished = false;
    mProgress = 0.0F;
    mDoneItems.clear();
    recordError({});
    // The thread may begin after the caller has let go of the object.
    mSelf = self;
    if (createThread()) return {};
    mSelf.reset();
    return ErrorInfo(ErrorCode_Failed, "");
}

ErrorInfo OrvInstaller::stop() {
    if (!mDecompile) return {};
    mStopping = true;
    if (!onInstallThread()) destroyThread();
    return {};
}

ErrorInfo OrvInstaller::cancel() { return ErrorInfo(ErrorCode_NotSupported, ""); }

ErrorInfo OrvInstaller::getProgress(float& progress) {
    progress = mProgress;
    return {};
}

bool OrvInstaller::finish() { return mFinished; }

ErrorInfo OrvInstaller::getError() {
    std::lock_guard lock(mErrorMutex);
    return mError;
}

void OrvInstaller::recordError(const ErrorInfo& error) {
    std::lock_guard lock(mErrorMutex);
    mError = error;
}

int OrvInstaller::getPackageVersion() { return mPackageVersion; }

std::vector<std::string> OrvInstaller::getOutputNames() const {
    std::vector<std::string> names;
    for (std::string name : mItems) {
        if (selectItem(name)) names.push_back(name);
    }
    return names;
}

void OrvInstaller::threadProc() {
    const auto self = std::move(mSelf);  // may be the last to hold the object, which then ends on this thread
    mInstallThread = std::this_thread::get_id();
    mDecompile->extract(self);
    mInstallThread = std::thread::id();
    mFinished = true;
}

bool OrvInstaller::onInstallThread() const { return mInstallThread.load() == std::this_thread::get_id(); }

bool OrvInstaller::selectItem(std::string& name) const {
    if (mPackageVersion == Layout_Msi) {
        const RoleMark* mark = markOf(mVersionType, kEndings);
        if (!mark) return true;
        if (!name.ends_with(mark->text)) return false;
        name = mark->text;
        return true;
    }
    const RoleMark* mark = markOf(mVersionType, kDirectories);
    if (!mark) return true;
    if (!name.starts_with(mark->text)) return false;
    name.erase(0, mark->text.size());
    return true;
}

bool OrvInstaller::refuseItem(const std::string& path) {
    ORV_LOG(6, "OrvInstaller", "create file fail! name:%s", path);
    recordError(ErrorInfo(ErrorCode_OutputOpen, ""));
    return false;
}

bool OrvInstaller::open(const std::string& name, bool) {
    if (mStopping) return false;
    mFile.reset();
    mCurrentName = StringEx::replace(name, "/", "\\");
    std::string itemName = name;
    if (!selectItem(itemName)) return true;

    const std::string path = mInstallDir + "/" + itemName;
    if (!liesInside(mInstallDir, itemName)) return refuseItem(path);
    makeParentDirectory(path);
    if (const ErrorInfo error = mBackup ? mBackup->backup(itemName, mInstallDir) : ErrorInfo()) {
        ORV_LOG(2, "OrvInstaller", "backup fail! filename:%s", itemName);
        recordError(error);
        return false;
    }

    mCurrentPath = path;
    ORV_LOG(4, "OrvInstaller", "File::Open()! file:%s\r\n", mCurrentPath);
    if (!removeLink(mCurrentPath)) return refuseItem(mCurrentPath);
    mFile = std::make_shared<File>();
    if (!mFile->open(mCurrentPath, OpenMode_Create)) return refuseItem(mCurrentPath);
    return true;
}

bool OrvInstaller::write(const char* data, unsigned int size) {
    if (!mFile) return false;
    ORV_LOG(4, "OrvInstaller", "File::Write()! file:%s size:%d\r\n", mCurrentPath, size);
    if (mFile->write(data, size) == size) return true;
    ORV_LOG(6, "OrvInstaller", "write file fail! name:%s", mCurrentName);
    recordError(ErrorInfo(ErrorCode_OutputWrite, ""));
    return false;
}

bool OrvInstaller::close() {
    ORV_LOG(4, "OrvInstaller", "File::close()! file:%s\r\n", mCurrentPath);
    // Some disks tell only now that they could not keep the bytes.
    if (mFile && !mFile->close()) {
        ORV_LOG(6, "OrvInstaller", "write file fail! name:%s", mCurrentName);
        recordError(ErrorInfo(ErrorCode_OutputWrite, ""));
    }
    mFile.reset();
    mDoneItems.push_back(mCurrentName);
    if (!mItems.empty()) mProgress = static_cast<float>(mDoneItems.size()) / static_cast<float>(mItems.size());
    return true;
}

void OrvInstaller::setError(IExtractOutFile::ErrorCode) {}

}  // namespace Tarnwick::OrvUpdate

// Unpacks a package into a directory, with a backup of every file that it replaces.
#pragma once

#include <atomic>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Archive/IExtractOutFile.h"
#include "Archive/NSISDecompile.h"
#include "IBackup.h"
#include "IInstaller.h"
#include "Public/Base/File.h"
#include "Public/Base/Thread.h"
#include "Public/Base/Value.h"

namespace Tarnwick::OrvUpdate {

/// For programs that unpack a package in their own process. Must be owned by a std::shared_ptr. The work runs on the
/// thread "InstallThread"; progress, finish and error are read from any other. Files of a run that failed half-way
/// stay: putting the old ones back is the business of IBackup::restore, which the caller calls. Nothing is written
/// outside of the install directory. A name that leads elsewhere, by itself or through a linked directory, fails its
/// item; a link in the place of an item is replaced by the item.
class ORV_UPDATE_API OrvInstaller : public IInstaller,
                                    public Public::Base::Thread,
                                    public IExtractOutFile,
                                    public std::enable_shared_from_this<OrvInstaller> {
public:
    /// Opens and lists the package. @param backup takes the backup of each replaced file
    /// @param type which role of a package of several is unpacked
    OrvInstaller(const std::shared_ptr<IBackup>& backup, const std::string& packageFile, VersionType type);
    ~OrvInstaller() override;

    /// Starts the thread; a run that is still on is waited for. Each start is a new run with progress 0 and no error.
    /// @param flag, callback not used   @return -1 when the package could not be opened or listed, or there is no
    /// thread
    ErrorInfo start(const std::string& installDir, bool flag, const Function<void()>& callback) override;
    /// Ends the thread, after the item that it is at, and waits for it; on the thread itself it does not wait.
    /// @return code 0
    ErrorInfo stop() override;
    /// @return -2
    ErrorInfo cancel() override;
    /// Closed items divided by all items, skipped ones included. @return code 0
    ErrorInfo getProgress(float& progress) override;
    /// True when the thread has returned from the extraction; getError tells how it went.
    bool finish() override;
    /// The backup's error, -602 (an output file cannot be opened, or its name leads outside), -603 (a short write).
    ErrorInfo getError() override;

    /// Layout of the package: 0 it could not be read, 1 a tree of component directories, 2 one .msi a component.
    int getPackageVersion();
    /// The files that a run writes, relative to the install directory, in the package's order; one may come twice.
    std::vector<std::string> getOutputNames() const;

    /// Starts a program with raised rights and does not wait for it. @param arguments each is put in double quotes; one
    /// that holds a double quote is not escaped   @return false when it could not be started
    static bool createAdminisratorProcess(const std::string& program, const std::vector<Public::Base::Value>& arguments,
                                          bool show);
    /// The package test. Decompresses the package in full, writes nothing. Runs on the calling thread.
    /// @return 0; -416 no such file; -302 not a readable package, badly signed, or unsigned and not whole; -606 the
    /// reader
    ///         reported an error, such as content that does not decode; -308 it lacks the client or the server; -428 of
    ///         another version or word size
    static ErrorInfo checkPackage(const std::string& path, const std::string& versionText, int systemBits);

private:
    // The sink of the package reader; public operations of a private face.
    bool open(const std::string& name, bool flag) override;
    bool write(const char* data, unsigned int size) override;
    bool close() override;
    /// Does nothing.
    void setError(IExtractOutFile::ErrorCode code) override;
    void threadProc() override;

    /// True on the thread of a run that is still on, such as in a call of the backup.
    bool onInstallThread() const;
    /// True when the item belongs to the role; shortens the name to what is below the role's directory.
    bool selectItem(std::string& name) const;
    void recordError(const ErrorInfo& error);
    /// The item's output file cannot be had. @return false
    bool refuseItem(const std::string& path);

    std::atomic<bool> mFinished{false};
    std::atomic<bool> mStopping{false};
    std::atomic<std::thread::id> mInstallThread{};  // while it extracts
    const std::string mPackageFile;
    std::string mInstallDir;
    std::shared_ptr<OrvInstaller> mSelf;  // from start until the thread holds the object itself
    std::shared_ptr<NSISDecompile> mDecompile;
    std::atomic<float> mProgress{0.0F};
    std::string mCurrentName;
    std::string mCurrentPath;
    std::list<std::string> mItems;
    std::list<std::string> mDoneItems;
    std::shared_ptr<Public::Base::File> mFile;
    std::mutex mErrorMutex;  // guards mError
    ErrorInfo mError;
    const VersionType mVersionType;
    const std::shared_ptr<IBackup> mBackup;
    int mPackageVersion = 0;
};

}  // namespace Tarnwick::OrvUpdate

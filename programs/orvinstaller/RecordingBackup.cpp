#include "RecordingBackup.h"

#include "Public/Base/File.h"

using Public::Base::AccessMode_Exists;
using Public::Base::File;

RecordingBackup::ErrorInfo RecordingBackup::backup(const std::string& dir, const FileCallback& callback) {
    return mBackup.backup(dir, callback);
}

RecordingBackup::ErrorInfo RecordingBackup::backup(const std::string& name, const std::string& dir) {
    const bool there = File::access(dir + "/" + name, AccessMode_Exists);
    const ErrorInfo result = mBackup.backup(name, dir);
    if (!result) (there ? mSaved : mAdded).push_back(name);
    return result;
}

RecordingBackup::ErrorInfo RecordingBackup::restore(const std::string& dir, const FileCallback& callback) {
    return mBackup.restore(dir, callback);
}

RecordingBackup::ErrorInfo RecordingBackup::restore(const std::string& name, const std::string& dir) {
    return mBackup.restore(name, dir);
}

RecordingBackup::ErrorInfo RecordingBackup::clear() { return mBackup.clear(); }

RecordingBackup::ErrorInfo RecordingBackup::undo(const std::string& dir) {
    ErrorInfo first;
    for (const auto& name : mSaved) {
        const ErrorInfo result = mBackup.restore(name, dir);
        if (result && !first) first = result;
    }
    for (const auto& name : mAdded) {
        const std::string path = dir + "/" + name;
        if (File::access(path, AccessMode_Exists) && !File::remove(path) && !first) first = ErrorInfo::getLastError();
    }
    return first;
}

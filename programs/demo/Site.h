// One machine of the demonstration: its programs, its store, and what is installed on it.
#pragma once

#include <filesystem>
#include <map>
#include <string>

/// A directory tree that stands for a machine. Removed when it is destroyed, unless kept.
class Site {
public:
    explicit Site(bool keep);
    ~Site();
    Site(const Site&) = delete;
    Site& operator=(const Site&) = delete;

    /// @param name below the site
    std::string path(const std::string& name) const { return mRoot + "/" + name; }
    /// Puts the host, the installer launcher and their libraries into "program", where the update cloud is named too.
    void installHost(const std::string& cloudAddress) const { installHostAt("program", cloudAddress); }
    void installHostAt(const std::string& directory, const std::string& cloudAddress) const;
    /// Relative file names below a directory, with the first bytes of what they hold.
    std::map<std::string, std::string> files(const std::string& directory) const;
    /// The same as lines for people: name, size, the version that the content names.
    std::string tree(const std::string& directory) const;

private:
    std::string mRoot;
    const std::filesystem::path
        mHere;  // the directory of this program, before the demonstration gives it out for another
    bool mKeep;
};

/// The path of that text, which is UTF-8.
std::filesystem::path sitePath(const std::string& text);

/// Everything that a file holds.
std::string readFile(const std::string& path);

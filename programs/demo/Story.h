// What the demonstration shows, step by step.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "ClusterStory.h"
#include "Narration.h"
#include "Site.h"
#include "UpdateCloud.h"

/// One server upgrades itself from an update cloud; then three ways in which it must not, or not wholly; then a site of
/// several nodes.
class Story {
public:
    struct Options {
        UpdateCloud& cloud;
        bool keep = false;          ///< its files, for somebody to look at
        bool elevated = false;      ///< starts the installer with raised rights, as a real host does
        std::string packages = {};  ///< where the packages lie that it would make otherwise
    };

    explicit Story(const Options& options);
    /// @return how many things were not as expected
    int tell();
    /// Prints the arguments with which the script makes each of its packages, one package a line.
    void listPackages();

private:
    struct Package {
        UpdateCloud::Release release;
        std::string layout;  ///< "tree" or "msi"
        std::string file;
        int kibibytes = 24;  ///< of each file in it
    };
    struct Report {
        std::string result;  ///< "installed", "restored", "damaged"
        std::string reason;  ///< to be put behind it; empty without an error
    };
    static SitePackage of(const Package& package);
    static std::vector<std::string> makingOf(const Package& package);
    std::vector<Package*> allPackages();
    bool obtain(const Package& package);

    using Files = std::map<std::string, std::string>;

    bool makePackages();
    void installOldVersion();
    void upgrade();
    void refuseTampered();
    void restoreFailed();
    void cancelHalfWay();

    /// Runs the host to its end. @return its exit status
    int runHost(const std::string& runningVersion, bool cancel);
    /// Waits for what the launched installer reports.
    Report waitForReport() const;
    void expectUnchanged(const Files& before);

    const Options mOptions;
    Narration mNarration;
    Site mSite;
    UpdateCloud& mCloud;
    Package mOld{{"1.11.0.8", "2026-02-02 09:00:00", "first installation"}, "tree", ""};
    Package mNew{{"1.12.0.3", "2026-05-11 10:30:00", "faster playback, new store"}, "tree", ""};
    Package mNext{{"1.13.0.1", "2026-09-21 08:15:00", "packed as one file a component"}, "msi", ""};
    Package mBrought{{"1.14.0.2", "2026-11-02 11:00:00", "brought by a user"}, "tree", "", 500};
    // As if newer than the second, and of its layout, so that several files are replaced before the obstacle.
    Package mBroken{{"1.12.5.0", "2026-08-01 08:00:00", "meets an obstacle"}, "tree", ""};
};

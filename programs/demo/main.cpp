// The demonstration. Its options are told by an unknown one.
#include <cstdio>
#include <exception>
#include <memory>

#include "DistantCloud.h"
#include "LocalCloud.h"
#include "Public/Base/Printer.h"
#include "Public/Base/Process.h"
#include "Story.h"

namespace {

struct Choice {
    bool keep = false, elevated = false, listPackages = false, cloudOnly = false;
    std::string packages, cloud;
};

/// @return false for an option that there is none of
bool read(const std::vector<std::string>& words, Choice& choice) {
    for (size_t at = 1; at < words.size(); ++at) {
        const std::string& word = words[at];
        const bool hasValue = at + 1 < words.size();
        if (word == "--keep") {
            choice.keep = true;
        } else if (word == "--elevated") {
            choice.elevated = true;
        } else if (word == "--list-packages") {
            choice.listPackages = true;
        } else if (word == "--cloud-only") {
            choice.cloudOnly = true;
        } else if (word == "--packages" && hasValue) {
            choice.packages = words[++at];
        } else if (word == "--cloud" && hasValue) {
            choice.cloud = words[++at];
        } else {
            return false;
        }
    }
    return true;
}

int refuse() {
    std::fprintf(stderr,
                 "usage: orvdemo [--keep] [--elevated] [--packages DIR] [--cloud ADDRESS]\n"
                 "       orvdemo --cloud-only | --list-packages\n"
                 "--keep           leaves its directory for you to look at\n"
                 "--elevated       has the system ask for raised rights for the installer, as a real host does\n"
                 "--packages DIR   takes the packages from there instead of making them\n"
                 "--cloud ADDRESS  has the update cloud of another one, which runs with --cloud-only\n"
                 "--cloud-only     tells the address of its update cloud, and serves until its input ends\n"
                 "--list-packages  tells what scripts/make-package.sh is to make for --packages\n");
    return 2;
}

int serve() {
    const LocalCloud cloud;
    std::printf("%s\n", cloud.address().c_str());
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}

int show(const Choice& choice) {
    std::unique_ptr<UpdateCloud> cloud;
    if (choice.cloud.empty()) {
        cloud = std::make_unique<LocalCloud>();
    } else {
        cloud = std::make_unique<DistantCloud>(choice.cloud);
    }
    Story story({*cloud, choice.keep, choice.elevated, choice.packages});
    if (choice.listPackages) {
        story.listPackages();
        return 0;
    }
    std::printf("One node upgrades itself from the update cloud; then a site of five nodes\n");
    const int unexpected = story.tell();
    if (unexpected == 0) {
        std::printf("\nEverything was as expected.\n");
        return 0;
    }
    std::printf("\n%d things were not as expected.\n", unexpected);
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    Choice choice;
    if (!read(Public::Base::Process::arguments(argc, argv), choice)) return refuse();
    Public::Base::setLogSink([](const Public::Base::LogEntry&) {});
    try {
        return choice.cloudOnly ? serve() : show(choice);
    } catch (const std::exception& fault) {  // no room for its files, or no port
        std::fprintf(stderr, "\norvdemo: %s\n", fault.what());
        return 1;
    }
}

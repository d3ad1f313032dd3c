// The demonstration: orvdemo [--keep]
#include <cstdio>
#include <cstring>
#include <exception>

#include "Public/Base/Printer.h"
#include "Story.h"

int main(int argc, char** argv) {
    const bool keep = argc == 2 && std::strcmp(argv[1], "--keep") == 0;
    if (argc > 1 && !keep) {
        std::fprintf(stderr, "usage: orvdemo [--keep]\n--keep leaves its directory for you to look at\n");
        return 2;
    }
    Public::Base::setLogSink([](const Public::Base::LogEntry&) {});
    std::printf("One node upgrades itself from the update cloud; then a site of five nodes\n");
    int unexpected = 0;
    try {
        unexpected = Story(keep).tell();
    } catch (const std::exception& fault) {  // no room for its files, or no port
        std::fprintf(stderr, "\norvdemo: %s\n", fault.what());
        return 1;
    }
    if (unexpected == 0) {
        std::printf("\nEverything was as expected.\n");
        return 0;
    }
    std::printf("\n%d things were not as expected.\n", unexpected);
    return 1;
}

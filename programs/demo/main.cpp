// The demonstration: orvdemo [--keep]
#include <cstdio>
#include <cstring>

#include "Public/Base/Printer.h"
#include "Story.h"

int main(int argc, char** argv) {
    const bool keep = argc > 1 && std::strcmp(argv[1], "--keep") == 0;
    Public::Base::setLogSink([](const Public::Base::LogEntry&) {});
    std::printf("One node upgrades itself from the update cloud\n");
    const int unexpected = Story(keep).tell();
    if (unexpected == 0) {
        std::printf("\nEverything was as expected.\n");
        return 0;
    }
    std::printf("\n%d things were not as expected.\n", unexpected);
    return 1;
}

#include "Narration.h"

#include <cstdio>
#include <sstream>

void Narration::step(const std::string& title) {
    std::printf("\n%d  %s\n", ++mSteps, title.c_str());
    std::fflush(stdout);
}

void Narration::tell(const std::string& label, const std::string& text) {
    std::printf("   %-12s %s\n", label.c_str(), text.c_str());
    std::fflush(stdout);
}

bool Narration::expect(bool holds, const std::string& label, const std::string& text) {
    tell(label, (holds ? "" : "NOT AS EXPECTED: ") + text);
    if (!holds) ++mUnexpected;
    return holds;
}

void Narration::show(const std::string& lines) {
    std::istringstream input(lines);
    for (std::string line; std::getline(input, line);) std::printf("     %s\n", line.c_str());
    std::fflush(stdout);
}

#include "../Places.h"

#include <cerrno>
#include <filesystem>

std::vector<Place> placesOfThisSystem() {
    // A loop that stands in the way of a new directory is an entry that is no directory.
    return {{"BehindALinkLoop", "loop/x", -(10000 + ELOOP), -(10000 + ENOTDIR)},
            {"TooLongAPath", std::string(5000, '/') + "x", -(10000 + ENAMETOOLONG)}};
}

void layOut(const std::string& directory) { std::filesystem::create_symlink("loop", directory + "/loop"); }

void takeAway(const std::string& directory) { std::filesystem::remove(directory + "/loop"); }

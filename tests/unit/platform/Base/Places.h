// Paths that lead nowhere, as each system knows them.
#pragma once

#include <string>
#include <vector>

struct Place {
    const char* name;
    std::string below;  ///< of the test's directory; empty stands for no path at all
    int error;          ///< as ErrorInfo::getLastError tells it
    /// That of making such a directory, where it is another; 0 where it is the same.
    int errorOfMaking = 0;
};

/// Those that only this system has, or that it spells in its own way.
std::vector<Place> placesOfThisSystem();
/// Puts what they need into a directory, and takes it away again.
void layOut(const std::string& directory);
void takeAway(const std::string& directory);

// How much of the costly tests a system bears: one takes a hundred times as long as the other to start a program.
#pragma once

#include <vector>

namespace effort {

/// Of the places at which something is broken off, each so manieth is tried.
extern const int kStep;
/// Kills of a batch, and the files of what is upgraded then.
extern const int kKills;
extern const int kFiles;

/// Those of the numbers from 1 to count that are tried, the last always. @param choice other ones for each
std::vector<int> triedOf(int count, int choice);

}  // namespace effort

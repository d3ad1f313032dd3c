#include "Effort.h"

std::vector<int> effort::triedOf(int count, int choice) {
    std::vector<int> tried;
    for (int at = 1 + choice * 7 % kStep; at < count; at += kStep) tried.push_back(at);
    tried.push_back(count);
    return tried;
}

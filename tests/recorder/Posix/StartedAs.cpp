#include "StartedAs.h"

#include <unistd.h>

#include <filesystem>

StartedAs StartedAs::ofThisProcess(int count, char** words) {
    StartedAs started;
    started.id = static_cast<unsigned int>(::getpid());
    started.directory = std::filesystem::current_path().string();
    for (int i = 1; i < count; ++i) started.arguments.emplace_back(words[i]);
    return started;
}

// How a program was started, as it sees it itself.
#pragma once

#include <string>
#include <vector>

struct StartedAs {
    unsigned int id = 0;
    std::string directory;               ///< the one that it runs in
    std::string window;                  ///< "shown" or "hidden"; empty where programs have no window
    std::string line;                    ///< the command line behind the program, where there is one
    std::vector<std::string> arguments;  ///< without the program

    static StartedAs ofThisProcess(int count, char** words);
};

// Tells the test that started it how it was started, and runs until the test lets it go.
#include <exception>

#include "Sockets.h"
#include "StartedAs.h"

int main(int count, char** words) try {
    namespace sockets = support::sockets;
    const StartedAs started = StartedAs::ofThisProcess(count, words);
    if (started.arguments.empty()) return 1;
    const auto test = sockets::connectToLoopback(static_cast<uint16_t>(std::stoul(started.arguments.front())));
    std::string report = std::to_string(started.id);
    for (const auto& field : {started.directory, started.window, started.line}) report += '\n' + field;
    for (size_t i = 1; i < started.arguments.size(); ++i) report += '\n' + started.arguments[i];
    report += '\0';
    sockets::sendAll(test, report);
    char byte = 0;
    while (sockets::receive(test, &byte, 1) > 0) {
    }
    sockets::close(test);
    return 0;
} catch (const std::exception&) {
    return 1;
}

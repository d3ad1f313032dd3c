#include "StartedPrograms.h"

#include <sstream>
#include <stdexcept>

namespace support {

StartedProgram::StartedProgram(sockets::Socket connection) : mConnection(connection) {
    std::string report;
    for (char byte = 1; byte != 0;) {
        if (sockets::receive(mConnection, &byte, 1) == 0) throw std::runtime_error("a started program told nothing");
        if (byte != 0) report += byte;
    }
    std::istringstream fields(report);
    std::string field;
    std::getline(fields, field);
    id = static_cast<unsigned int>(std::stoul(field));
    std::getline(fields, directory);
    std::getline(fields, window);
    std::getline(fields, line);
    const std::string rest = fields.eof() ? "" : report.substr(static_cast<size_t>(fields.tellg()));
    if (fields.eof()) return;
    for (size_t begin = 0; begin <= rest.size();) {
        const size_t end = std::min(rest.find('\n', begin), rest.size());
        arguments.push_back(rest.substr(begin, end - begin));
        begin = end + 1;
    }
}

StartedProgram::StartedProgram(StartedProgram&& other) noexcept
    : id(other.id),
      directory(std::move(other.directory)),
      window(std::move(other.window)),
      line(std::move(other.line)),
      arguments(std::move(other.arguments)),
      mConnection(std::exchange(other.mConnection, sockets::kNone)) {}

void StartedProgram::letGo() {
    if (mConnection != sockets::kNone) sockets::close(std::exchange(mConnection, sockets::kNone));
}

StartedPrograms::StartedPrograms() : mListener(sockets::listenOnLoopback(mPort)) {}

std::string StartedPrograms::program() { return ORV_RECORDER; }

}  // namespace support

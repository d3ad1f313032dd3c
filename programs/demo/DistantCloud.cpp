#include "DistantCloud.h"

#include <httplib.h>

#include <stdexcept>

void DistantCloud::tell(const std::string& what, const Release& release, size_t bytesPerSecond,
                        const std::string& body) const {
    httplib::Client client("http://" + mAddress);
    const httplib::Params params{{"version", release.version},
                                 {"date", release.date},
                                 {"note", release.note},
                                 {"rate", std::to_string(bytesPerSecond)}};
    const auto answer =
        client.Put(httplib::append_query_params("/demonstration/" + what, params), body, "application/octet-stream");
    if (!answer || answer->status != 200) throw std::runtime_error("the cloud at " + mAddress + " does not answer");
}

void DistantCloud::offer(const Release& release, const std::string& packageBytes, size_t bytesPerSecond) {
    tell("offer", release, bytesPerSecond, packageBytes);
}

void DistantCloud::publish(const Release& release) { tell("note", release, 0, {}); }

// What peers have a node fetch and install.
#include <cstddef>

#include "TopicSite.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const TopicSite::Topics topics{"topic_upgrade_startinstall", "topic_upgrade_getinstallpos",
                                          "topic_upgrade_startdownload", "topic_upgrade_getdownloadpos"};
    TopicSite::shared().run(topics, {reinterpret_cast<const char*>(data), size});
    return 0;
}

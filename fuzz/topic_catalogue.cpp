// What peers ask of a node's catalogue.
#include <cstddef>

#include "TopicSite.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const TopicSite::Topics topics{"topic_upgrade_requestversion", "topic_upgrade_requestreleasehistory",
                                          "topic_upgrade_queryversion", "topic_upgrade_queryreleasehistory",
                                          "topic_upgrade_notifyupdate"};
    TopicSite::shared().run(topics, {reinterpret_cast<const char*>(data), size});
    return 0;
}

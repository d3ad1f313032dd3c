// Packages that peers pull from a node and push to it, chunk by chunk.
#include <cstddef>

#include "TopicSite.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const TopicSite::Topics topics{"topic_upgrade_downloadversion", "topic_upgrade_postversion"};
    TopicSite::shared().run(topics, {reinterpret_cast<const char*>(data), size});
    return 0;
}

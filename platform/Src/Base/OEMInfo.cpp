#include "Public/Base/OEMInfo.h"

#include <mutex>

namespace Public::Base {

namespace {
const OEMDefine kDefault{"Tarnwick Orv"};
std::mutex sMutex;  // guards sDefine
OEMDefine sDefine = kDefault;
}  // namespace

OEMDefine OEMInfo::getOemInfo() {
    std::lock_guard lock(sMutex);
    return sDefine;
}

void OEMInfo::setOemInfo(const OEMDefine& define) {
    std::lock_guard lock(sMutex);
    sDefine = define.programDataDirectory.empty() ? kDefault : define;
}

}  // namespace Public::Base

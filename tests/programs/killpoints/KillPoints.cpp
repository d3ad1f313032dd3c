#include "KillPoints.h"

#include <atomic>

#include "KillPoint.h"

namespace killpoints {

namespace {

std::atomic<bool> sArmed{false};
std::atomic<int> sCount{0};
int sAt = 0;
Fault sFault = Fault::Kill;
std::recursive_mutex sMutex;

}  // namespace

void arm(int at, Fault fault, const char* attic) {
    unsynced().setAttic(attic);
    sCount = 0;
    sAt = at;
    sFault = fault;
    sArmed = true;
}

int counted() { return sCount; }

bool isArmed() { return sArmed; }

bool halvesWrites() { return sFault == Fault::HalfWrite; }

Unsynced& unsynced() {
    static Unsynced sUnsynced;
    return sUnsynced;
}

Point::Point() : mArmed(sArmed) {
    if (!mArmed) return;
    mLock = std::unique_lock(sMutex);
    mIsLast = ++sCount == sAt;
}

Point& Point::pass() {
    if (!mIsLast) return *this;
    sArmed = false;
    if (sFault == Fault::PowerCut || sFault == Fault::DataLoss) unsynced().lose(sFault == Fault::PowerCut);
    killThisProcess();
}

}  // namespace killpoints

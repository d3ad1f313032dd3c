#include "FaultRun.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// A number that a child leaves to its parent.
class SharedNumber {
public:
    SharedNumber()
        : mNumber(static_cast<int*>(
              ::mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
    ~SharedNumber() { ::munmap(mNumber, sizeof(int)); }
    SharedNumber(const SharedNumber&) = delete;
    SharedNumber& operator=(const SharedNumber&) = delete;
    int& operator*() const { return *mNumber; }

private:
    int* const mNumber;
};

}  // namespace

FaultRun upgradeToFault(const UpgradeOrder& order, int at, killpoints::Fault fault, const std::string& attic) {
    const SharedNumber changes;
    const pid_t child = ::fork();
    if (child == 0) {
        killpoints::arm(at, fault, attic.c_str());
        upgrade(order);
        *changes = killpoints::counted();
        ::_exit(0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) || WTERMSIG(status) == SIGKILL) << "at " << at;
    return {WIFEXITED(status), *changes};
}

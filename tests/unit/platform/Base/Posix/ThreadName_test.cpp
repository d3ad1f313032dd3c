// The names of threads, as debuggers see them.
#include <pthread.h>

#include "Public/Base/Thread.h"

using Public::Base::Thread;

namespace {

class NamedBody : public Thread {
public:
    explicit NamedBody(const std::string& name) : Thread(name) {}
    ~NamedBody() override { destroyThread(); }
    std::string seen;

private:
    void threadProc() override {
        char name[64] = {};
        pthread_getname_np(pthread_self(), name, sizeof name);
        seen = name;
    }
};

TEST(Thread, BearsItsNameForDebuggers) {
    NamedBody thread("InstallThread");
    ASSERT_TRUE(thread.createThread());
    thread.destroyThread();
    EXPECT_EQ(thread.seen, "InstallThread");
}

TEST(Thread, LongNameIsCutToWhatTheSystemTakes) {
    NamedBody thread("a name of more than fifteen bytes");
    ASSERT_TRUE(thread.createThread());
    thread.destroyThread();
    EXPECT_EQ(thread.seen, "a name of more ");
}

}  // namespace

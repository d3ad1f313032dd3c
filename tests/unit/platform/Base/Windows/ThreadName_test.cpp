// The names of threads, as debuggers see them.
#include "Public/Base/Thread.h"
#include "WideText.h"

using Public::Base::Thread;

namespace {

class NamedBody : public Thread {
public:
    explicit NamedBody(const std::string& name) : Thread(name) {}
    ~NamedBody() override { destroyThread(); }
    std::string seen;

private:
    void threadProc() override {
        using Tell = HRESULT(WINAPI*)(HANDLE, PWSTR*);
        const auto tell = reinterpret_cast<Tell>(
            reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernelbase.dll"), "GetThreadDescription")));
        wchar_t* name = nullptr;
        if (tell == nullptr || tell(::GetCurrentThread(), &name) < 0) return;
        seen = support::narrow(name);
        ::LocalFree(name);
    }
};

TEST(Thread, BearsItsNameForDebuggers) {
    NamedBody thread("InstallThread");
    ASSERT_TRUE(thread.createThread());
    thread.destroyThread();
    EXPECT_EQ(thread.seen, "InstallThread");
}

TEST(Thread, LongNameIsTakenWhole) {
    NamedBody thread("a name of more than fifteen bytes, \xE4\xB8\xAD\xE6\x96\x87");
    ASSERT_TRUE(thread.createThread());
    thread.destroyThread();
    EXPECT_EQ(thread.seen, "a name of more than fifteen bytes, \xE4\xB8\xAD\xE6\x96\x87");
}

}  // namespace

// Lets a test that root runs meet refusals.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <exception>
#include <stdexcept>
#include <string>

namespace support {

/// While it lives, root acts as a user who owns nothing; anybody else stays who he is.
class WithoutRights {
public:
    WithoutRights() {
        if (::geteuid() != 0) return;
        if (::seteuid(kNobody) != 0) throw std::runtime_error("root cannot act as another");
        mWasRoot = true;
    }
    ~WithoutRights() {
        if (mWasRoot && ::seteuid(0) != 0) std::terminate();
    }
    WithoutRights(const WithoutRights&) = delete;
    WithoutRights& operator=(const WithoutRights&) = delete;

private:
    static constexpr uid_t kNobody = 65534;
    bool mWasRoot = false;
};

/// Lets everybody put entries into a directory and take them out.
inline void openToAll(const std::string& directory) { ::chmod(directory.c_str(), 0777); }

}  // namespace support

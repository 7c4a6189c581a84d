// Has this process do with one thread, as another account. Only root can do that; before any other
// thread is made, in a child of the test.
#pragma once

#include <grp.h>
#include <sys/resource.h>
#include <unistd.h>

#include <string>

namespace kalvex::support {

// The folder is that account's from then on. False when it cannot be done.
inline bool LeaveOneThread(const std::string& folder) {
    constexpr uid_t kAccount = 54321;  // nobody else's, whose threads would count as well
    const rlimit one{1, 1};
    return ::chown(folder.c_str(), kAccount, kAccount) == 0 && ::setgroups(0, nullptr) == 0 &&
           ::setgid(kAccount) == 0 && ::setuid(kAccount) == 0 &&
           ::setrlimit(RLIMIT_NPROC, &one) == 0;
}

}  // namespace kalvex::support

#include "platform/posix/AccountName.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "text/CodePage.h"

namespace kalvex::platform {

std::string AccountName() {
    std::vector<char> buffer(1024);
    passwd record;
    passwd* found = nullptr;
    while (getpwuid_r(geteuid(), &record, buffer.data(), buffer.size(), &found) == ERANGE) {
        buffer.resize(buffer.size() * 2);
    }
    return found == nullptr ? std::to_string(geteuid()) : text::FromUtf8(found->pw_name);
}

bool HasSystemGroup(const std::string& name) {
    return getgrnam(name.c_str()) != nullptr;
}

}  // namespace kalvex::platform

#include "platform/posix/HostName.h"

#include <limits.h>
#include <unistd.h>

namespace kalvex::platform {

std::string HostName() {
    char name[HOST_NAME_MAX + 1] = {};
    return ::gethostname(name, sizeof name - 1) == 0 ? name : "localhost";
}

}  // namespace kalvex::platform

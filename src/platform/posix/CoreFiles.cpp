#include "platform/CoreFiles.h"

#include <sys/prctl.h>

#include <cstdlib>
#include <string_view>

namespace kalvex::platform {

void ForbidCoreFiles() {
    const char* wanted = std::getenv("KALVEX_CORE_FILES");
    if (wanted != nullptr && std::string_view(wanted) == "1") return;
    ::prctl(PR_SET_DUMPABLE, 0L, 0L, 0L, 0L);
}

}  // namespace kalvex::platform

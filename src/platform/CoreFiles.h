// Whether the memory of this process may be seen from outside.
#pragma once

namespace kalvex::platform {

// The system keeps no core file of this process, and no other program of its account may look into
// its memory, unless $KALVEX_CORE_FILES is "1". Programs that it starts are not concerned.
void ForbidCoreFiles();

}  // namespace kalvex::platform

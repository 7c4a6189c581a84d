#pragma once

#include <memory>

#include "platform/NetworkProbes.h"

namespace kalvex::platform {

// Once in a process, before the first session and after the last. False where there is no library.
bool StartFtp();
void StopFtp();

// Null when the library has no memory for one.
std::unique_ptr<FtpSession> MakeFtpSession();

}  // namespace kalvex::platform

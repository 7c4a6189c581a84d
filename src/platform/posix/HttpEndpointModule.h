// What the module of the endpoint offers to whoever loads it.
#pragma once

#include "platform/HttpEndpoint.h"

namespace kalvex::platform {

// Below the prefix of the installation.
inline constexpr char kHttpEndpointModule[] = "lib/kalvex/kalvex-health.so";
inline constexpr char kHttpEndpointEntry[] = "MakeKalvexHttpEndpoint";

// The caller owns what it gets.
using HttpEndpointEntry = HttpEndpoint*(MainLoop& loop, HttpText& text);

}  // namespace kalvex::platform

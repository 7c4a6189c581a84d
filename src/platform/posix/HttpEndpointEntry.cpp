#include <utility>

#include "platform/posix/HttpEndpointModule.h"

extern "C" kalvex::platform::HttpEndpoint* MakeKalvexHttpEndpoint(
    kalvex::platform::MainLoop& loop, kalvex::platform::HttpText& text) {
    return kalvex::platform::MakeHttpEndpoint(loop, std::move(text)).release();
}

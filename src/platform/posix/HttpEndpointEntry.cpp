#include <utility>

#include "platform/posix/HttpEndpointModule.h"

extern "C" kalvex::platform::HttpEndpoint* kalvex_make_http_endpoint(
    kalvex::platform::MainLoop& loop, kalvex::platform::HttpText& text) {
    return kalvex::platform::MakeHttpEndpoint(loop, std::move(text)).release();
}

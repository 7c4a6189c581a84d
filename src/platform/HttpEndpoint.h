// A text that programs on this machine read over HTTP. Made, started and destroyed on the main
// thread; requests are served by a few threads of its own, which touch nothing but their clients.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/MainLoop.h"

namespace kalvex::platform {

struct HttpText {
    std::string path;         // that it is found by, such as "/metrics"
    std::string contentType;  // with its character set
    // Makes the text, UTF-8. Called on the main thread.
    std::function<std::string()> render;
};

// Clients that are being served are left when it is destroyed.
class HttpEndpoint {
  public:
    HttpEndpoint() = default;
    virtual ~HttpEndpoint() = default;
    HttpEndpoint(const HttpEndpoint&) = delete;
    HttpEndpoint& operator=(const HttpEndpoint&) = delete;

    // Listens on "127.0.0.1:9464" or "[::1]:9464", port 0 for any that is free, or on the local
    // socket whose path is given, which begins with "/". False, with the reason, for an address
    // that is not this machine's own, or one that is taken. Once.
    virtual bool Start(const std::string& address, std::string& error) = 0;

    // Where it listens: as given, with the port that was found.
    virtual const std::string& GetAddress() const = 0;
};

// The loop outlives the endpoint. A client has `patience` for its request, and the main loop for
// the text: when it does not come, the answer is 503.
inline constexpr std::chrono::seconds kHttpPatience{2};
std::unique_ptr<HttpEndpoint> MakeHttpEndpoint(MainLoop& loop, HttpText text,
                                               std::chrono::milliseconds patience = kHttpPatience);

// The same from a module that is loaded with the first one, so that who offers nothing starts
// without the library that reads requests. Null, with the reason, without the module.
std::unique_ptr<HttpEndpoint> LoadHttpEndpoint(MainLoop& loop, HttpText text, std::string& error);

}  // namespace kalvex::platform

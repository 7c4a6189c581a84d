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

class HttpEndpoint {
  public:
    // The loop outlives the endpoint. A client has `patience` for its request, and the main loop
    // for the text: when it does not come, the answer is 503.
    HttpEndpoint(MainLoop& loop, HttpText text,
                 std::chrono::milliseconds patience = std::chrono::seconds(2));
    // Clients that are being served are left.
    ~HttpEndpoint();
    HttpEndpoint(const HttpEndpoint&) = delete;
    HttpEndpoint& operator=(const HttpEndpoint&) = delete;

    // Listens on "127.0.0.1:9464" or "[::1]:9464", port 0 for any that is free, or on the local
    // socket whose path is given, which begins with "/". False, with the reason, for an address
    // that is not this machine's own, or one that is taken. Once.
    bool Start(const std::string& address, std::string& error);

    // Where it listens: as given, with the port that was found.
    const std::string& GetAddress() const;

  private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace kalvex::platform

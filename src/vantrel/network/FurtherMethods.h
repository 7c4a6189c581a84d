// Methods that a server offers on its port beside those of sorvane.proto. Parcels are bytes here;
// what they mean is the business of who offers the method. Main thread, unless said otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "vantrel/network/Stream.h"

namespace kalvex::vantrel {

// The server's end of one call, as its answerer sees it. Lives longer than the answerer.
class FurtherLink {
  public:
    virtual ~FurtherLink() = default;

    // A client that takes far too little of what it is sent is cut off.
    virtual void Send(std::string parcel) = 0;
    // Ends the call when everything has been written. `detail` is for the client, UTF-8.
    virtual void Finish(StreamEnd end, std::string detail) = 0;
    // Parcels that the client has not taken yet.
    virtual std::size_t Backlog() const = 0;
    // Address of the other machine, empty when the client is on this one.
    virtual const std::string& PeerAddress() const = 0;
};

// Answers one call; destroyed with its end, which may come at any time.
class FurtherCall {
  public:
    virtual ~FurtherCall() = default;
    virtual void OnParcel(std::string_view bytes) = 0;
    // The backlog, which had been asked for and was not 0, has gone down to 0.
    virtual void OnDrained() {}
    // About once a second.
    virtual void Check() {}
};

// Outlives the server.
class FurtherMethods {
  public:
    virtual ~FurtherMethods() = default;
    // Of the name "/package.Service/Method"; nothing when it is not offered. Any thread.
    virtual std::optional<std::size_t> Find(std::string_view name) const = 0;
    virtual std::unique_ptr<FurtherCall> Accept(std::size_t method, FurtherLink& link) = 0;
};

}  // namespace kalvex::vantrel

// A stream of parcels with a peer, as a carrier keeps it up. The carrier itself, with the library
// it rests on, stays behind this header.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kalvex::vantrel {

// The calls of the service in sorvane.proto.
enum class StreamMethod { Converse, ListVariables };

// How a stream ended.
enum class StreamEnd {
    Orderly,
    Refused,      // the server does not let this client in
    Unreachable,  // there is no server, or none that is trusted
    TooLarge,     // what was sent is beyond what the other side takes
    LoginRefused,
    NotFound,      // what was asked for is not there
    NotAQuestion,  // what was sent is none
    NotOffered,    // the server does not have the method
    Lost,
};

// Main thread, unless said otherwise. What is done to a stream that has ended has no effect.
class Stream {
  public:
    virtual ~Stream() = default;

    // False when too much waits to be written; the parcel has not been taken over.
    virtual bool Send(std::string parcel) = 0;
    // Begins to read, and goes on after a pause. Any thread.
    virtual void Resume() = 0;
    // Ends the stream when all that was sent has been written, or when that takes too long. A
    // client hears of `end` and `detail`, UTF-8.
    virtual void Finish(StreamEnd end, std::string detail = {}) = 0;
    // Ends the stream at once.
    virtual void Cancel() = 0;

    // Of the parcels that were sent: how many have not been written, and whether since the last
    // call none of them has been.
    virtual std::size_t Backlog() const = 0;
    virtual bool IsStuck() = 0;
};

// Called on the carrier's threads, one call at a time but for OnDrained.
class StreamEvents {
  public:
    virtual ~StreamEvents() = default;

    // False: reading pauses until Resume.
    virtual bool OnParcel(std::string_view bytes) = 0;
    // The backlog, which had been asked for and was not 0, has gone.
    virtual void OnDrained() {}
    // Nothing more comes in. `detail` is for the log.
    virtual void OnEnded(StreamEnd end, const std::string& detail) = 0;
};

}  // namespace kalvex::vantrel

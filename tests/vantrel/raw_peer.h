// Peers that keep to no rule but the ones a test gives them: parcels in and out, by hand.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "vantrel/network/ClientCarrier.h"
#include "vantrel/network/Parcel.h"
#include "vantrel/network/ServerPort.h"

namespace kalvex::vantrel {

// Keeps what comes on one stream. Any thread.
class RawEvents final : public StreamEvents {
  public:
    bool OnParcel(std::string_view bytes) override {
        const std::lock_guard lock(m_mutex);
        m_parcels.emplace_back(bytes);
        m_changed.notify_all();
        return true;
    }
    void OnEnded(StreamEnd end, const std::string& detail) override {
        const std::lock_guard lock(m_mutex);
        m_end = end;
        m_detail = detail;
        m_ended = true;
        m_changed.notify_all();
    }

    // The bytes of the first parcel that is not yet taken, when it is there.
    std::string Take() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_taken < m_parcels.size(); });
        return m_parcels[m_taken++];
    }
    StreamEnd AwaitEnd() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_ended; });
        return m_end;
    }

    // Of the end, once it has come.
    std::string Detail() {
        const std::lock_guard lock(m_mutex);
        return m_detail;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::string m_detail;
    std::vector<std::string> m_parcels;
    std::size_t m_taken = 0;
    StreamEnd m_end = StreamEnd::Orderly;
    bool m_ended = false;
};

class RawClient {
  public:
    template <class Method>  // as ClientCarrier has them
    RawClient(const Endpoint& endpoint, Method method) {
        platform::Notice error;
        stream = m_carrier.Dial(endpoint, method, events, SIZE_MAX, error);
    }
    ~RawClient() { stream->Cancel(); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    const std::shared_ptr<RawEvents> events = std::make_shared<RawEvents>();
    std::shared_ptr<Stream> stream;

  private:
    ClientCarrier m_carrier;
};

// Takes one client at a time and leaves everything else to the test.
class RawServer final : private PortEvents {
  public:
    explicit RawServer(const std::string& socket) {
        platform::Notice error;
        m_port = OpenPort({.localSocket = socket, .outboxLimit = SIZE_MAX, .patience = 10'000},
                          *this, nullptr, error);
    }
    ~RawServer() override {
        if (stream) stream->Cancel();
        m_port.reset();
    }

    void AwaitClient() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return stream != nullptr; });
    }

    std::shared_ptr<RawEvents> events;
    std::shared_ptr<Stream> stream;

  private:
    std::shared_ptr<StreamEvents> MakeEvents() override { return std::make_shared<RawEvents>(); }
    void OnCaller(std::shared_ptr<Stream> newStream, std::shared_ptr<StreamEvents> newEvents,
                  StreamMethod, std::string) override {
        const std::lock_guard lock(m_mutex);
        stream = std::move(newStream);
        events = std::static_pointer_cast<RawEvents>(std::move(newEvents));
        stream->Resume();
        m_changed.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::unique_ptr<ServerPort> m_port;
};

}  // namespace kalvex::vantrel

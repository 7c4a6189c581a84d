// Takes the parcels of a stream on the carrier's threads, decodes them there, and hands the content
// over to the main thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "vantrel/network/HandOver.h"
#include "vantrel/network/Parcel.h"
#include "vantrel/network/Stream.h"

namespace kalvex::vantrel {

// Called on the main thread, and never within a call of its own.
template <class Parcel>
class ReceptionListener {
  public:
    virtual ~ReceptionListener() = default;
    virtual void OnParcel(Parcel parcel) = 0;  // no heartbeats
    virtual void OnWireFault(WireFault fault) = 0;
    virtual void OnDrained() {}
    virtual void OnEnded(StreamEnd end, const std::string& detail) = 0;
};

// The weight of a decoded message beside its bytes: values grow when they leave their columns.
template <class Message>
std::size_t WeightOf(const Message& message) {
    return std::visit(
        [](const auto& content) -> std::size_t {
            if constexpr (requires { content.values.size(); }) {
                return content.values.size() * sizeof(value::CVal);
            } else if constexpr (requires { content.entries.size(); }) {
                return content.entries.size() * sizeof(content.entries[0]);
            } else {
                return 0;
            }
        },
        message);
}

template <class Parcel>
class Reception final : public StreamEvents,
                        public std::enable_shared_from_this<Reception<Parcel>> {
  public:
    Reception(platform::MainLoop& loop, std::size_t inboxLimit)
        : m_handOver(std::make_shared<HandOver>(loop, inboxLimit)) {}

    // From now on the stream is read. The listener lasts until Stop. Main thread.
    void Start(const std::shared_ptr<Stream>& stream, ReceptionListener<Parcel>& listener) {
        m_listener = &listener;
        m_handOver->OnRoom([weak = std::weak_ptr(stream)] {
            if (const auto reader = weak.lock()) reader->Resume();
        });
        stream->Resume();
    }

    // What still comes is dropped. Main thread.
    void Stop() { m_handOver->Stop(); }

    // Whether anything has come in since the last call.
    bool TakeHeard() { return m_heard.exchange(false); }

    bool OnParcel(std::string_view bytes) override {
        m_heard = true;
        try {
            return Take(bytes);
        } catch (const std::bad_alloc&) {
            return PushFault(bytes.size(), WireFault::NoMemory);
        }
    }

    void OnDrained() override {
        Push(0, [](Listener& listener) { listener.OnDrained(); });
    }

    void OnEnded(StreamEnd end, const std::string& detail) override {
        Push(0, [end, detail](Listener& listener) { listener.OnEnded(end, detail); });
    }

  private:
    using Listener = ReceptionListener<Parcel>;

    bool Take(std::string_view bytes) {
        Parcel parcel;
        const WireFault fault = Unpack(bytes, parcel);
        if (fault != WireFault::None) return PushFault(bytes.size(), fault);
        if (std::holds_alternative<Heartbeat>(parcel)) return true;
        std::size_t weight = bytes.size();
        if (const auto* message = std::get_if<0>(&parcel)) weight += WeightOf(*message);
        return Push(weight, [parcel = std::move(parcel)](Listener& listener) mutable {
            listener.OnParcel(std::move(parcel));
        });
    }

    bool PushFault(std::size_t weight, WireFault fault) {
        return Push(weight, [fault](Listener& listener) { listener.OnWireFault(fault); });
    }

    template <class Event>
    bool Push(std::size_t weight, Event event) {
        return m_handOver->Push([self = this->shared_from_this(),
                                 event = std::move(event)]() mutable { event(*self->m_listener); },
                                weight);
    }

    std::shared_ptr<HandOver> m_handOver;
    std::atomic<bool> m_heard = false;
    Listener* m_listener = nullptr;
};

}  // namespace kalvex::vantrel

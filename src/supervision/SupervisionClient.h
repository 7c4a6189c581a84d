// Asks a module what it tells about its scripts. Main thread.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/MainLoop.h"
#include "supervision/SupervisionParcels.h"
#include "vantrel/network/ClientCarrier.h"

namespace kalvex::supervision {

// One question and its answer. Destroying it ends the call; nothing is called any more then.
class Inquiry {
  public:
    // A piece of the answer, for Unpack; false when it is none, which ends the call as Lost.
    using Piece = std::function<bool(std::string_view bytes)>;

    // The loop outlives it.
    explicit Inquiry(platform::MainLoop& loop) : m_loop(loop) {}
    ~Inquiry();
    Inquiry(const Inquiry&) = delete;
    Inquiry& operator=(const Inquiry&) = delete;

    // Once. `piece` is called on the main thread, never from within the call.
    void Ask(vantrel::ClientCarrier& carrier, const vantrel::Endpoint& endpoint, Method method,
             const Question& question, Piece piece);

    bool IsOver() const { return m_over; }
    // When it is over: how the module ended it, and its reason, UTF-8.
    vantrel::StreamEnd GetEnd() const { return m_end; }
    const std::string& GetReason() const { return m_reason; }

  private:
    class Events;

    void OnPiece(std::string_view bytes);
    void End(vantrel::StreamEnd end, const std::string& reason);

    platform::MainLoop& m_loop;
    std::shared_ptr<Events> m_events;
    std::shared_ptr<vantrel::Stream> m_stream;
    Piece m_piece;
    bool m_over = false;
    vantrel::StreamEnd m_end = vantrel::StreamEnd::Lost;
    std::string m_reason;
};

}  // namespace kalvex::supervision

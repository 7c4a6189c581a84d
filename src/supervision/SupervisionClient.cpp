#include "supervision/SupervisionClient.h"

#include <utility>

#include "vantrel/network/HandOver.h"
#include "vantrel/network/Stream.h"

namespace kalvex::supervision {

namespace {

constexpr std::size_t kInboxLimit = 4 << 20;   // bytes that wait for the main thread
constexpr std::size_t kOutboxLimit = 1 << 20;  // one question

}  // namespace

class Inquiry::Events final : public vantrel::StreamEvents {
  public:
    Events(platform::MainLoop& loop, Inquiry& inquiry)
        : m_inquiry(inquiry), m_handOver(std::make_shared<vantrel::HandOver>(loop, kInboxLimit)) {}

    void Start(const std::shared_ptr<vantrel::Stream>& stream) {
        m_handOver->OnRoom([weak = std::weak_ptr(stream)] {
            if (const auto reader = weak.lock()) reader->Resume();
        });
        stream->Resume();
    }
    void Stop() { m_handOver->Stop(); }

    bool OnParcel(std::string_view bytes) override {
        return m_handOver->Push([this, parcel = std::string(bytes)] { m_inquiry.OnPiece(parcel); },
                                bytes.size());
    }
    void OnEnded(vantrel::StreamEnd end, const std::string& detail) override {
        m_handOver->Push([this, end, detail] { m_inquiry.End(end, detail); }, 0);
    }

  private:
    Inquiry& m_inquiry;
    const std::shared_ptr<vantrel::HandOver> m_handOver;
};

Inquiry::~Inquiry() {
    if (m_events) m_events->Stop();
    if (m_stream) m_stream->Cancel();
}

void Inquiry::Ask(vantrel::ClientCarrier& carrier, const vantrel::Endpoint& endpoint, Method method,
                  const Question& question, Piece piece) {
    m_piece = std::move(piece);
    m_events = std::make_shared<Events>(m_loop, *this);
    platform::Notice error;
    m_stream = carrier.Dial(endpoint, kMethodNames[static_cast<std::size_t>(method)].data(),
                            m_events, kOutboxLimit, error);
    if (!m_stream) {
        const platform::Translator untranslated;
        return m_events->OnEnded(vantrel::StreamEnd::Unreachable,
                                 platform::InWords(error, untranslated));
    }
    m_events->Start(m_stream);
    // Not ended on this side, which would leave the answer no more than the grace of an end.
    m_stream->Send(Pack(question));
}

void Inquiry::OnPiece(std::string_view bytes) {
    if (m_over || m_piece(bytes)) return;
    End(vantrel::StreamEnd::Lost, {});
    m_stream->Cancel();
}

void Inquiry::End(vantrel::StreamEnd end, const std::string& reason) {
    if (std::exchange(m_over, true)) return;
    m_end = end;
    m_reason = reason;
}

}  // namespace kalvex::supervision

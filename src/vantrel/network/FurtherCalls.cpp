#include "vantrel/network/FurtherCalls.h"

#include <limits>
#include <new>
#include <utility>

#include "platform/Secret.h"

namespace kalvex::vantrel {

// What comes in, from the library's threads to the call.
class FurtherCalls::Events final : public StreamEvents,
                                   public std::enable_shared_from_this<Events> {
  public:
    explicit Events(platform::MainLoop& loop)
        : m_handOver(std::make_shared<HandOver>(loop, kMaxQuestionBytes)) {}

    void Start(const std::shared_ptr<Stream>& stream, Call& call) {
        m_call = &call;
        m_handOver->OnRoom([weak = std::weak_ptr(stream)] {
            if (const auto reader = weak.lock()) reader->Resume();
        });
        stream->Resume();
    }
    void Stop() { m_handOver->Stop(); }

    bool OnParcel(std::string_view bytes) override;
    void OnDrained() override;
    void OnEnded(StreamEnd end, const std::string& detail) override;

  private:
    const std::shared_ptr<HandOver> m_handOver;
    Call* m_call = nullptr;
};

class FurtherCalls::Call final : public FurtherLink {
  public:
    Call(FurtherCalls& calls, std::shared_ptr<Stream> stream, std::shared_ptr<Events> events,
         std::string address)
        : m_calls(calls),
          m_stream(std::move(stream)),
          m_events(std::move(events)),
          m_address(std::move(address)),
          m_watch(calls.m_clock()) {}
    ~Call() override { End(StreamEnd::Unreachable, {}); }

    void Begin(std::size_t method) {
        Serve([&] {
            m_answerer = m_calls.m_methods.Accept(method, *this);
            if (!m_ended) m_events->Start(m_stream, *this);
        });
    }

    void Send(std::string parcel) override {
        if (m_ended || m_stream->Send(std::move(parcel))) return;
        Cut();
    }
    void Finish(StreamEnd end, std::string detail) override {
        if (m_ended) return;
        End(end, std::move(detail));
        m_calls.Retire(*this);
    }
    std::size_t Backlog() const override { return m_stream->Backlog(); }
    const std::string& PeerAddress() const override { return m_address; }

    void OnParcel(std::string_view bytes) {
        m_heard = true;
        if (bytes.size() > kMaxQuestionBytes) return Finish(StreamEnd::TooLarge, {});
        Serve([&] { m_answerer->OnParcel(bytes); });
    }
    void OnDrained() {
        Serve([&] { m_answerer->OnDrained(); });
    }
    void Cut() {
        if (std::exchange(m_ended, true)) return;
        m_events->Stop();
        m_stream->Cancel();
        m_calls.Retire(*this);
    }

    // Who has asked once may wait as long as it likes for what comes.
    void Check() {
        if (m_ended) return;
        const PeerWatch::Due due = m_watch.Look(
            m_calls.m_clock(), {.heard = m_heard, .spoke = true, .stuck = m_stream->IsStuck()});
        if (due != PeerWatch::Due::Nothing) return Cut();
        Serve([&] { m_answerer->Check(); });
    }

  private:
    // A call ends for which there is no memory.
    template <class Work>
    void Serve(Work work) {
        if (m_ended) return;
        try {
            work();
        } catch (const std::bad_alloc&) {
            Cut();
        }
    }

    void End(StreamEnd end, std::string detail) {
        if (std::exchange(m_ended, true)) return;
        m_events->Stop();
        m_stream->Finish(end, std::move(detail));
    }

    FurtherCalls& m_calls;
    const std::shared_ptr<Stream> m_stream;
    const std::shared_ptr<Events> m_events;
    const std::string m_address;
    PeerWatch m_watch;
    bool m_heard = false;
    bool m_ended = false;
    std::unique_ptr<FurtherCall> m_answerer;
};

bool FurtherCalls::Events::OnParcel(std::string_view bytes) {
    return m_handOver->Push(
        [self = shared_from_this(), parcel = platform::Secret(bytes)] {
            self->m_call->OnParcel(parcel.View());
        },
        bytes.size());
}

void FurtherCalls::Events::OnDrained() {
    m_handOver->Push([self = shared_from_this()] { self->m_call->OnDrained(); }, 0);
}

void FurtherCalls::Events::OnEnded(StreamEnd, const std::string&) {
    m_handOver->Push([self = shared_from_this()] { self->m_call->Cut(); }, 0);
}

FurtherCalls::FurtherCalls(FurtherMethods& methods, platform::MainLoop& loop, SteadyClock clock)
    : m_methods(methods),
      m_loop(loop),
      m_clock(std::move(clock)),
      m_work(std::make_shared<HandOver>(loop, std::numeric_limits<std::size_t>::max())) {}

FurtherCalls::~FurtherCalls() {
    Close();
}

void FurtherCalls::Close() {
    m_work->Stop();
    m_calls.clear();
}

void FurtherCalls::Check() {
    for (const auto& [call, owned] : m_calls) call->Check();
}

std::shared_ptr<StreamEvents> FurtherCalls::MakeEvents() {
    return std::make_shared<Events>(m_loop);
}

void FurtherCalls::OnCaller(std::shared_ptr<Stream> stream, std::shared_ptr<StreamEvents> events,
                            std::size_t method, std::string address) {
    auto own = std::static_pointer_cast<Events>(std::move(events));
    m_work->Push([this, stream = std::move(stream), own = std::move(own), method,
                  address = std::move(address)] { Admit(stream, own, method, address); },
                 0);
}

void FurtherCalls::Admit(std::shared_ptr<Stream> stream, std::shared_ptr<Events> events,
                         std::size_t method, std::string address) {
    if (m_calls.size() >= kMostFurtherCalls) {
        events->Stop();
        return stream->Finish(StreamEnd::TooLarge, {});
    }
    auto call =
        std::make_unique<Call>(*this, std::move(stream), std::move(events), std::move(address));
    Call& admitted = *call;
    m_calls.emplace(&admitted, std::move(call));
    admitted.Begin(method);
}

void FurtherCalls::Retire(Call& call) {
    m_work->Push([this, &call] { m_calls.erase(&call); }, 0);
}

}  // namespace kalvex::vantrel

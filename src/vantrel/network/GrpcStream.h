// What both ends of a gRPC stream have in common. Included by the two carriers only.
#pragma once

#include <grpc/support/log.h>
#include <grpcpp/alarm.h>
#include <grpcpp/support/byte_buffer.h>
#include <grpcpp/support/status.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/Secret.h"
#include "vantrel/network/Outbox.h"
#include "vantrel/network/Parcel.h"
#include "vantrel/network/Stream.h"

namespace kalvex::vantrel {

// Above our own bound, so that what is a little too large is told apart from what is no parcel.
inline constexpr int kLibraryMaxBytes = static_cast<int>(2 * kMaxParcelBytes);

// Of a parcel with a login, at most.
inline constexpr std::size_t kLongestLogin = 8 << 10;

// For what has been sent last to be written and for the other side to end as well.
inline constexpr std::chrono::seconds kGrace{1};

inline constexpr char kConverse[] = "/sorvane.v1.DataServer/Converse";
inline constexpr char kListVariables[] = "/sorvane.v1.DataServer/ListVariables";

struct StreamEndRow {
    StreamEnd end;
    grpc::StatusCode code;
};

inline constexpr StreamEndRow kStreamEnds[] = {
    {StreamEnd::Orderly, grpc::StatusCode::OK},
    {StreamEnd::Refused, grpc::StatusCode::PERMISSION_DENIED},
    {StreamEnd::Unreachable, grpc::StatusCode::UNAVAILABLE},
    {StreamEnd::TooLarge, grpc::StatusCode::RESOURCE_EXHAUSTED},
    {StreamEnd::LoginRefused, grpc::StatusCode::UNAUTHENTICATED},
    {StreamEnd::NotFound, grpc::StatusCode::NOT_FOUND},
    {StreamEnd::NotAQuestion, grpc::StatusCode::INVALID_ARGUMENT},
    {StreamEnd::NotOffered, grpc::StatusCode::UNIMPLEMENTED},
    {StreamEnd::Lost, grpc::StatusCode::CANCELLED},
};

// Before anything else of the library, on the main thread. Names of hosts are resolved as by every
// other program of the machine, and nothing is written to standard error; the environment can want
// both otherwise.
inline void PrepareLibrary() {
    ::setenv("GRPC_DNS_RESOLVER", "native", 0);
    if (std::getenv("GRPC_VERBOSITY") == nullptr) gpr_set_log_function([](gpr_log_func_args*) {});
}

// `Reactor` is a reactor of byte buffers. It is kept alive from Begin until the library is done
// with it; then the derived class calls Release.
template <class Reactor>
class GrpcStream : public Stream,
                   public Reactor,
                   public std::enable_shared_from_this<GrpcStream<Reactor>> {
  public:
    bool Send(std::string parcel) final {
        const Outbox::Put put = m_outbox.Add(std::move(parcel));
        if (put == Outbox::Put::WriterNeeded) WriteNext();
        return put != Outbox::Put::Full;
    }

    void Resume() final {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_reading, true)) {
            m_resumed = true;
        } else {
            ReadLocked();
        }
    }

    std::size_t Backlog() const final { return m_outbox.Backlog(); }
    bool IsStuck() final { return m_outbox.IsStuck(); }

  protected:
    GrpcStream(std::shared_ptr<StreamEvents> events, std::size_t outboxLimit)
        : m_events(std::move(events)), m_outbox(outboxLimit) {}

    void KeepAlive() { m_self = this->shared_from_this(); }
    std::shared_ptr<GrpcStream> TakeSelf() { return std::move(m_self); }

    // Whatever was sent has been written, and nothing more will be. Under the lock.
    virtual void OnAllWrittenLocked() = 0;
    // Nothing more can be read. Under the lock.
    virtual void OnReadingEndedLocked() = 0;
    // A parcel could not be written. Under the lock.
    virtual void OnWritingFailedLocked() {}

    // Ends the writing; the stream is cancelled when that, or the peer's end after it, takes too
    // long.
    void CloseOutbox() {
        if (std::exchange(m_closing, true)) return;
        SetAlarm();
        if (m_outbox.Close() == Outbox::Put::WriterNeeded) WriteNext();
    }

    // A reader that pauses would not notice the end of the stream.
    void ReadOnLocked() {
        m_resumed = true;
        if (!std::exchange(m_reading, true)) ReadLocked();
    }

    StreamEvents& Events() { return *m_events; }

    std::mutex m_mutex;
    bool m_over = false;  // no operation may be started any more

  private:
    void SetAlarm() {
        m_alarm.Set(std::chrono::system_clock::now() + kGrace,
                    [weak = this->weak_from_this()](bool expired) {
                        const auto self = expired ? weak.lock() : nullptr;
                        if (!self) return;
                        if (self->IsStuck()) {
                            self->Cancel();
                        } else {
                            self->SetAlarm();
                        }
                    });
    }

    void ReadLocked() {
        if (!m_over) this->StartRead(&m_bufferIn);
    }

    void OnReadDone(bool ok) final {
        if (!ok) {
            const std::lock_guard lock(m_mutex);
            OnReadingEndedLocked();
            return;
        }
        grpc::Slice bytes;
        if (!m_bufferIn.TrySingleSlice(&bytes).ok()) m_bufferIn.DumpToSingleSlice(&bytes);
        const bool goOn =
            m_events->OnParcel({reinterpret_cast<const char*>(bytes.begin()), bytes.size()});
        if (bytes.size() <= kLongestLogin) WipeParcel(bytes);
        const std::lock_guard lock(m_mutex);
        if (goOn || std::exchange(m_resumed, false)) {
            ReadLocked();
        } else {
            m_reading = false;
        }
    }

    // The bytes that have been read are nobody else's any more, and may hold a password.
    void WipeParcel(const grpc::Slice& whole) {
        std::vector<grpc::Slice> slices;
        m_bufferIn.Dump(&slices);
        slices.push_back(whole);
        for (const grpc::Slice& slice : slices) {
            platform::WipeMemory(const_cast<std::uint8_t*>(slice.begin()), slice.size());
        }
    }

    // Nothing of it is left in memory once the library has written it.
    static grpc::Slice SelfWiping(std::string parcel) {
        auto* own = new std::string(std::move(parcel));
        return {own->data(), own->size(),
                [](void* written) {
                    const std::unique_ptr<std::string> gone(static_cast<std::string*>(written));
                    platform::WipeMemory(gone->data(), gone->size());
                },
                own};
    }

    // One writer at a time, by the outbox.
    void WriteNext() {
        std::string parcel;
        bool drained = false;
        const Outbox::Next next = m_outbox.Take(parcel, drained);
        if (drained) m_events->OnDrained();
        if (next == Outbox::Next::Nothing) return;
        const std::lock_guard lock(m_mutex);
        if (m_over) return;
        if (next == Outbox::Next::End) return OnAllWrittenLocked();
        const grpc::Slice slice =
            parcel.size() <= kLongestLogin ? SelfWiping(std::move(parcel)) : grpc::Slice(parcel);
        m_bufferOut = grpc::ByteBuffer(&slice, 1);
        this->StartWrite(&m_bufferOut);
    }

    void OnWriteDone(bool ok) final {
        if (ok) return WriteNext();
        const std::lock_guard lock(m_mutex);
        OnWritingFailedLocked();
    }

    std::shared_ptr<StreamEvents> m_events;
    Outbox m_outbox;
    grpc::Alarm m_alarm;
    grpc::ByteBuffer m_bufferIn;
    grpc::ByteBuffer m_bufferOut;
    bool m_closing = false;  // main thread
    bool m_reading = false;
    bool m_resumed = false;  // asked to go on before the pause was known
    std::shared_ptr<GrpcStream> m_self;
};

}  // namespace kalvex::vantrel

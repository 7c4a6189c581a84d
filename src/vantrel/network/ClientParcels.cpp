// What a client says: out at the client, in at the server.
#include "platform/PasswordHash.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"
#include "vantrel/network/ListCutter.h"
#include "vantrel/network/Parcel.h"

namespace kalvex::vantrel {

namespace {

using namespace wire;  // NOLINT

// Handle or id, kind, flags, two times.
constexpr std::size_t kEntryBytes = 40;

class Packer {
  public:
    explicit Packer(PackedRequest& packed) : m_packed(packed) {}

    void operator()(const LoginRequest& message) {
        pb::ClientParcel parcel;
        pb::Login& out = *parcel.mutable_login();
        out.set_protocol_version(message.protocolVersion);
        out.set_module_type(message.moduleType);
        out.set_term(message.term);
        if (message.changesSince) out.set_changes_since(*message.changesSince);
        if (PutText(message.clientName, kMaxNameBytes, *out.mutable_client_name()) &&
            PutText(message.user, kMaxNameBytes, *out.mutable_user()) &&
            PutText(message.password.View(), kMaxNameBytes, *out.mutable_password()) &&
            PutText(message.token, kMaxNameBytes, *out.mutable_token()) &&
            PutText(message.pair, kMaxNameBytes, *out.mutable_pair())) {
            Put(parcel);
            return platform::WipePassword(*out.mutable_password());
        }
        Refuse(
            LoginResult{ResultBadRequest, text::FromUtf8(WireFaultText(WireFault::NameTooLong))});
    }

    void operator()(const SubscribeRequest& message) {
        KALVEX_LIST_CUTTER(ClientParcel, Subscribe, subscribe) cutter(m_packed.parcels);
        cutter.Pattern().mutable_subscribe()->set_flags(message.flags);
        for (const VariableHandle handle : message.removed) {
            cutter.Next(kEntryBytes).add_removed_handles(handle);
        }
        AccessErrors refused;
        std::string name;
        for (const SubscribeRequest::Entry& entry : message.added) {
            if (!PutText(entry.name, kMaxNameBytes, name)) {
                refused.entries.push_back({entry.handle, ResultBadRequest});
                continue;
            }
            pb::Subscribe& piece = cutter.Next(kEntryBytes + name.size());
            piece.add_added_handles(entry.handle);
            piece.add_added_names(std::move(name));
        }
        cutter.Finish(!message.last);
        if (!refused.entries.empty()) Refuse(std::move(refused));
    }

    void operator()(const ReadRequests& message) {
        KALVEX_LIST_CUTTER(ClientParcel, ReadRequests, read_requests) cutter(m_packed.parcels);
        std::string name;
        for (const ReadRequest& request : message.requests) {
            if (!PutText(request.variable, kMaxNameBytes, name)) {
                Refuse(ReadAnswer{.id = request.id, .result = ResultBadRequest, .values = {}});
                continue;
            }
            pb::ReadRequest& entry = *cutter.Next(kEntryBytes + name.size()).add_requests();
            entry.set_id(request.id);
            entry.set_kind(static_cast<pb::Kind>(request.kind));
            entry.set_variable(std::move(name));
            entry.set_from(request.from);
            entry.set_to(request.to);
            entry.set_points(request.points);
        }
        cutter.Finish();
    }

    void operator()(const CancelRequests& message) {
        KALVEX_LIST_CUTTER(ClientParcel, CancelRequests, cancel_requests) cutter(m_packed.parcels);
        for (const RequestId id : message.ids) cutter.Next(kEntryBytes).add_ids(id);
        cutter.Finish();
    }

    void operator()(const ModifyRequests& message) {
        KALVEX_LIST_CUTTER(ClientParcel, ModifyRequests, modify_requests) cutter(m_packed.parcels);
        ModifyResults refused;
        for (const ModifyRequest& request : message.requests) {
            pb::ModifyRequest entry;
            if (!PutText(request.variable, kMaxNameBytes, *entry.mutable_variable()) ||
                !Fits(request.value)) {
                refused.entries.push_back({request.id, ResultBadRequest});
                continue;
            }
            PutValue(request.value, *entry.mutable_value());
            entry.set_id(request.id);
            entry.set_kind(static_cast<pb::Kind>(request.kind));
            entry.set_time(request.time);
            entry.set_serial(request.serial);
            const std::size_t bytes = entry.ByteSizeLong();
            *cutter.Next(bytes).add_requests() = std::move(entry);
        }
        cutter.Finish();
        if (!refused.entries.empty()) Refuse(std::move(refused));
    }

    void operator()(const ArchiveModifyRequest& message) {
        pb::ClientParcel parcel;
        pb::ArchiveModifyRequest& out = *parcel.mutable_archive_modify_request();
        const bool fits = PutText(message.variable, kMaxNameBytes, *out.mutable_variable()) &&
                          message.values.size() <= kMaxListEntries &&
                          std::all_of(message.values.begin(), message.values.end(), Fits);
        if (fits) {
            for (const value::CVal& value : message.values) AddValue(value, *out.mutable_values());
        }
        Squeeze(*out.mutable_values());
        out.set_id(message.id);
        out.set_from(message.from);
        out.set_to(message.to);
        out.set_serial(message.serial);
        if (fits && parcel.ByteSizeLong() <= kMaxParcelBytes) return Put(parcel);
        Refuse(ModifyResults{{{message.id, ResultBadRequest}}});
    }

    void operator()(const PeriodRequest& message) {
        pb::ClientParcel parcel;
        pb::PeriodRequest& out = *parcel.mutable_period_request();
        if (!PutText(message.variable, kMaxNameBytes, *out.mutable_variable())) {
            if (message.id != 0) Refuse(ModifyResults{{{message.id, ResultBadRequest}}});
            return;
        }
        out.set_action(static_cast<pb::PeriodAction>(static_cast<int>(message.action) +
                                                     pb::PERIOD_ACTION_INIT));
        out.set_kind(static_cast<pb::Kind>(message.kind));
        out.set_time(message.time);
        out.set_id(message.id);
        out.set_serial(message.serial);
        Put(parcel);
    }

    void operator()(const LastMessagesRequest& message) {
        pb::ClientParcel parcel;
        parcel.mutable_last_messages_request()->set_count(message.count);
        Put(parcel);
    }

    void operator()(const AcknowledgeRequests& message) {
        KALVEX_LIST_CUTTER(ClientParcel, AcknowledgeRequests, acknowledge_requests)
        cutter(m_packed.parcels);
        ModifyResults refused;
        std::string name;
        for (const AcknowledgeRequest& request : message.requests) {
            if (!PutText(request.variable, kMaxNameBytes, name)) {
                refused.entries.push_back({request.id, ResultBadRequest});
                continue;
            }
            pb::AcknowledgeRequest& entry = *cutter.Next(kEntryBytes + name.size()).add_requests();
            entry.set_id(request.id);
            entry.set_variable(std::move(name));
            entry.set_serial(request.serial);
        }
        cutter.Finish();
        if (!refused.entries.empty()) Refuse(std::move(refused));
    }

    void operator()(const TakeTerm& message) {
        pb::ClientParcel parcel;
        parcel.mutable_take_term()->set_term(message.term);
        Put(parcel);
    }

  private:
    void Put(const pb::ClientParcel& parcel) {
        m_packed.parcels.push_back(parcel.SerializeAsString());
    }
    void Refuse(ServerMessage answer) { m_packed.refusals.push_back(std::move(answer)); }

    PackedRequest& m_packed;
};

// ---- in

LoginRequest Read(const pb::Login& in, Reader& reader) {
    LoginRequest message;
    message.protocolVersion = reader.Narrow<std::uint16_t>(in.protocol_version());
    message.moduleType = reader.Narrow<std::uint16_t>(in.module_type());
    message.clientName = reader.Name(in.client_name());
    message.user = reader.Name(in.user());
    message.password = reader.Name(in.password());
    message.token = reader.Name(in.token());
    message.pair = reader.Name(in.pair());
    message.term = in.term();
    if (in.has_changes_since()) message.changesSince = in.changes_since();
    return message;
}

SubscribeRequest Read(const pb::Subscribe& in, Reader& reader) {
    SubscribeRequest message;
    message.flags = in.flags();
    message.last = !in.more();
    if (!reader.Columns({in.added_handles_size(), in.added_names_size()}) ||
        !reader.Columns({in.removed_handles_size()})) {
        return message;
    }
    message.added.reserve(in.added_names_size());
    for (int index = 0; index < in.added_names_size(); ++index) {
        message.added.push_back({in.added_handles(index), reader.Name(in.added_names(index))});
    }
    message.removed.assign(in.removed_handles().begin(), in.removed_handles().end());
    return message;
}

ReadRequests Read(const pb::ReadRequests& in, Reader& reader) {
    ReadRequests message;
    if (!reader.Columns({in.requests_size()})) return message;
    message.requests.reserve(in.requests_size());
    for (const pb::ReadRequest& request : in.requests()) {
        message.requests.push_back({request.id(), reader.Kind(request.kind()),
                                    reader.Name(request.variable()), request.from(), request.to(),
                                    request.points()});
    }
    return message;
}

CancelRequests Read(const pb::CancelRequests& in, Reader& reader) {
    CancelRequests message;
    if (reader.Columns({in.ids_size()})) message.ids.assign(in.ids().begin(), in.ids().end());
    return message;
}

ModifyRequests Read(const pb::ModifyRequests& in, Reader& reader) {
    ModifyRequests message;
    if (!reader.Columns({in.requests_size()})) return message;
    message.requests.reserve(in.requests_size());
    for (const pb::ModifyRequest& request : in.requests()) {
        message.requests.push_back({request.id(), reader.Kind(request.kind()),
                                    reader.Name(request.variable()), request.time(),
                                    reader.Value(request.value()), request.serial()});
    }
    return message;
}

ArchiveModifyRequest Read(const pb::ArchiveModifyRequest& in, Reader& reader) {
    return {in.id(), reader.Name(in.variable()), in.from(),
            in.to(), reader.Values(in.values()), in.serial()};
}

PeriodRequest Read(const pb::PeriodRequest& in, Reader& reader) {
    if (in.action() < pb::PERIOD_ACTION_INIT || in.action() > pb::PERIOD_ACTION_REFRESH) {
        reader.Note(WireFault::NumberOutOfRange);
        return {};
    }
    return {static_cast<PeriodAction>(in.action() - pb::PERIOD_ACTION_INIT),
            reader.Kind(in.kind()),
            reader.Name(in.variable()),
            in.time(),
            in.id(),
            in.serial()};
}

AcknowledgeRequests Read(const pb::AcknowledgeRequests& in, Reader& reader) {
    AcknowledgeRequests message;
    if (!reader.Columns({in.requests_size()})) return message;
    message.requests.reserve(in.requests_size());
    for (const pb::AcknowledgeRequest& request : in.requests()) {
        message.requests.push_back(
            {request.id(), reader.Name(request.variable()), request.serial()});
    }
    return message;
}

ClientParcel Read(const pb::ClientParcel& in, Reader& reader) {
    switch (in.content_case()) {
        case pb::ClientParcel::kLogin:
            return Read(in.login(), reader);
        case pb::ClientParcel::kSubscribe:
            return Read(in.subscribe(), reader);
        case pb::ClientParcel::kReadRequests:
            return Read(in.read_requests(), reader);
        case pb::ClientParcel::kCancelRequests:
            return Read(in.cancel_requests(), reader);
        case pb::ClientParcel::kModifyRequests:
            return Read(in.modify_requests(), reader);
        case pb::ClientParcel::kArchiveModifyRequest:
            return Read(in.archive_modify_request(), reader);
        case pb::ClientParcel::kPeriodRequest:
            return Read(in.period_request(), reader);
        case pb::ClientParcel::kLastMessagesRequest:
            return LastMessagesRequest{in.last_messages_request().count()};
        case pb::ClientParcel::kTakeTerm:
            return TakeTerm{in.take_term().term()};
        case pb::ClientParcel::kAcknowledgeRequests:
            return Read(in.acknowledge_requests(), reader);
        case pb::ClientParcel::kFarewell:
            return ReadFarewell(in.farewell(), reader);
        case pb::ClientParcel::kHeartbeat:
        case pb::ClientParcel::CONTENT_NOT_SET:
            break;
    }
    return Heartbeat{};
}

}  // namespace

PackedRequest Pack(const ClientMessage& message) {
    PackedRequest packed;
    std::visit(Packer(packed), message);
    return packed;
}

WireFault Unpack(std::string_view bytes, ClientParcel& parcel) {
    pb::ClientParcel in;
    Reader reader;
    if (Parse(bytes, in, reader)) parcel = Read(in, reader);
    if (in.has_login()) platform::WipePassword(*in.mutable_login()->mutable_password());
    return reader.Fault();
}

}  // namespace kalvex::vantrel

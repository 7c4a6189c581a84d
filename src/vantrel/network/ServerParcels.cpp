// What a server says: out at the server, in at the client.
#include "text/CodePage.h"
#include "vantrel/Codes.h"
#include "vantrel/network/ListCutter.h"
#include "vantrel/network/Parcel.h"

namespace kalvex::vantrel {

namespace {

using namespace wire;  // NOLINT

constexpr std::size_t kPairBytes = 10;

bool PutDefinition(const VariableDefinition& definition, pb::VariableDefinition& out) {
    bool fits = PutText(definition.name, kMaxNameBytes, *out.mutable_name());
    for (const auto& [key, text] : definition.attributes) {
        pb::Attribute& attribute = *out.add_attributes();
        fits = fits && PutText(key, kMaxNameBytes, *attribute.mutable_key()) &&
               PutText(text, kMaxTextBytes, *attribute.mutable_text());
    }
    return fits && out.ByteSizeLong() <= kMaxTextBytes;
}

class Packer {
  public:
    explicit Packer(PackedAnswer& packed) : m_packed(packed) {}

    void operator()(const LoginResult& message) {
        pb::ServerParcel parcel;
        pb::LoginResult& out = *parcel.mutable_login_result();
        out.set_code(message.code);
        if (message.sequence) out.set_sequence(*message.sequence);
        if (!PutText(message.text, kMaxTextBytes, *out.mutable_text())) ++m_packed.leftOut;
        Put(parcel);
    }

    void operator()(const VariableDefinitions& message) {
        KALVEX_LIST_CUTTER(ServerParcel, VariableDefinitions, variable_definitions)
        cutter(m_packed.parcels);
        for (const VariableDefinition& definition : message.definitions) {
            pb::VariableDefinition entry;
            if (!PutDefinition(definition, entry)) {
                ++m_packed.leftOut;
                continue;
            }
            const std::size_t bytes = entry.ByteSizeLong();
            *cutter.Next(bytes).add_definitions() = std::move(entry);
        }
        cutter.Finish(!message.last);
    }

    void operator()(const ValueUpdates& message) {
        KALVEX_LIST_CUTTER(ServerParcel, ValueUpdates, value_updates) cutter(m_packed.parcels);
        for (const ValueUpdates::Entry& entry : message.entries) {
            if (!Fits(entry.value)) {
                ++m_packed.leftOut;
                continue;
            }
            pb::ValueUpdates& piece = cutter.Next(kPairBytes + SizeOf(entry.value));
            piece.add_handles(entry.handle);
            AddValue(entry.value, *piece.mutable_values());
        }
        cutter.Finish(!message.last);
    }

    void operator()(const AccessErrors& message) {
        KALVEX_LIST_CUTTER(ServerParcel, AccessErrors, access_errors) cutter(m_packed.parcels);
        for (const AccessErrors::Entry& entry : message.entries) {
            pb::AccessErrors& piece = cutter.Next(kPairBytes);
            piece.add_handles(entry.handle);
            piece.add_codes(entry.code);
        }
        cutter.Finish();
    }

    void operator()(const ReadAnswer& message) {
        if (!std::all_of(message.values.begin(), message.values.end(), Fits)) {
            // Half of what was asked for is no answer.
            ++m_packed.leftOut;
            return (*this)(ReadAnswer{.id = message.id, .result = ResultServerFault, .values = {}});
        }
        KALVEX_LIST_CUTTER(ServerParcel, ReadAnswer, read_answer) cutter(m_packed.parcels);
        pb::ReadAnswer& pattern = *cutter.Pattern().mutable_read_answer();
        pattern.set_id(message.id);
        pattern.set_result(message.result);
        for (const value::CVal& value : message.values) {
            AddValue(value, *cutter.Next(SizeOf(value)).mutable_values());
        }
        cutter.Finish(!message.last);
    }

    void operator()(const ModifyResults& message) {
        KALVEX_LIST_CUTTER(ServerParcel, ModifyResults, modify_results) cutter(m_packed.parcels);
        for (const ModifyResults::Entry& entry : message.entries) {
            pb::ModifyResults& piece = cutter.Next(kPairBytes);
            piece.add_ids(entry.id);
            piece.add_results(entry.result);
        }
        cutter.Finish();
    }

    void operator()(const ReportChange& message) {
        pb::ServerParcel parcel;
        pb::ReportChange& out = *parcel.mutable_report_change();
        out.set_kind(static_cast<pb::Kind>(message.kind));
        out.set_time(message.time);
        out.set_sequence(message.sequence);
        Put(parcel);
    }

    void operator()(const LogMessage& message) {
        pb::ServerParcel parcel;
        pb::LogMessage& out = *parcel.mutable_log_message();
        out.set_level(message.level);
        out.set_time(message.time);
        if (PutText(message.text, kMaxTextBytes, *out.mutable_text())) return Put(parcel);
        ++m_packed.leftOut;
    }

    void operator()(const TermResult& message) {
        pb::ServerParcel parcel;
        parcel.mutable_term_result()->set_code(message.code);
        parcel.mutable_term_result()->set_term(message.term);
        Put(parcel);
    }

  private:
    void Put(const pb::ServerParcel& parcel) {
        m_packed.parcels.push_back(parcel.SerializeAsString());
    }

    PackedAnswer& m_packed;
};

// ---- in

LoginResult Read(const pb::LoginResult& in, Reader& reader) {
    LoginResult message{reader.Narrow<std::uint8_t>(in.code()), reader.Text(in.text())};
    if (in.has_sequence()) message.sequence = in.sequence();
    return message;
}

VariableDefinitions Read(const pb::VariableDefinitions& in, Reader& reader) {
    VariableDefinitions message;
    message.last = !in.more();
    if (!reader.Columns({in.definitions_size()})) return message;
    message.definitions.reserve(in.definitions_size());
    for (const pb::VariableDefinition& entry : in.definitions()) {
        VariableDefinition& definition = message.definitions.emplace_back();
        definition.name = reader.Name(entry.name());
        if (!reader.Columns({entry.attributes_size()})) return message;
        definition.attributes.reserve(entry.attributes_size());
        for (const pb::Attribute& attribute : entry.attributes()) {
            definition.attributes.emplace_back(reader.Name(attribute.key()),
                                               reader.Text(attribute.text()));
        }
    }
    return message;
}

ValueUpdates Read(const pb::ValueUpdates& in, Reader& reader) {
    ValueUpdates message;
    message.last = !in.more();
    std::vector<value::CVal> values = reader.Values(in.values());
    if (!reader.Columns({in.handles_size(), static_cast<int>(values.size())})) return message;
    message.entries.reserve(values.size());
    for (int index = 0; index < in.handles_size(); ++index) {
        message.entries.push_back({in.handles(index), std::move(values[index])});
    }
    return message;
}

AccessErrors Read(const pb::AccessErrors& in, Reader& reader) {
    AccessErrors message;
    if (!reader.Columns({in.handles_size(), in.codes_size()})) return message;
    for (int index = 0; index < in.handles_size(); ++index) {
        message.entries.push_back(
            {in.handles(index), reader.Narrow<std::uint16_t>(in.codes(index))});
    }
    return message;
}

ReadAnswer Read(const pb::ReadAnswer& in, Reader& reader) {
    return {in.id(), reader.Narrow<std::uint16_t>(in.result()), reader.Values(in.values()),
            !in.more()};
}

ModifyResults Read(const pb::ModifyResults& in, Reader& reader) {
    ModifyResults message;
    if (!reader.Columns({in.ids_size(), in.results_size()})) return message;
    for (int index = 0; index < in.ids_size(); ++index) {
        message.entries.push_back({in.ids(index), reader.Narrow<std::uint16_t>(in.results(index))});
    }
    return message;
}

Greeting ReadGreeting(const pb::Greeting& in, Reader& reader) {
    return {reader.Narrow<std::uint16_t>(in.protocol_version()), reader.Name(in.source()),
            reader.Name(in.node()), in.term()};
}

ServerParcel Read(const pb::ServerParcel& in, Reader& reader) {
    switch (in.content_case()) {
        case pb::ServerParcel::kLoginResult:
            return Read(in.login_result(), reader);
        case pb::ServerParcel::kVariableDefinitions:
            return Read(in.variable_definitions(), reader);
        case pb::ServerParcel::kValueUpdates:
            return Read(in.value_updates(), reader);
        case pb::ServerParcel::kAccessErrors:
            return Read(in.access_errors(), reader);
        case pb::ServerParcel::kReadAnswer:
            return Read(in.read_answer(), reader);
        case pb::ServerParcel::kModifyResults:
            return Read(in.modify_results(), reader);
        case pb::ServerParcel::kReportChange:
            return ReportChange{reader.Kind(in.report_change().kind()), in.report_change().time(),
                                in.report_change().sequence()};
        case pb::ServerParcel::kLogMessage:
            return LogMessage{in.log_message().level(), in.log_message().time(),
                              reader.Text(in.log_message().text())};
        case pb::ServerParcel::kTermResult:
            return TermResult{reader.Narrow<std::uint8_t>(in.term_result().code()),
                              in.term_result().term()};
        case pb::ServerParcel::kFarewell:
            return ReadFarewell(in.farewell(), reader);
        case pb::ServerParcel::kGreeting:
            return ReadGreeting(in.greeting(), reader);
        case pb::ServerParcel::kHeartbeat:
        case pb::ServerParcel::CONTENT_NOT_SET:
            break;
    }
    return Heartbeat{};
}

}  // namespace

PackedAnswer Pack(const ServerMessage& message) {
    PackedAnswer packed;
    std::visit(Packer(packed), message);
    return packed;
}

std::string Pack(Heartbeat) {
    pb::ServerParcel parcel;
    parcel.mutable_heartbeat();
    return parcel.SerializeAsString();
}

std::string Pack(const Farewell& farewell) {
    pb::ServerParcel parcel;
    pb::Farewell& out = *parcel.mutable_farewell();
    out.set_reason(farewell.reason);
    for (const std::string& address : farewell.addresses) {
        PutText(address, kMaxNameBytes, *out.add_addresses());
    }
    return parcel.SerializeAsString();
}

std::string Pack(const Greeting& greeting) {
    pb::ServerParcel parcel;
    pb::Greeting& out = *parcel.mutable_greeting();
    out.set_protocol_version(greeting.protocolVersion);
    PutText(greeting.source, kMaxNameBytes, *out.mutable_source());
    PutText(greeting.node, kMaxNameBytes, *out.mutable_node());
    out.set_term(greeting.term);
    return parcel.SerializeAsString();
}

WireFault Unpack(std::string_view bytes, ServerParcel& parcel) {
    pb::ServerParcel in;
    Reader reader;
    if (!Parse(bytes, in, reader)) return reader.Fault();
    parcel = Read(in, reader);
    return reader.Fault();
}

}  // namespace kalvex::vantrel

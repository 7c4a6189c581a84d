// Reads, writes and orders of a client.
#include <algorithm>
#include <utility>

#include "server/ReportPeriods.h"
#include "server/Server.h"
#include "server/Session.h"
#include "value/LocalTime.h"
#include "value/Status.h"

namespace kalvex::server {

namespace {

constexpr std::size_t kMostReads = 1000;
constexpr std::size_t kMostArchiveValues = 100000;
constexpr std::int64_t kPieceValues = 2000;

constexpr const char* kManyReads = platform::Translatable("zbyt wiele odczytów naraz");
constexpr const char* kManyValues = platform::Translatable("zbyt wiele wartości w jednym zapisie");
constexpr const char* kRefusedWrite = platform::Translatable("brak prawa do zapisu zmiennej %s");
constexpr const char* kRefusedOrder =
    platform::Translatable("polecenie dla danych raportowych albo archiwalnych odrzucone");

bool IsTime(std::int64_t time) {
    return time >= 0 && time <= value::kLargestTime;
}

}  // namespace

// ---- reads: one piece is fetched at a time, and the requests take turns

void Session::Receive(vantrel::ReadRequests& message) {
    for (const vantrel::ReadRequest& request : message.requests) {
        const std::uint16_t result = StartReading(request);
        if (result == vantrel::ResultOk) continue;
        vantrel::ReadAnswer answer;
        answer.id = request.id;
        answer.result = result;
        m_link.Send(std::move(answer));
    }
    ReadNext();
}

std::uint16_t Session::StartReading(const vantrel::ReadRequest& request) {
    if (request.id == 0 || m_reads.count(request.id) != 0) return vantrel::ResultBadRequest;
    if (!value::IsStored(request.kind)) return vantrel::ResultBadRequest;
    if (m_reads.size() >= kMostReads) {
        TellOnce(kManyReads);
        return vantrel::ResultBadRequest;
    }
    const Plant& plant = m_server.GetPlant();
    const std::size_t index = plant.Find(request.variable);
    if (index == Plant::kNone) return vantrel::ResultNothing;
    if (!RightsTo(index).read) return vantrel::ResultNoAccess;
    Reading reading;
    reading.query = {plant.At(index).id, request.kind, request.from, request.to, kPieceValues};
    reading.single = value::IsReport(request.kind) && request.from == request.to;
    if (reading.single) {
        if (!IsTime(request.from)) return vantrel::ResultBadRequest;
        reading.query.from = reading.query.to = ReportTime(request.kind, request.from);
    }
    m_reads.emplace(request.id, reading);
    m_readQueue.push_back(request.id);
    return vantrel::ResultOk;
}

// What is read in pieces may be taken from the client between two of them.
std::uint16_t Session::CheckRead(VariableId id) const {
    const PlantVariable* variable = m_server.GetPlant().Lookup(id);
    if (variable == nullptr) return vantrel::ResultNothing;
    return m_granted[variable->rule].read ? vantrel::ResultOk : vantrel::ResultNoAccess;
}

void Session::ReadNext() {
    while (!m_reading && !m_readQueue.empty() && m_link.Backlog() < vantrel::kMostBacklog) {
        const vantrel::RequestId id = m_readQueue.front();
        m_readQueue.pop_front();
        const auto found = m_reads.find(id);
        if (found == m_reads.end()) continue;
        m_reading = true;
        m_server.GetStore().Read(found->second.query,
                                 [&server = m_server, number = m_number, id](StorePiece piece) {
                                     if (Session* session = server.FindSession(number)) {
                                         session->OnPiece(id, std::move(piece));
                                     }
                                 });
    }
}

void Session::OnPiece(vantrel::RequestId id, StorePiece piece) {
    m_reading = false;
    const auto found = m_reads.find(id);
    if (found != m_reads.end()) {
        vantrel::ReadAnswer answer;
        answer.id = id;
        answer.result = CheckRead(found->second.query.variable);
        if (answer.result != vantrel::ResultOk) {
            piece = {};
        } else if (!piece.read) {
            answer.result = vantrel::ResultServerFault;
        } else if (found->second.single && piece.values.empty()) {
            answer.result = vantrel::ResultNothing;
        }
        answer.last = !piece.more;
        if (piece.more) {
            found->second.query.from = piece.values.back().GetTime() + 1;
            m_readQueue.push_back(id);
        } else {
            m_reads.erase(found);
        }
        answer.values = std::move(piece.values);
        m_link.Send(std::move(answer));
    }
    ReadNext();
}

void Session::Receive(vantrel::CancelRequests& message) {
    for (const vantrel::RequestId id : message.ids) {
        if (m_reads.erase(id) != 0) std::erase(m_readQueue, id);
    }
}

// ---- writes

std::uint16_t Session::CheckWrite(value::ValueKind kind, std::string_view name,
                                  std::size_t& variable) const {
    variable = m_server.GetPlant().Find(name);
    if (variable == Plant::kNone) return vantrel::ResultNothing;
    const Rights::Granted granted = RightsTo(variable);
    if (!granted.write) return granted.read ? vantrel::ResultNoAccess : vantrel::ResultNothing;
    const VariableConfig& config = m_server.GetPlant().At(variable).config;
    const bool fits = kind == value::KindCurrent ? !config.signal
                      : kind == value::KindArchive
                          ? (config.archive & vantrel::ArchiveBit::Any) != 0
                          : (config.reports & vantrel::ReportBit(kind)) != 0;
    return fits ? vantrel::ResultOk : vantrel::ResultBadRequest;
}

std::uint16_t Session::PrepareModify(vantrel::ModifyRequest& request,
                                     std::vector<StoreOperation>& operations) {
    if (request.kind != value::KindCurrent && !value::IsReport(request.kind))
        return vantrel::ResultBadRequest;
    std::size_t variable = Plant::kNone;
    const std::uint16_t result = CheckWrite(request.kind, request.variable, variable);
    if (result != vantrel::ResultOk) return result;
    Plant& plant = m_server.GetPlant();
    value::CVal& value = request.value;
    if (!ConvertWritten(plant.At(variable).config, request.kind, value))
        return vantrel::ResultBadValue;
    if (request.kind == value::KindCurrent) {
        value.SetTime(m_server.Now());
        plant.SetValue(variable, std::move(value));
        return vantrel::ResultOk;
    }
    if (!IsTime(request.time)) return vantrel::ResultBadRequest;
    value.AddStatus(value::Status::SetByUser);
    operations.emplace_back(PutValue{plant.At(variable).id, request.kind,
                                     ReportTime(request.kind, request.time), std::move(value)});
    return vantrel::ResultOk;
}

void Session::Receive(vantrel::ModifyRequests& message) {
    vantrel::ModifyResults decided;
    std::vector<StoreOperation> operations;
    std::vector<vantrel::RequestId> waiting;
    for (vantrel::ModifyRequest& request : message.requests) {
        const std::uint16_t result = PrepareModify(request, operations);
        if (result == vantrel::ResultOk && request.kind != value::KindCurrent) {
            waiting.push_back(request.id);
            continue;
        }
        decided.entries.push_back({request.id, result});
        if (result == vantrel::ResultNoAccess) TellOnce(kRefusedWrite, request.variable);
        if (result != vantrel::ResultOk && request.kind == value::KindCurrent)
            Correct(request.variable);
    }
    if (!decided.entries.empty()) m_link.Send(std::move(decided));
    if (!waiting.empty()) SubmitWrites(std::move(operations), std::move(waiting));
    m_server.Distribute();
}

// A client shows what it has written before it hears of it, so it needs to be told what is true.
void Session::Correct(std::string_view name) {
    auto absent = m_absent.lower_bound({std::string(name), 0});
    for (; absent != m_absent.end() && absent->first == name; ++absent) MarkChanged(absent->second);
    Plant& plant = m_server.GetPlant();
    const std::size_t variable = plant.Find(name);
    if (variable == Plant::kNone) return;
    for (const PlantVariable::Subscriber& subscriber : plant.At(variable).subscribers) {
        if (subscriber.session == this) MarkChanged(subscriber.handle);
    }
}

void Session::Receive(vantrel::ArchiveModifyRequest& message) {
    std::size_t variable = Plant::kNone;
    std::uint16_t result = CheckWrite(value::KindArchive, message.variable, variable);
    if (result == vantrel::ResultNoAccess) TellOnce(kRefusedWrite, message.variable);
    if (message.values.size() > kMostArchiveValues) {
        TellOnce(kManyValues);
        result = vantrel::ResultBadRequest;
    }
    std::vector<StoreOperation> operations;
    for (value::CVal& value : message.values) {
        if (result != vantrel::ResultOk) break;
        const PlantVariable& target = m_server.GetPlant().At(variable);
        const std::int64_t time = value.GetTime();
        if (!IsTime(time)) result = vantrel::ResultBadRequest;
        if (!ConvertWritten(target.config, value::KindArchive, value))
            result = vantrel::ResultBadValue;
        operations.emplace_back(PutValue{target.id, value::KindArchive, time, std::move(value)});
    }
    if (result == vantrel::ResultOk) {
        SubmitWrites(std::move(operations), {message.id});
    } else {
        m_link.Send(vantrel::ModifyResults{{{message.id, result}}});
    }
}

void Session::SubmitWrites(std::vector<StoreOperation> operations,
                           std::vector<vantrel::RequestId> ids) {
    const auto results = [ids](bool committed) {
        vantrel::ModifyResults message;
        for (const vantrel::RequestId id : ids) {
            message.entries.push_back(
                {id, committed ? vantrel::ResultOk : vantrel::ResultServerFault});
        }
        return message;
    };
    const bool taken = m_server.GetStore().Submit(
        std::move(operations), Store::Urgency::Now,
        [&server = m_server, number = m_number, results](const StoreOutcome& outcome) {
            server.OnOutcome(outcome);
            if (Session* session = server.FindSession(number)) {
                session->m_link.Send(results(outcome.committed));
            }
        });
    if (!taken) m_link.Send(results(false));
}

// ---- orders

void Session::Receive(vantrel::PeriodRequest& message) {
    std::size_t variable = Plant::kNone;
    const bool forArchive = message.action == vantrel::PeriodAction::Update ||
                            message.action == vantrel::PeriodAction::Refresh;
    const bool fits =
        forArchive ? message.kind == value::KindArchive : value::IsReport(message.kind);
    if (!fits || !IsTime(message.time) ||
        CheckWrite(message.kind, message.variable, variable) != vantrel::ResultOk) {
        TellOnce(kRefusedOrder);
        return;
    }
    // There is no device that archive data or the value of a span could be fetched from.
    const bool nothingToDo = forArchive || (message.kind == value::KindSpan &&
                                            message.action != vantrel::PeriodAction::Init);
    if (nothingToDo) return;
    const PlantVariable& target = m_server.GetPlant().At(variable);
    std::vector<StoreOperation> operations;
    operations.emplace_back(MakeReport{
        message.action, target.id, message.kind, ReportTime(message.kind, message.time),
        target.config.rule, static_cast<int>(m_server.Settings().dayStart), m_server.Now()});
    const bool taken = m_server.GetStore().Submit(
        std::move(operations), Store::Urgency::Now,
        [&server = m_server](const StoreOutcome& outcome) { server.OnOutcome(outcome); });
    if (!taken) TellOnce(kRefusedOrder);
}

}  // namespace kalvex::server

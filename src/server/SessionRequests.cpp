// Reads, writes and orders of a client.
#include <algorithm>
#include <utility>

#include "server/ReportPeriods.h"
#include "server/Server.h"
#include "server/Session.h"
#include "value/LocalTime.h"
#include "value/Status.h"

namespace kalvex {

namespace {

constexpr std::size_t kMostReads = 1000;
constexpr std::size_t kMostArchiveValues = 100000;
constexpr std::int64_t kPieceValues = 2000;

constexpr const char* kManyReads = Translatable("zbyt wiele odczytów naraz");
constexpr const char* kManyValues = Translatable("zbyt wiele wartości w jednym zapisie");
constexpr const char* kRefusedWrite = Translatable("brak prawa do zapisu zmiennej %s");
constexpr const char* kRefusedOrder =
    Translatable("polecenie dla danych raportowych albo archiwalnych odrzucone");

bool IsTime(std::int64_t time) {
    return time >= 0 && time <= kLargestTime;
}

}  // namespace

// ---- reads: one piece is fetched at a time, and the requests take turns

void Session::Receive(ReadRequests& message) {
    for (const ReadRequest& request : message.requests) {
        const std::uint16_t result = StartReading(request);
        if (result == ResultOk) continue;
        ReadAnswer answer;
        answer.id = request.id;
        answer.result = result;
        m_link.Send(std::move(answer));
    }
    ReadNext();
}

std::uint16_t Session::StartReading(const ReadRequest& request) {
    if (request.id == 0 || m_mapReads.count(request.id) != 0) return ResultBadRequest;
    if (!IsStored(request.kind)) return ResultBadRequest;
    if (m_mapReads.size() >= kMostReads) {
        TellOnce(kManyReads);
        return ResultBadRequest;
    }
    const Plant& plant = m_server.GetPlant();
    const std::size_t index = plant.Find(request.variable);
    if (index == Plant::kNone) return ResultNothing;
    if (!RightsTo(index).read) return ResultNoAccess;
    Reading reading;
    reading.query = {plant.At(index).id, request.kind, request.from, request.to, kPieceValues};
    reading.single = IsReport(request.kind) && request.from == request.to;
    if (reading.single) {
        if (!IsTime(request.from)) return ResultBadRequest;
        reading.query.from = reading.query.to = ReportTime(request.kind, request.from);
    }
    m_mapReads.emplace(request.id, reading);
    m_arrReadQueue.push_back(request.id);
    return ResultOk;
}

void Session::ReadNext() {
    while (!m_fReading && !m_arrReadQueue.empty() && m_link.Backlog() < kMostBacklog) {
        const RequestId id = m_arrReadQueue.front();
        m_arrReadQueue.pop_front();
        const auto found = m_mapReads.find(id);
        if (found == m_mapReads.end()) continue;
        m_fReading = true;
        m_server.GetStore().Read(found->second.query,
                                 [&server = m_server, number = m_nNumber, id](StorePiece piece) {
                                     if (Session* session = server.FindSession(number)) {
                                         session->OnPiece(id, std::move(piece));
                                     }
                                 });
    }
}

void Session::OnPiece(RequestId id, StorePiece piece) {
    m_fReading = false;
    const auto found = m_mapReads.find(id);
    if (found != m_mapReads.end()) {
        ReadAnswer answer;
        answer.id = id;
        if (!piece.read) {
            answer.result = ResultServerFault;
        } else if (found->second.single && piece.values.empty()) {
            answer.result = ResultNothing;
        }
        answer.last = !piece.more;
        if (piece.more) {
            found->second.query.from = piece.values.back().GetTime() + 1;
            m_arrReadQueue.push_back(id);
        } else {
            m_mapReads.erase(found);
        }
        answer.values = std::move(piece.values);
        m_link.Send(std::move(answer));
    }
    ReadNext();
}

void Session::Receive(CancelRequests& message) {
    for (const RequestId id : message.ids) {
        if (m_mapReads.erase(id) != 0) std::erase(m_arrReadQueue, id);
    }
}

// ---- writes

std::uint16_t Session::CheckWrite(ValueKind kind, std::string_view name,
                                  std::size_t& variable) const {
    variable = m_server.GetPlant().Find(name);
    if (variable == Plant::kNone) return ResultNothing;
    const Rights::Granted granted = RightsTo(variable);
    if (!granted.write) return granted.read ? ResultNoAccess : ResultNothing;
    const VariableConfig& config = m_server.GetPlant().At(variable).config;
    const bool fits = kind == KindCurrent   ? !config.signal
                      : kind == KindArchive ? (config.archive & ArchiveBit::Any) != 0
                                            : (config.reports & ReportBit(kind)) != 0;
    return fits ? ResultOk : ResultBadRequest;
}

std::uint16_t Session::PrepareModify(ModifyRequest& request,
                                     std::vector<StoreOperation>& operations) {
    if (request.kind != KindCurrent && !IsReport(request.kind)) return ResultBadRequest;
    std::size_t variable = Plant::kNone;
    const std::uint16_t result = CheckWrite(request.kind, request.variable, variable);
    if (result != ResultOk) return result;
    Plant& plant = m_server.GetPlant();
    CVal& value = request.value;
    if (!ConvertWritten(plant.At(variable).config, request.kind, value)) return ResultBadValue;
    if (request.kind == KindCurrent) {
        value.SetTime(m_server.Now());
        plant.SetValue(variable, std::move(value));
        return ResultOk;
    }
    if (!IsTime(request.time)) return ResultBadRequest;
    value.AddStatus(Status::SetByUser);
    operations.emplace_back(PutValue{plant.At(variable).id, request.kind,
                                     ReportTime(request.kind, request.time), std::move(value)});
    return ResultOk;
}

void Session::Receive(ModifyRequests& message) {
    ModifyResults decided;
    std::vector<StoreOperation> operations;
    std::vector<RequestId> waiting;
    for (ModifyRequest& request : message.requests) {
        const std::uint16_t result = PrepareModify(request, operations);
        if (result == ResultOk && request.kind != KindCurrent) {
            waiting.push_back(request.id);
            continue;
        }
        decided.entries.push_back({request.id, result});
        if (result == ResultNoAccess) TellOnce(kRefusedWrite, request.variable);
        if (result != ResultOk && request.kind == KindCurrent) Correct(request.variable);
    }
    if (!decided.entries.empty()) m_link.Send(std::move(decided));
    if (!waiting.empty()) SubmitWrites(std::move(operations), std::move(waiting));
    m_server.Distribute();
}

// A client shows what it has written before it hears of it, so it needs to be told what is true.
void Session::Correct(std::string_view name) {
    Plant& plant = m_server.GetPlant();
    const std::size_t variable = plant.Find(name);
    if (variable == Plant::kNone) return;
    for (const PlantVariable::Subscriber& subscriber : plant.At(variable).subscribers) {
        if (subscriber.session == this) MarkChanged(subscriber.handle);
    }
}

void Session::Receive(ArchiveModifyRequest& message) {
    std::size_t variable = Plant::kNone;
    std::uint16_t result = CheckWrite(KindArchive, message.variable, variable);
    if (result == ResultNoAccess) TellOnce(kRefusedWrite, message.variable);
    if (message.values.size() > kMostArchiveValues) {
        TellOnce(kManyValues);
        result = ResultBadRequest;
    }
    std::vector<StoreOperation> operations;
    for (CVal& value : message.values) {
        if (result != ResultOk) break;
        const PlantVariable& target = m_server.GetPlant().At(variable);
        const std::int64_t time = value.GetTime();
        if (!IsTime(time)) result = ResultBadRequest;
        if (!ConvertWritten(target.config, KindArchive, value)) result = ResultBadValue;
        operations.emplace_back(PutValue{target.id, KindArchive, time, std::move(value)});
    }
    if (result == ResultOk) {
        SubmitWrites(std::move(operations), {message.id});
    } else {
        m_link.Send(ModifyResults{{{message.id, result}}});
    }
}

void Session::SubmitWrites(std::vector<StoreOperation> operations, std::vector<RequestId> ids) {
    const auto results = [ids](bool committed) {
        ModifyResults message;
        for (const RequestId id : ids) {
            message.entries.push_back({id, committed ? ResultOk : ResultServerFault});
        }
        return message;
    };
    const bool taken = m_server.GetStore().Submit(
        std::move(operations), Store::Urgency::Now,
        [&server = m_server, number = m_nNumber, results](const StoreOutcome& outcome) {
            server.OnOutcome(outcome);
            if (Session* session = server.FindSession(number)) {
                session->m_link.Send(results(outcome.committed));
            }
        });
    if (!taken) m_link.Send(results(false));
}

// ---- orders

void Session::Receive(PeriodRequest& message) {
    std::size_t variable = Plant::kNone;
    const bool forArchive =
        message.action == PeriodAction::Update || message.action == PeriodAction::Refresh;
    const bool fits = forArchive ? message.kind == KindArchive : IsReport(message.kind);
    if (!fits || !IsTime(message.time) ||
        CheckWrite(message.kind, message.variable, variable) != ResultOk) {
        TellOnce(kRefusedOrder);
        return;
    }
    // There is no device that archive data or the value of a span could be fetched from.
    const bool nothingToDo =
        forArchive || (message.kind == KindSpan && message.action != PeriodAction::Init);
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

}  // namespace kalvex

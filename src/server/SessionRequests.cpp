// Reads of a client.
#include <algorithm>
#include <utility>

#include "server/PointScan.h"
#include "server/ReportPeriods.h"
#include "server/Server.h"
#include "server/Session.h"
#include "value/LocalTime.h"
#include "value/Status.h"

namespace kalvex::server {

namespace {

constexpr std::size_t kMostReads = 1000;
constexpr std::int64_t kPieceValues = 2000;

constexpr const char* kManyReads = platform::Translatable("zbyt wiele odczytów naraz");

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
    if (request.points != 0 && request.points < kFewestPoints) return vantrel::ResultBadRequest;
    const Plant& plant = m_server.GetPlant();
    const std::size_t index = plant.Find(request.variable);
    if (!Sees(index)) return vantrel::ResultNothing;
    Reading reading;
    reading.query = {plant.At(index).id, request.kind, request.from, request.to, kPieceValues};
    reading.single = value::IsReport(request.kind) && request.from == request.to;
    if (reading.single) {
        if (!IsTime(request.from)) return vantrel::ResultBadRequest;
        reading.query.from = reading.query.to = ReportTime(request.kind, request.from);
    } else if (request.points != 0) {
        const StoreQuery& query = reading.query;
        reading.query.scan =
            std::make_shared<PointScan>(HistoryKey{query.variable, query.kind, query.from},
                                        query.to, std::min(request.points, kMostPoints));
    }
    m_reads.emplace(request.id, reading);
    m_readQueue.push_back(request.id);
    return vantrel::ResultOk;
}

// What is read in pieces may be taken from the client between two of them.
std::uint16_t Session::CheckRead(VariableId id) const {
    const PlantVariable* variable = m_server.GetPlant().Lookup(id);
    const bool seen = variable != nullptr && m_granted[variable->rule].read;
    return seen ? vantrel::ResultOk : vantrel::ResultNothing;
}

// One that is to be thinned waits for the one that is, since it keeps what it has found so far.
std::optional<vantrel::RequestId> Session::TakeNextRead() {
    const auto mayGoOn = [this](vantrel::RequestId id) {
        const bool isThinned = m_reads.at(id).query.scan != nullptr;
        if (isThinned && m_scanned == 0) m_scanned = id;
        return !isThinned || m_scanned == id;
    };
    const auto next = std::ranges::find_if(m_readQueue, mayGoOn);
    if (next == m_readQueue.end()) return std::nullopt;
    const vantrel::RequestId id = *next;
    m_readQueue.erase(next);
    return id;
}

void Session::ReadNext() {
    if (m_reading || m_link.Backlog() >= vantrel::kMostBacklog) return;
    const std::optional<vantrel::RequestId> id = TakeNextRead();
    if (!id) return;
    m_reading = true;
    m_server.GetStore().Read(m_reads.at(*id).query,
                             [&server = m_server, number = m_number, id = *id](StorePiece piece) {
                                 if (Session* session = server.FindSession(number)) {
                                     session->OnPiece(id, std::move(piece));
                                 }
                             });
}

void Session::DropRead(vantrel::RequestId id) {
    m_reads.erase(id);
    std::erase(m_readQueue, id);
    if (m_scanned == id) m_scanned = 0;
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
            if (!piece.values.empty()) {
                found->second.query.from = piece.values.back().GetTime() + 1;
            }
            m_readQueue.push_back(id);
        } else {
            DropRead(id);
        }
        answer.values = std::move(piece.values);
        if (answer.last || !answer.values.empty()) m_link.Send(std::move(answer));
    }
    ReadNext();
}

void Session::Receive(vantrel::CancelRequests& message) {
    for (const vantrel::RequestId id : message.ids) {
        DropRead(id);
    }
}

}  // namespace kalvex::server

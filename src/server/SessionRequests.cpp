// Reads of a client.
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
    const Plant& plant = m_server.GetPlant();
    const std::size_t index = plant.Find(request.variable);
    if (!Sees(index)) return vantrel::ResultNothing;
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
    const bool seen = variable != nullptr && m_granted[variable->rule].read;
    return seen ? vantrel::ResultOk : vantrel::ResultNothing;
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

}  // namespace kalvex::server

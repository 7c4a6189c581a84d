#include "sources/DataStates.h"

#include <algorithm>

#include "sources/InterfaceClientConnection.h"

namespace kalvex::sources {

namespace {

using engine::DataState;

struct ConnectionRow {
    std::uint16_t connection;
    DataState state;
};

constexpr ConnectionRow kConnections[] = {
    {vantrel::StateDown, DataState::Down},
    {vantrel::StateOpening, DataState::Opening},
    {vantrel::StateLogin, DataState::Login},
};

struct RequestRow {
    RequestState request;
    DataState state;  // where there is no value
};

constexpr RequestRow kRequests[] = {
    {RequestNone, DataState::NotAsked},
    {RequestWaiting, DataState::Asked},
    {RequestReady, DataState::NoReport},
    {RequestFailed, DataState::NotThere},
};

DataState WithoutConnection(const CInterfaceClientConnection& connection) {
    if (connection.GetDownReason() == vantrel::ReasonLoginRefused) return DataState::LoginRefused;
    return std::ranges::find(kConnections, connection.GetState(), &ConnectionRow::connection)
        ->state;
}

DataState WithoutSubscription(const CVarReg& variable) {
    return *variable.GetRefusal() == 0 ? DataState::NoVariable : DataState::NoAccess;
}

DataState WithoutValue(CInterfaceObj& link, value::ValueKind kind) {
    if (value::IsReport(kind)) {
        const RequestState request = link.GetRequestState(kind);
        return std::ranges::find(kRequests, request, &RequestRow::request)->state;
    }
    const bool none = link.CurrentValue()->GetType() == value::ValueType::None;
    return none ? DataState::NoValue : DataState::Unknown;
}

}  // namespace

DataState FindDataState(CInterfaceObj& link, value::ValueKind kind) {
    const CInterfaceClientConnection* connection = link.GetConnection();
    const CVarReg* variable = link.GetVarVal();
    if (connection == nullptr || variable == nullptr) return DataState::NoAddress;
    if (connection->GetState() != vantrel::StateConnected) return WithoutConnection(*connection);
    const bool ready = connection->IsDataReady();
    if (ready && link.IsUsable(kind)) return DataState::Usable;
    const bool report = value::IsReport(kind);
    if (!report && kind != value::KindCurrent) return DataState::NotReadable;
    if (!report && link.IsLocked()) return DataState::Locked;
    // A report is asked for by name, whatever became of the subscription.
    if (!report || !ready) {
        if (variable->GetRefusal()) return WithoutSubscription(*variable);
        if (!connection->IsSubscribed(variable->GetName())) return DataState::NotSubscribed;
    }
    return ready ? WithoutValue(link, kind) : DataState::NoData;
}

}  // namespace kalvex::sources

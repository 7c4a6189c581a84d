// Acknowledgements of a client, and what it is told of alarms besides.
#include <utility>

#include "server/Server.h"
#include "server/Session.h"

namespace kalvex::server {

Refusal Session::Acknowledge(std::string_view name) {
    const std::size_t index = m_server.GetPlant().Find(name);
    if (index == Plant::kNone) return Refusal::NoVariable;
    const Rights::Granted granted = RightsTo(index);
    if (!granted.acknowledge) return granted.read ? Refusal::NoAlarmRight : Refusal::HiddenAlarm;
    PlantVariable& variable = m_server.GetPlant().At(index);
    if (!variable.alarmBits) return Refusal::NoAlarms;
    if (!m_server.TakesWrites()) return Refusal::StoreBusy;
    m_server.GetAlarms().Acknowledge(variable, OriginNow(), Peer(), m_user.name);
    return Refusal::None;
}

void Session::Receive(vantrel::AcknowledgeRequests& message) {
    vantrel::ModifyResults decided;
    std::vector<StoreOperation> operations;
    std::vector<Order> waiting;
    for (vantrel::AcknowledgeRequest& request : message.requests) {
        if (!IsNew(request.id, request.serial, decided)) continue;
        Order order{request.id, request.serial, value::KindCurrent, std::move(request.variable)};
        order.acknowledges = true;
        const Refusal refusal = Acknowledge(order.variable);
        if (refusal == Refusal::None) {
            waiting.push_back(std::move(order));
            continue;
        }
        Decide(order, ResultOf(refusal), decided, operations);
        TellRefused(order, ReasonText(refusal));
    }
    if (!decided.entries.empty()) m_link.Send(std::move(decided));
    m_server.Distribute();
    Submit(std::move(operations), std::move(waiting));
}

void Session::CorrectAlarmBits(const std::vector<Order>& orders) {
    const Plant& plant = m_server.GetPlant();
    for (const Order& order : orders) {
        const std::size_t index = order.alarmBits ? plant.Find(order.variable) : Plant::kNone;
        if (index == Plant::kNone) continue;
        const std::optional<std::uint16_t>& standing = plant.At(index).alarmBits;
        if (standing && standing != order.alarmBits) Correct(order.variable);
    }
    SendChanges();
}

}  // namespace kalvex::server

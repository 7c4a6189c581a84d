// Writes and orders of a client.
#include <map>
#include <utility>

#include "server/ReportPeriods.h"
#include "server/Server.h"
#include "server/Session.h"
#include "text/TextFormat.h"
#include "value/LocalTime.h"
#include "value/Status.h"
#include "vantrel/ClientName.h"
#include "vantrel/OrderWords.h"

namespace kalvex::server {

namespace {

constexpr std::size_t kMostArchiveValues = 100000;
constexpr std::size_t kMostRefusals = 1000;  // lines that a conversation keeps

constexpr const char* kRefused =
    platform::Translatable("Klient %s, użytkownik %s: odmowa: %s, zmienna %s (%s)");
constexpr const char* kMoreRefused =
    platform::Translatable("Klient %s, użytkownik %s: dalsze odmowy");
constexpr const char* kAcknowledgement = platform::Translatable("potwierdzenie alarmów");
constexpr const char* kAgain = platform::Translatable("%s, jeszcze razy: %d");
constexpr const char* kNoneTaken = platform::Translatable("%s, nie przyjęto żadnej z wartości: %d");
constexpr const char* kBadOne =
    platform::Translatable("%s nr %d, nie przyjęto żadnej z wartości: %d");

}  // namespace

// ---- refusals

std::string Session::ReasonText(Refusal refusal) const {
    return m_server.GetTranslator().Translate(TextOf(refusal));
}

void Session::TellRefused(const Order& order, std::string_view reason) {
    const platform::Translator& translator = m_server.GetTranslator();
    const std::string words = order.acknowledges ? translator.Translate(kAcknowledgement)
                              : order.action
                                  ? vantrel::PeriodWords(*order.action, order.kind, translator)
                                  : vantrel::WriteWords(order.kind, translator);
    std::string line =
        text::FormatText(translator.Translate(kRefused),
                         {Peer(), m_user.name, words, vantrel::Printable(order.variable), reason});
    if (m_refusals.size() >= kMostRefusals && m_refusals.count(line) == 0) {
        line = text::FormatText(translator.Translate(kMoreRefused), {Peer(), m_user.name});
    }
    const auto [found, isNew] = m_refusals.try_emplace(line);
    if (isNew) return m_server.Log(line, platform::LogErrors);
    ++found->second;
}

void Session::TellRefusals(std::int64_t now) {
    if (now - m_refusalsTold < value::kSecondsPerHour) return;
    m_refusalsTold = now;
    for (auto& [line, times] : m_refusals) {
        if (times == 0) continue;
        m_server.Log(kAgain, {line, std::to_string(std::exchange(times, 0))}, platform::LogErrors);
    }
}

// ---- writes

Origin Session::OriginNow() {
    if (m_writer == kServerItself) {
        m_writer = m_server.GetStore().Register(
            Writer{m_user.name, vantrel::Printable(m_client), m_link.PeerAddress()});
    }
    return {m_writer, m_server.Now()};
}

Refusal Session::CheckWrite(value::ValueKind kind, std::string_view name,
                            std::size_t& variable) const {
    variable = m_server.GetPlant().Find(name);
    if (variable == Plant::kNone) return Refusal::NoVariable;
    const Rights::Granted granted = RightsTo(variable);
    if (!granted.write) return granted.read ? Refusal::NoRight : Refusal::Hidden;
    const VariableConfig& config = m_server.GetPlant().At(variable).config;
    if (kind == value::KindCurrent) return config.signal ? Refusal::Generated : Refusal::None;
    if (kind == value::KindArchive) {
        const bool archived = (config.archive & vantrel::ArchiveBit::Any) != 0;
        return archived ? Refusal::None : Refusal::NoArchive;
    }
    const bool reported = (config.reports & vantrel::ReportBit(kind)) != 0;
    return reported ? Refusal::None : Refusal::NoReport;
}

Refusal Session::PrepareModify(vantrel::ModifyRequest& request,
                               std::vector<StoreOperation>& operations) {
    if (request.kind != value::KindCurrent && !value::IsReport(request.kind))
        return Refusal::BadKind;
    std::size_t variable = Plant::kNone;
    const Refusal refusal = CheckWrite(request.kind, request.variable, variable);
    if (refusal != Refusal::None) return refusal;
    Plant& plant = m_server.GetPlant();
    const VariableId id = plant.At(variable).id;
    value::CVal& value = request.value;
    if (!ConvertWritten(plant.At(variable).config, request.kind, value)) return Refusal::BadValue;
    const Origin origin = OriginNow();
    const bool isCurrent = request.kind == value::KindCurrent;
    if (!isCurrent && !IsTime(request.time)) return Refusal::BadTime;
    PlantVariable& target = plant.At(variable);
    const bool acknowledges = isCurrent && m_server.GetAlarms().IsAcknowledgement(target, value);
    if (acknowledges && !RightsTo(variable).acknowledge) return Refusal::NoAlarmRight;
    if (!m_server.TakesWrites()) return Refusal::StoreBusy;
    if (isCurrent) {
        value.SetTime(m_server.Now());
        plant.SetValue(variable, std::move(value), origin);
        if (acknowledges) m_server.GetAlarms().Acknowledge(target, origin, Peer(), m_user.name);
        operations.emplace_back(SaveLastValue{id, target.value, origin});
        target.saved = true;
        return Refusal::None;
    }
    value.AddStatus(value::Status::SetByUser);
    const std::int64_t time = ReportTime(request.kind, request.time);
    operations.emplace_back(PutValue{id, request.kind, time, std::move(value), origin});
    m_server.MarkLate(target, request.kind, time, operations);
    return Refusal::None;
}

void Session::Receive(vantrel::ModifyRequests& message) {
    vantrel::ModifyResults decided;
    std::vector<StoreOperation> operations;
    std::vector<Order> waiting;
    for (vantrel::ModifyRequest& request : message.requests) {
        if (!IsNew(request.id, request.serial, decided)) continue;
        Order order{request.id, request.serial, request.kind, request.variable};
        if (request.kind == value::KindCurrent) {
            order.alarmBits = request.value.GetStatus() & kAlarmBits;
        }
        const Refusal refusal = PrepareModify(request, operations);
        if (refusal == Refusal::None) {
            waiting.push_back(std::move(order));
            continue;
        }
        Decide(order, ResultOf(refusal), decided, operations);
        TellRefused(order, ReasonText(refusal));
        if (request.kind == value::KindCurrent) Correct(order.variable);
    }
    if (!decided.entries.empty()) m_link.Send(std::move(decided));
    m_server.Distribute();
    Submit(std::move(operations), std::move(waiting));
}

// A client shows what it has written before it hears of it, so it needs to be told what is true.
void Session::Correct(std::string_view name) {
    auto absent = m_absent.lower_bound({name, 0});
    for (; absent != m_absent.end() && absent->first == name; ++absent) MarkChanged(absent->second);
    Plant& plant = m_server.GetPlant();
    const std::size_t variable = plant.Find(name);
    if (variable == Plant::kNone) return;
    for (const PlantVariable::Subscriber& subscriber : plant.At(variable).subscribers) {
        if (subscriber.session == this) MarkChanged(subscriber.handle);
    }
}

Refusal Session::PrepareArchive(vantrel::ArchiveModifyRequest& request,
                                std::vector<StoreOperation>& operations, std::size_t& good) {
    std::size_t variable = Plant::kNone;
    const Refusal refusal = CheckWrite(value::KindArchive, request.variable, variable);
    if (request.values.size() > kMostArchiveValues) return Refusal::ManyValues;
    if (refusal != Refusal::None) return refusal;
    const PlantVariable& target = m_server.GetPlant().At(variable);
    const Origin origin = OriginNow();
    TimeSpan hour;  // of the value before
    for (value::CVal& value : request.values) {
        const std::int64_t time = value.GetTime();
        if (!IsTime(time)) return Refusal::BadTime;
        if (!ConvertWritten(target.config, value::KindArchive, value)) return Refusal::BadValue;
        operations.emplace_back(
            PutValue{target.id, value::KindArchive, time, std::move(value), origin});
        ++good;
        if (hour.begin <= time && time < hour.end) continue;
        hour = CoveredSpan(value::KindHour, ReportTime(value::KindHour, time), 0);
        m_server.MarkLate(target, value::KindArchive, time, operations);
    }
    return m_server.TakesWrites() ? Refusal::None : Refusal::StoreBusy;
}

std::string Session::ArchiveReason(Refusal refusal, std::size_t good, std::size_t count) const {
    const platform::Translator& translator = m_server.GetTranslator();
    const bool ofOne = refusal == Refusal::BadTime || refusal == Refusal::BadValue;
    if (!ofOne) {
        return text::FormatText(translator.Translate(kNoneTaken),
                                {ReasonText(refusal), std::to_string(count)});
    }
    return text::FormatText(translator.Translate(kBadOne),
                            {ReasonText(refusal), std::to_string(good + 1), std::to_string(count)});
}

void Session::Receive(vantrel::ArchiveModifyRequest& message) {
    vantrel::ModifyResults decided;
    std::vector<StoreOperation> operations;
    std::vector<Order> waiting;
    if (IsNew(message.id, message.serial, decided)) {
        Order order{message.id, message.serial, value::KindArchive, message.variable};
        std::size_t good = 0;
        const Refusal refusal = PrepareArchive(message, operations, good);
        if (refusal == Refusal::None) {
            waiting.push_back(std::move(order));
        } else {
            operations.clear();
            Decide(order, ResultOf(refusal), decided, operations);
            TellRefused(order, ArchiveReason(refusal, good, message.values.size()));
        }
    }
    if (!decided.entries.empty()) m_link.Send(std::move(decided));
    Submit(std::move(operations), std::move(waiting));
}

// ---- answers

bool Session::IsNew(vantrel::RequestId id, std::uint64_t serial, vantrel::ModifyResults& decided) {
    if (!HasAnswer(m_token, serial)) return true;
    const WriteAnswers::Meeting meeting =
        m_server.GetWriteAnswers().Meet(m_token, serial, {m_number, id});
    if (meeting.result) decided.entries.push_back({id, *meeting.result});
    return meeting.isNew;
}

void Session::Decide(const Order& order, std::uint16_t result, vantrel::ModifyResults& decided,
                     std::vector<StoreOperation>& operations) {
    if (order.answered) decided.entries.push_back({order.id, result});
    if (!HasAnswer(m_token, order.serial)) return;
    WriteAnswers& answers = m_server.GetWriteAnswers();
    if (!m_server.TakesWrites()) return answers.Abandon(m_token, order.serial);
    answers.Keep(m_token, order.serial, result, operations);
    answers.Settle(m_token, order.serial, result);
}

void Session::Submit(std::vector<StoreOperation> operations, std::vector<Order> orders) {
    for (const Order& order : orders) {
        if (!HasAnswer(m_token, order.serial)) continue;
        m_server.GetWriteAnswers().Keep(m_token, order.serial, vantrel::ResultOk, operations);
    }
    if (operations.empty() && orders.empty()) return;
    m_server.Write(std::move(operations),
                   [&server = m_server, number = m_number, token = m_token,
                    orders = std::move(orders)] { Finish(server, number, token, orders); });
}

void Session::Finish(Server& server, std::uint64_t number, const std::string& token,
                     const std::vector<Order>& orders) {
    std::map<std::uint64_t, vantrel::ModifyResults> results;  // by session
    for (const Order& order : orders) {
        std::vector<WriteAnswers::Waiter> waiters{{number, order.id}};
        if (HasAnswer(token, order.serial)) {
            waiters = server.GetWriteAnswers().Settle(token, order.serial, vantrel::ResultOk);
        }
        for (const WriteAnswers::Waiter& waiter : waiters) {
            if (!order.answered) continue;
            results[waiter.session].entries.push_back({waiter.id, vantrel::ResultOk});
        }
    }
    for (auto& [waiting, message] : results) {
        Session* session = server.FindSession(waiting);
        if (session == nullptr) continue;
        session->m_link.Send(std::move(message));
        session->CorrectAlarmBits(orders);
    }
}

// ---- orders

Refusal Session::PreparePeriod(const vantrel::PeriodRequest& request,
                               std::vector<StoreOperation>& operations) {
    const bool forArchive = request.action == vantrel::PeriodAction::Update ||
                            request.action == vantrel::PeriodAction::Refresh;
    const bool fits =
        forArchive ? request.kind == value::KindArchive : value::IsReport(request.kind);
    if (!fits) return Refusal::BadKind;
    if (!IsTime(request.time)) return Refusal::BadTime;
    std::size_t variable = Plant::kNone;
    const Refusal refusal = CheckWrite(request.kind, request.variable, variable);
    if (refusal != Refusal::None) return refusal;
    // There is no device that archive data or the value of a span could be fetched from.
    const bool nothingToDo = forArchive || (request.kind == value::KindSpan &&
                                            request.action != vantrel::PeriodAction::Init);
    if (nothingToDo) return Refusal::None;
    if (!m_server.TakesWrites()) return Refusal::StoreBusy;
    const PlantVariable& target = m_server.GetPlant().At(variable);
    const std::int64_t time = ReportTime(request.kind, request.time);
    operations.emplace_back(MakeReport{
        request.action, target.id, request.kind, time, target.config.rule,
        static_cast<int>(m_server.Settings().dayStart), m_server.Confirmed(), OriginNow()});
    if (request.action != vantrel::PeriodAction::Init) {
        m_server.MarkLate(target, request.kind, time, operations);
    }
    return Refusal::None;
}

void Session::Receive(vantrel::PeriodRequest& message) {
    const Order order{message.id,       message.serial, message.kind,
                      message.variable, message.action, message.id != 0};
    vantrel::ModifyResults decided;
    std::vector<StoreOperation> operations;
    std::vector<Order> waiting;
    if (IsNew(message.id, message.serial, decided)) {
        const Refusal refusal = PreparePeriod(message, operations);
        if (operations.empty()) {
            Decide(order, ResultOf(refusal), decided, operations);
        } else {
            waiting.push_back(order);
        }
        if (refusal != Refusal::None) TellRefused(order, ReasonText(refusal));
    }
    if (!decided.entries.empty()) m_link.Send(std::move(decided));
    Submit(std::move(operations), std::move(waiting));
}

}  // namespace kalvex::server

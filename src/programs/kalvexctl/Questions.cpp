#include "programs/kalvexctl/Questions.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/SteadyTime.h"
#include "programs/kalvexctl/Console.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"
#include "vantrel/network/Patience.h"

namespace kalvex::kalvexctl {

namespace {

using vantrel::StreamEnd;

constexpr const char* kNobody = "NOBODY";

// How a call that failed is told by the reason of a connection.
struct EndRow {
    StreamEnd end;
    Fault fault;
    std::uint32_t reason;
};

constexpr EndRow kConnectionEnds[] = {
    {StreamEnd::Unreachable, Fault::NoConnection, vantrel::ReasonUnreachable},
    {StreamEnd::TooLarge, Fault::NoConnection, vantrel::ReasonBadMessage},
    {StreamEnd::NotAQuestion, Fault::NoConnection, vantrel::ReasonBadMessage},
    {StreamEnd::Lost, Fault::Broken, vantrel::ReasonLost},
};

}  // namespace

struct Questions::Asked {
    explicit Asked(platform::MainLoop& loop) : inquiry(loop) {}

    std::string module;
    std::string script;
    std::uint32_t noWay = 0;  // why it could not even be asked
    supervision::Inquiry inquiry;
};

Questions::Questions(Call& call) : m_call(call) {}

Questions::~Questions() = default;

void Questions::Ask(const std::string& module, supervision::Method method,
                    const std::string& script, std::int64_t since,
                    supervision::Inquiry::Piece piece) {
    Asked& asked = *m_asked.emplace_back(std::make_unique<Asked>(m_call.loop));
    asked.module = module;
    asked.script = script;
    const std::int64_t patience = std::int64_t{1000} * m_call.options.timeout;
    m_due = platform::SteadyMilliseconds() + patience;
    vantrel::Endpoint endpoint;
    asked.noWay =
        vantrel::FindEndpoint(module, m_call.addresses, vantrel::RuntimeFolder(), endpoint);
    if (asked.noWay != 0) return;
    const supervision::Question question{m_call.login.GetUser(), m_call.login.GetPassword(),
                                         ClientIdentity(module), script, since};
    asked.inquiry.Ask(m_carrier, endpoint, method, question,
                      [this, patience, piece = std::move(piece)](std::string_view bytes) {
                          m_due = platform::SteadyMilliseconds() + patience;
                          return piece(bytes);
                      });
}

bool Questions::IsOver() const {
    return std::ranges::all_of(
        m_asked, [](const auto& asked) { return asked->noWay != 0 || asked->inquiry.IsOver(); });
}

MaybeEnding Questions::Await() {
    while (!IsOver() && platform::SteadyMilliseconds() < m_due) {
        if (m_call.loop.GetSignal() != 0) return Ending{ExitSignal + m_call.loop.GetSignal()};
        m_call.loop.Turn(m_due);
    }
    for (std::size_t i = 0; i < m_asked.size(); ++i) {
        if (MaybeEnding ending = GetEnding(i)) return ending;
    }
    return {};
}

bool Questions::IsSilent(std::size_t number) const {
    const MaybeEnding ending = GetEnding(number);
    return ending && ending->status == ExitNoConnection;
}

MaybeEnding Questions::GetEnding(std::size_t number) const {
    const Asked& asked = *m_asked[number];
    const supervision::Inquiry& inquiry = asked.inquiry;
    const auto connection = [&](Fault fault, std::uint32_t reason) {
        return m_call.Fail(
            fault, {asked.module, vantrel::ConnectionReasonText(reason, m_call.translator)});
    };
    if (asked.noWay != 0) return connection(Fault::NoConnection, asked.noWay);
    if (!inquiry.IsOver()) return connection(Fault::NoConnection, vantrel::ReasonSilent);
    const auto* row = std::ranges::find(kConnectionEnds, inquiry.GetEnd(), &EndRow::end);
    if (row != std::end(kConnectionEnds)) return connection(row->fault, row->reason);
    switch (inquiry.GetEnd()) {
        case StreamEnd::LoginRefused: {
            const std::string& user = m_call.login.GetUser();
            return m_call.Fail(Fault::LoginRefused, {asked.module, user.empty() ? kNobody : user,
                                                     text::FromUtf8(inquiry.GetReason())});
        }
        case StreamEnd::Refused:
            return m_call.Fail(Fault::NoRight, {asked.module});
        case StreamEnd::NotFound:
            return m_call.Fail(Fault::ScriptNotOpen, {asked.module, asked.script});
        case StreamEnd::NotOffered:
            return m_call.Fail(Fault::NotOffered, {asked.module});
        default:
            return {};
    }
}

}  // namespace kalvex::kalvexctl

#include "workbench/model/RemoteTrend.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "operands/VariableTarget.h"
#include "sources/InterfaceClientConnection.h"
#include "text/CodePage.h"

namespace kalvex::workbench {

namespace {

using platform::Translatable;

constexpr const char* kNoVariable = Translatable("Skrypt nie ma teraz zmiennej zdalnej %s");
constexpr const char* kNoConnection = Translatable("Nie można połączyć się ze źródłem %s");
constexpr const char* kOtherResult = Translatable("Źródło odmówiło archiwum zmiennej %s (%s)");

struct ResultRow {
    std::uint16_t result;
    const char* words;
};

constexpr ResultRow kResults[] = {
    {vantrel::ResultNothing,
     Translatable("Archiwum zmiennej %s jest niedostępne: nie ma danych albo połączenia")},
    {vantrel::ResultNoAccess, Translatable("Brak dostępu do archiwum zmiennej %s")},
    {vantrel::ResultBadRequest, Translatable("Źródło nie daje archiwum zmiennej %s z tego okresu")},
    {vantrel::ResultServerFault, Translatable("Błąd źródła przy odczycie archiwum zmiennej %s")},
};

}  // namespace

operands::CVariable* RemoteTrend::Find() const {
    return operands::FindTarget(m_document.Variables(), m_name);
}

sources::CInterfaceObj* RemoteTrend::FindLink() const {
    operands::CVariable* variable = Find();
    return variable == nullptr ? nullptr : variable->GetSourceRecord();
}

std::string RemoteTrend::GetUnit() {
    operands::CVariable* variable = Find();
    return variable == nullptr ? std::string() : variable->GetUnit();
}

void RemoteTrend::Cancel() {
    if (m_connection == nullptr) return;
    std::exchange(m_connection, nullptr)->CancelDataRequest(value::KindArchive, m_request);
    m_answer = nullptr;
}

void RemoteTrend::Request(std::int64_t from, std::int64_t to, Answer answer) {
    Cancel();
    sources::CInterfaceObj* link = FindLink();
    if (link == nullptr) return answer({{}, {kNoVariable, {text::ToUtf8(m_name)}}});
    sources::CInterfaceClientConnection* connection = link->GetConnection();
    if (connection == nullptr)
        return answer({{}, {kNoConnection, {text::ToUtf8(link->GetSource())}}});
    m_values.RemoveAll();
    m_answer = std::move(answer);
    m_connection = connection;
    m_request = connection->AddDataRequest(value::KindArchive, link->GetVariable(), from, to,
                                           &m_values, *this, kMostTrendPoints);
    // Without a server the answer comes within this call.
    connection->MakeDataRequest(value::KindArchive);
}

void RemoteTrend::OnAnswer(value::ValueKind, vantrel::RequestRecord record) {
    m_connection = nullptr;
    TrendArchive archive;
    if (record.result == vantrel::ResultOk) {
        archive.points.reserve(m_values.GetSize());
        for (std::size_t i = 0; i < m_values.GetSize(); ++i) {
            const value::CVal& value = *m_values.Get(i);
            archive.points.push_back(MakeTrendPoint(value.GetTime(), value));
        }
    } else {
        const auto* row = std::ranges::find(kResults, record.result, &ResultRow::result);
        archive.fault = {row == std::end(kResults) ? kOtherResult : row->words,
                         {text::ToUtf8(m_name), std::to_string(record.result)}};
    }
    m_values.RemoveAll();
    // It may bring about the next request, or the end of this trend.
    std::exchange(m_answer, nullptr)(std::move(archive));
}

std::optional<TrendPoint> RemoteTrend::ReadLive(std::int64_t now) {
    sources::CInterfaceObj* link = FindLink();
    if (link == nullptr || link->GetVarVal() == nullptr) return std::nullopt;
    return MakeTrendPoint(now, link->GetVarVal()->Value());
}

}  // namespace kalvex::workbench

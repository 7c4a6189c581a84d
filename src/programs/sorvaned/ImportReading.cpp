#include "programs/sorvaned/ImportReading.h"

#include <algorithm>

#include "server/Plant.h"
#include "server/Refusal.h"
#include "server/ReportPeriods.h"
#include "text/CodePage.h"
#include "text/WholeNumber.h"
#include "value/LocalTimeText.h"
#include "value/ValueText.h"

namespace kalvex::sorvaned {

namespace {

using platform::Notice;
using server::Refusal;

constexpr const char* kNoHead = platform::Translatable(
    "w pierwszym wierszu muszą stać nazwy kolumn: variable, kind, time, value, status");
constexpr const char* kNotClosed = platform::Translatable(
    "komórka w cudzysłowie nie ma końca albo coś za nią stoi, albo wiersz jest za długi");
constexpr const char* kOtherCells = platform::Translatable("komórek jest %d, a kolumn %d");
constexpr const char* kNotUtf8 = platform::Translatable("wiersz nie jest w UTF-8");
constexpr const char* kNoCounterpart =
    platform::Translatable("tekst ma znaki spoza Windows-1250: %s");
constexpr const char* kBadTime =
    platform::Translatable("niezrozumiały czas, oczekiwano YYYY-MM-DD HH:MM:SS: %s");
constexpr const char* kTwice = platform::Translatable(
    "zegar pokazuje ten czas dwa razy, potrzebne jest za nim przesunięcie, jak +02:00: %s");
constexpr const char* kLeftOut = platform::Translatable("zegar pomija ten czas: %s");
constexpr const char* kNotBegin = platform::Translatable("czas nie jest początkiem raportu: %s");
constexpr const char* kBadStatus = platform::Translatable("nieznane słowo statusu: %s");
constexpr const char* kNoValue = platform::Translatable("brak wartości bez statusu UNKNOWN");
constexpr const char* kNoNumber = platform::Translatable("oczekiwano liczby: %s");
constexpr const char* kOtherType =
    platform::Translatable("wartość nie mieści się w typie zmiennej: %s");
constexpr const char* kOutOfBounds = platform::Translatable("wartość poza granicami zmiennej: %s");

enum Column : std::size_t { ColumnVariable, ColumnKind, ColumnTime, ColumnValue, ColumnStatus };

Notice Refused(Refusal refusal) {
    return {server::TextOf(refusal)};
}

Notice CheckKind(const server::VariableConfig& config, value::ValueKind kind) {
    if (!value::IsStored(kind)) return Refused(Refusal::BadKind);
    if (kind == value::KindArchive) {
        const bool archived = (config.archive & vantrel::ArchiveBit::Any) != 0;
        return archived ? Notice() : Refused(Refusal::NoArchive);
    }
    const bool reported = (config.reports & vantrel::ReportBit(kind)) != 0;
    return reported ? Notice() : Refused(Refusal::NoReport);
}

Notice ReadStatus(std::string_view cell, std::uint16_t& status) {
    while (!cell.empty()) {
        const std::string_view word = cell.substr(0, cell.find(' '));
        cell.remove_prefix(std::min(word.size() + 1, cell.size()));
        auto bits = value::StatusBit(word);
        if (!bits) bits = text::ReadWholeNumber<std::uint16_t>(word);
        if (!bits) return {kBadStatus, {std::string(word)}};
        status |= *bits;
    }
    return {};
}

// Of a variable that holds numbers; a report keeps the number as it is.
Notice ReadNumber(const server::VariableConfig& config, const std::string& cell, bool isReport,
                  value::CVal& value) {
    if (!value::ReadWholeNumber(cell, value)) return {kNoNumber, {cell}};
    if (isReport) return {};
    const bool isReal = config.type == value::ValueType::Double;
    value::CVal converted = value;
    converted.Cast(config.type);
    if (!isReal && converted != value) return {kOtherType, {cell}};
    value = std::move(converted);
    if (!server::IsBounded(config, value::ValueToDouble(value))) return {kOutOfBounds, {cell}};
    return {};
}

Notice ReadContent(const server::VariableConfig& config, const std::string& cell,
                   ImportedRow& row) {
    const std::uint16_t status = row.value.GetStatus();
    const std::int64_t time = row.value.GetTime();
    const bool isUnknown = (status & value::Status::Unknown) != 0;
    const bool isText = config.type == value::ValueType::Text;
    const bool isReport = value::IsReport(row.kind);
    value::CVal value;
    if (cell.empty() && !isUnknown && !isText) return {kNoValue};
    if (isText && !(cell.empty() && isUnknown)) {
        value = value::CVal(text::FromUtf8(cell));
        if (text::ToUtf8(value.Text()) != cell) return {kNoCounterpart, {cell}};
    } else if (!cell.empty()) {
        if (const Notice fault = ReadNumber(config, cell, isReport, value)) return fault;
    }
    value.SetStatus(status);
    if (!server::ConvertWritten(config, row.kind, value)) return Refused(Refusal::BadValue);
    // What a client writes as a report is a user's.
    if (isReport) value.AddStatus(value::Status::SetByUser);
    value.SetTime(time);
    row.value = std::move(value);
    return {};
}

}  // namespace

ImportReading::ImportReading(const server::Definitions& definitions,
                             const platform::UserRecord& user) {
    const server::Rights rights(definitions.access);
    const std::vector<server::Rights::Granted> granted = rights.GrantedTo(user, "");
    for (const server::VariableConfig& config : definitions.variables) {
        m_variables.emplace(config.name, Known{&config, granted[rights.RuleFor(config.name)]});
    }
}

Notice ImportReading::TakeHead(const server::CsvRow& head) {
    if (!head.closed || head.cells.size() != kColumnCount) return {kNoHead};
    for (std::size_t column = 0; column < kColumnCount; ++column) {
        const auto found = std::ranges::find(head.cells, kColumns[column]);
        if (found == head.cells.end()) return {kNoHead};
        m_places[column] = static_cast<std::size_t>(found - head.cells.begin());
    }
    return {};
}

const ImportReading::Known* ImportReading::Find(const std::string& name) const {
    const std::string engine = text::FromUtf8(name);
    const auto found = m_variables.find(engine);
    return found == m_variables.end() || text::ToUtf8(engine) != name ? nullptr : &found->second;
}

Notice ImportReading::TakeTime(const std::string& cell, ImportedRow& row) const {
    std::int64_t time = 0;
    switch (value::ReadExactLocalTime(cell, time)) {
        case value::LocalReading::Unreadable:
            return {kBadTime, {cell}};
        case value::LocalReading::Twice:
            return {kTwice, {cell}};
        case value::LocalReading::LeftOut:
            return {kLeftOut, {cell}};
        case value::LocalReading::Exact:
            break;
    }
    if (!server::IsTime(time)) return Refused(Refusal::BadTime);
    if (server::ReportTime(row.kind, time) != time) return {kNotBegin, {cell}};
    row.value.SetTime(time);
    return {};
}

Notice ImportReading::Take(const server::CsvRow& cells, ImportedRow& row) const {
    if (!cells.closed) return {kNotClosed};
    if (cells.cells.size() != kColumnCount) {
        const std::size_t count = cells.cells.size();
        return {kOtherCells, {std::to_string(count), std::to_string(kColumnCount)}};
    }
    if (!std::ranges::all_of(cells.cells, text::IsUtf8)) return {kNotUtf8};
    const auto cell = [&](Column column) -> const std::string& {
        return cells.cells[m_places[column]];
    };
    const Known* known = Find(cell(ColumnVariable));
    if (known == nullptr) return Refused(Refusal::NoVariable);
    if (!known->granted.write) {
        return Refused(known->granted.read ? Refusal::NoRight : Refusal::Hidden);
    }
    row = {known->config, value::KindFromWord(cell(ColumnKind)), {}};
    if (const Notice fault = CheckKind(*known->config, row.kind)) return fault;
    if (const Notice fault = TakeTime(cell(ColumnTime), row)) return fault;
    std::uint16_t status = 0;
    if (const Notice fault = ReadStatus(cell(ColumnStatus), status)) return fault;
    row.value.SetStatus(status);
    return ReadContent(*known->config, cell(ColumnValue), row);
}

}  // namespace kalvex::sorvaned

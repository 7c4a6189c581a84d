#include "vantrel/plant/PlantFile.h"

#include <array>
#include <cstdio>
#include <limits>

#include "platform/CodePage.h"
#include "platform/JsonDocument.h"
#include "values/LocalTime.h"
#include "vantrel/Codes.h"

namespace kalvex {

namespace {

using Json = nlohmann::ordered_json;

struct Fault {
    Json::json_pointer place;
    std::string words;
};

constexpr std::int64_t kAnyNumber = std::numeric_limits<std::int64_t>::max();

// A value of the file and where it stands.
class Item {
  public:
    Item(const Json& json, Json::json_pointer place) : m_json(json), m_place(std::move(place)) {}

    [[noreturn]] void Fail(std::string words) const { throw Fault{m_place, std::move(words)}; }

    const Json& Content() const { return m_json; }
    bool IsNull() const { return m_json.is_null(); }

    std::int64_t Number(std::int64_t least, std::int64_t greatest) const {
        const bool whole = m_json.is_number_integer() &&
                           !(m_json.is_number_unsigned() &&
                             m_json.get<std::uint64_t>() > static_cast<std::uint64_t>(kAnyNumber));
        if (!whole || m_json.get<std::int64_t>() < least || m_json.get<std::int64_t>() > greatest) {
            Fail(greatest == kAnyNumber
                     ? "a whole number of at least " + std::to_string(least) + " is expected"
                     : "a whole number from " + std::to_string(least) + " to " +
                           std::to_string(greatest) + " is expected");
        }
        return m_json.get<std::int64_t>();
    }

    std::int64_t Tick() const { return Number(0, kAnyNumber); }

    std::string Text() const {
        if (!m_json.is_string()) Fail("a text is expected");
        return FromUtf8(m_json.get_ref<const std::string&>());
    }

    // Local time as text, or seconds.
    std::int64_t Time() const {
        if (m_json.is_number()) return Number(0, kAnyNumber);
        TimeFields fields;
        int end = 0;
        const std::string text = m_json.is_string() ? m_json.get<std::string>() : std::string();
        const int count =
            std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d%n", &fields.year, &fields.month,
                        &fields.day, &fields.hour, &fields.minute, &fields.second, &end);
        const bool good = count == 6 && static_cast<std::size_t>(end) == text.size() &&
                          fields.year >= 1970 && fields.month >= 1 && fields.month <= 12 &&
                          fields.day >= 1 && fields.day <= 31 && fields.hour >= 0 &&
                          fields.hour <= 23 && fields.minute >= 0 && fields.minute <= 59 &&
                          fields.second >= 0 && fields.second <= 59;
        if (!good) Fail("a time (\"YYYY-MM-DD HH:MM:SS\" or seconds) is expected");
        return MakeLocalTime(fields);
    }

    template <class Row>
    void Rows(Row row) const {
        if (!m_json.is_array()) Fail("a list is expected");
        for (std::size_t i = 0; i < m_json.size(); ++i) row(Item(m_json[i], m_place / i));
    }

    // Each member of the object, with its name in UTF-8.
    template <class Member>
    void Members(Member member) const {
        if (!m_json.is_object()) Fail("an object is expected");
        for (const auto& [name, content] : m_json.items()) {
            member(name, Item(content, m_place / name));
        }
    }

  private:
    const Json& m_json;
    Json::json_pointer m_place;
};

// A field of an object of the file and what reads it.
template <class Object>
struct Field {
    std::string_view name;
    void (*read)(Object& object, const Item& item);
};

template <class Object, std::size_t Size>
void ReadFields(Object& object, const Item& item, const std::array<Field<Object>, Size>& fields) {
    item.Members([&](const std::string& name, const Item& member) {
        for (const Field<Object>& field : fields) {
            if (field.name == name) return field.read(object, member);
        }
        member.Fail("there is no such field");
    });
}

// ---- values

struct ValueRow {
    CVal value;
    std::optional<int> type;
    bool given = false;
    bool stamped = false;
    std::int64_t atTick = 0;
    std::uint16_t status = 0;
    std::int64_t time = 0;
};

CVal ReadValue(const Item& item) {
    const Json& json = item.Content();
    if (json.is_null()) return CVal();
    if (json.is_string()) return CVal(item.Text());
    if (json.is_number_float()) return CVal(json.get<double>());
    if (!json.is_number()) item.Fail("a number, a text or null is expected");
    return CVal(item.Number(std::numeric_limits<std::int64_t>::min(), kAnyNumber));
}

constexpr std::array<Field<ValueRow>, 5> kValueFields = {{
    {"atTick", [](ValueRow& row, const Item& item) { row.atTick = item.Tick(); }},
    {"value",
     [](ValueRow& row, const Item& item) {
         row.value = ReadValue(item);
         row.given = true;
     }},
    {"type",
     [](ValueRow& row, const Item& item) { row.type = static_cast<int>(item.Number(120, 255)); }},
    {"status",
     [](ValueRow& row, const Item& item) {
         row.status = static_cast<std::uint16_t>(item.Number(0, 0xFFFF));
     }},
    {"time",
     [](ValueRow& row, const Item& item) {
         row.time = item.Time();
         row.stamped = true;
     }},
}};

ValueRow ReadValueRow(const Item& item) {
    ValueRow row;
    ReadFields(row, item, kValueFields);
    if (!row.given) item.Fail("\"value\" is missing");
    if (!row.type && row.value.GetType() == ValueType::Int64) row.type = ValueType::Int;
    if (row.type) {
        const CVal original = row.value;
        const bool fits = *row.type == ValueType::None ||
                          (row.value.Cast(*row.type) && row.value.GetType() == *row.type &&
                           (!ValueType::IsInteger(original.GetType()) || row.value == original));
        if (!fits) item.Fail("the value is none of type " + std::to_string(*row.type));
        if (*row.type == ValueType::None) row.value = CVal();
    }
    row.value.SetStatus(row.status);
    row.value.SetTime(row.time);
    return row;
}

void ReadCurrent(PlantVariable& variable, const Item& item) {
    item.Rows([&](const Item& entry) {
        ValueRow row = ReadValueRow(entry);
        variable.current.push_back({row.atTick, std::move(row.value), row.stamped});
    });
}

template <ValueKind Kind>
void ReadStored(PlantVariable& variable, const Item& item) {
    item.Rows([&](const Item& entry) {
        ValueRow row = ReadValueRow(entry);
        if (!row.stamped) entry.Fail("\"time\" is missing");
        variable.stored[Kind].insert_or_assign(row.time, std::move(row.value));
    });
}

// ---- variables

template <std::optional<std::uint16_t> PlantVariable::*Code>
void ReadCode(PlantVariable& variable, const Item& item) {
    if (item.IsNull()) return;
    variable.*Code = static_cast<std::uint16_t>(item.Number(0, 0xFFFF));
}

void ReadAttributes(PlantVariable& variable, const Item& item) {
    item.Members([&](const std::string& name, const Item& member) {
        const bool number = member.Content().is_number();
        variable.attributes.emplace_back(
            name, number ? std::to_string(member.Number(0, kAnyNumber)) : member.Text());
    });
}

constexpr std::array<Field<PlantVariable>, 10> kVariableFields = {{
    {"attributes", ReadAttributes},
    {"current", ReadCurrent},
    {"hour", ReadStored<KindHour>},
    {"day", ReadStored<KindDay>},
    {"month", ReadStored<KindMonth>},
    {"span", ReadStored<KindSpan>},
    {"archive", ReadStored<KindArchive>},
    {"accessError", ReadCode<&PlantVariable::accessError>},
    {"readError", ReadCode<&PlantVariable::readError>},
    {"writeError", ReadCode<&PlantVariable::writeError>},
}};

void ReadVariables(PlantSource& source, const Item& item) {
    item.Members([&](const std::string& name, const Item& member) {
        PlantVariable& variable = source.variables.emplace_back();
        variable.name = FromUtf8(name);
        ReadFields(variable, member, kVariableFields);
    });
}

// ---- sources

constexpr std::array<Field<PlantOutage>, 3> kOutageFields = {{
    {"fromTick", [](PlantOutage& outage, const Item& item) { outage.from = item.Tick(); }},
    {"toTick", [](PlantOutage& outage, const Item& item) { outage.to = item.Tick(); }},
    {"reason",
     [](PlantOutage& outage, const Item& item) {
         outage.reason = static_cast<std::uint32_t>(item.Number(0, 0xFFFFFFFF));
     }},
}};

void ReadOutages(PlantSource& source, const Item& item) {
    item.Rows([&](const Item& entry) {
        PlantOutage outage{0, kAnyNumber, ReasonLost};
        ReadFields(outage, entry, kOutageFields);
        if (outage.to <= outage.from) entry.Fail("\"toTick\" must be greater than \"fromTick\"");
        source.outages.push_back(outage);
    });
}

constexpr std::array<Field<PlantReportChange>, 3> kReportChangeFields = {{
    {"atTick", [](PlantReportChange& change, const Item& item) { change.atTick = item.Tick(); }},
    {"kind",
     [](PlantReportChange& change, const Item& item) {
         change.kind = KindFromWord(item.Text());
         if (change.kind < KindHour || change.kind > KindSpan) {
             item.Fail("HREP, DREP, MREP or SREP is expected");
         }
     }},
    {"time", [](PlantReportChange& change, const Item& item) { change.time = item.Time(); }},
}};

void ReadReportChanges(PlantSource& source, const Item& item) {
    item.Rows([&](const Item& entry) {
        PlantReportChange& change = source.reportChanges.emplace_back();
        ReadFields(change, entry, kReportChangeFields);
        if (change.kind == KindNone) entry.Fail("\"kind\" is missing");
    });
}

// What a source's data begin with hangs on when it connects, in whichever order they are written.
struct SourceRow {
    PlantSource source;
    std::optional<std::int64_t> dataAtTick;
};

constexpr std::array<Field<SourceRow>, 6> kSourceFields = {{
    {"connectAtTick",
     [](SourceRow& row, const Item& item) {
         row.source.connectAtTick =
             item.IsNull() ? std::nullopt : std::optional<std::int64_t>(item.Tick());
     }},
    {"dataAtTick", [](SourceRow& row, const Item& item) { row.dataAtTick = item.Tick(); }},
    {"latencyTicks",
     [](SourceRow& row, const Item& item) { row.source.latencyTicks = item.Tick(); }},
    {"outages", [](SourceRow& row, const Item& item) { ReadOutages(row.source, item); }},
    {"variables", [](SourceRow& row, const Item& item) { ReadVariables(row.source, item); }},
    {"reportChanges",
     [](SourceRow& row, const Item& item) { ReadReportChanges(row.source, item); }},
}};

void ReadSources(PlantDefinition& plant, const Item& item) {
    item.Members([&](const std::string& name, const Item& member) {
        SourceRow row;
        ReadFields(row, member, kSourceFields);
        row.source.name = FromUtf8(name);
        row.source.dataAtTick = row.dataAtTick.value_or(row.source.connectAtTick.value_or(0));
        plant.sources.push_back(std::move(row.source));
    });
}

constexpr std::array<Field<PlantDefinition>, 1> kPlantFields = {{{"sources", ReadSources}}};

}  // namespace

bool ParsePlant(std::string_view text, PlantDefinition& plant, std::string& error) {
    JsonDocument document;
    if (!document.Parse(std::string(text), error)) return false;
    try {
        ReadFields(plant, Item(document.Root(), Json::json_pointer()), kPlantFields);
        return true;
    } catch (const Fault& fault) {
        error = "line " + std::to_string(document.LineOf(fault.place)) + ": ";
        if (!fault.place.empty()) error += fault.place.to_string() + ": ";
        error += fault.words;
        return false;
    }
}

}  // namespace kalvex

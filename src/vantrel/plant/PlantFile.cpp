#include "vantrel/plant/PlantFile.h"

#include <array>
#include <limits>

#include "platform/JsonFile.h"
#include "text/CodePage.h"
#include "value/LocalTimeText.h"
#include "vantrel/Codes.h"

namespace kalvex::vantrel {

namespace {

using Type = platform::JsonNode::Type;

struct Fault {
    const platform::JsonNode& place;
    std::string words;
};

constexpr std::int64_t kAnyNumber = std::numeric_limits<std::int64_t>::max();

// A value of the file with the name by which its faults are told.
class Item {
  public:
    Item(const platform::JsonNode& node, std::string name)
        : m_node(node), m_name(std::move(name)) {}

    [[noreturn]] void Fail(const std::string& words) const {
        throw Fault{m_node, '"' + m_name + "\" " + words};
    }

    const platform::JsonNode& Node() const { return m_node; }
    bool IsNull() const { return m_node.type == Type::Null; }

    std::int64_t Number(std::int64_t least, std::int64_t greatest) const {
        const bool good =
            m_node.type == Type::Integer && m_node.integer >= least && m_node.integer <= greatest;
        if (!good) {
            Fail(greatest == kAnyNumber
                     ? "must be a whole number of at least " + std::to_string(least)
                     : "must be a whole number from " + std::to_string(least) + " to " +
                           std::to_string(greatest));
        }
        return m_node.integer;
    }

    std::int64_t Tick() const { return Number(0, kAnyNumber); }

    std::string Text() const {
        if (m_node.type != Type::Text) Fail("must be a text");
        return text::FromUtf8(m_node.text);
    }

    // Local time as text, or seconds.
    std::int64_t Time() const {
        if (m_node.type == Type::Integer) return Number(0, kAnyNumber);
        const std::optional<std::int64_t> time = value::ParseLocalTime(m_node.text);
        if (!time) Fail("must be a time (\"YYYY-MM-DD HH:MM:SS\" or seconds)");
        return *time;
    }

    // Each element of the array.
    template <class Row>
    void Rows(Row row) const {
        if (m_node.type != Type::Array) Fail("must be an array");
        for (const platform::JsonNode& node : m_node.items) row(Item(node, m_name));
    }

    // Each member of the object.
    template <class Member>
    void Members(Member member) const {
        if (m_node.type != Type::Object) Fail("must be an object");
        for (std::size_t i = 0; i < m_node.items.size(); ++i) {
            member(Item(m_node.items[i], m_node.names[i]));
        }
    }

    const std::string& Name() const { return m_name; }  // UTF-8

  private:
    const platform::JsonNode& m_node;
    std::string m_name;
};

// A field of an object of the file and what reads it.
template <class Object>
struct Field {
    std::string_view name;
    void (*read)(Object& object, const Item& item);
};

template <class Object, std::size_t Size>
void ReadFields(Object& object, const Item& item, const std::array<Field<Object>, Size>& fields) {
    item.Members([&](const Item& member) {
        for (const Field<Object>& field : fields) {
            if (field.name == member.Name()) return field.read(object, member);
        }
        member.Fail("is no field of \"" + item.Name() + '"');
    });
}

// ---- values

struct ValueRow {
    value::CVal value;
    std::optional<int> type;
    bool given = false;
    bool stamped = false;
    std::int64_t atTick = 0;
    std::uint16_t status = 0;
    std::int64_t time = 0;
};

value::CVal ReadValue(const Item& item) {
    switch (item.Node().type) {
        case Type::Null:
            return value::CVal();
        case Type::Text:
            return value::CVal(item.Text());
        case Type::Real:
            return value::CVal(item.Node().real);
        case Type::Integer:
            return value::CVal(item.Node().integer);
        default:
            item.Fail("must be a number, a text or null");
    }
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
    if (!row.given) item.Fail("has an entry without \"value\"");
    if (!row.type && row.value.GetType() == value::ValueType::Int64)
        row.type = value::ValueType::Int;
    if (row.type) {
        const value::CVal original = row.value;
        const bool fits =
            *row.type == value::ValueType::None ||
            (row.value.Cast(*row.type) && row.value.GetType() == *row.type &&
             (!value::ValueType::IsInteger(original.GetType()) || row.value == original));
        if (!fits) item.Fail("has a value that is none of type " + std::to_string(*row.type));
        if (*row.type == value::ValueType::None) row.value = value::CVal();
    }
    row.value.SetStatus(row.status);
    row.value.SetTime(row.time);
    return row;
}

void ReadCurrent(SimulatedVariable& variable, const Item& item) {
    item.Rows([&](const Item& entry) {
        ValueRow row = ReadValueRow(entry);
        variable.current.push_back({row.atTick, std::move(row.value), row.stamped});
    });
}

template <value::ValueKind Kind>
void ReadStored(SimulatedVariable& variable, const Item& item) {
    item.Rows([&](const Item& entry) {
        ValueRow row = ReadValueRow(entry);
        if (!row.stamped) entry.Fail("has an entry without \"time\"");
        variable.stored[Kind].insert_or_assign(row.time, std::move(row.value));
    });
}

// ---- variables

template <std::optional<std::uint16_t> SimulatedVariable::*Code>
void ReadCode(SimulatedVariable& variable, const Item& item) {
    if (item.IsNull()) return;
    variable.*Code = static_cast<std::uint16_t>(item.Number(0, 0xFFFF));
}

void ReadAttributes(SimulatedVariable& variable, const Item& item) {
    item.Members([&](const Item& member) {
        const bool number = member.Node().type == Type::Integer;
        variable.attributes.emplace_back(
            member.Name(), number ? std::to_string(member.Number(0, kAnyNumber)) : member.Text());
    });
}

constexpr std::array<Field<SimulatedVariable>, 10> kVariableFields = {{
    {"attributes", ReadAttributes},
    {"current", ReadCurrent},
    {"hour", ReadStored<value::KindHour>},
    {"day", ReadStored<value::KindDay>},
    {"month", ReadStored<value::KindMonth>},
    {"span", ReadStored<value::KindSpan>},
    {"archive", ReadStored<value::KindArchive>},
    {"accessError", ReadCode<&SimulatedVariable::accessError>},
    {"readError", ReadCode<&SimulatedVariable::readError>},
    {"writeError", ReadCode<&SimulatedVariable::writeError>},
}};

void ReadVariables(PlantSource& source, const Item& item) {
    item.Members([&](const Item& member) {
        SimulatedVariable& variable = source.variables.emplace_back();
        variable.name = text::FromUtf8(member.Name());
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
        if (outage.to <= outage.from)
            entry.Fail("has an entry whose \"toTick\" is not greater than its \"fromTick\"");
        source.outages.push_back(outage);
    });
}

constexpr std::array<Field<PlantReportChange>, 3> kReportChangeFields = {{
    {"atTick", [](PlantReportChange& change, const Item& item) { change.atTick = item.Tick(); }},
    {"kind",
     [](PlantReportChange& change, const Item& item) {
         change.kind = value::KindFromWord(item.Text());
         if (!value::IsReport(change.kind)) {
             item.Fail("must be HREP, DREP, MREP or SREP");
         }
     }},
    {"time", [](PlantReportChange& change, const Item& item) { change.time = item.Time(); }},
}};

void ReadReportChanges(PlantSource& source, const Item& item) {
    item.Rows([&](const Item& entry) {
        PlantReportChange& change = source.reportChanges.emplace_back();
        ReadFields(change, entry, kReportChangeFields);
        if (change.kind == value::KindNone) entry.Fail("has an entry without \"kind\"");
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
    item.Members([&](const Item& member) {
        SourceRow row;
        ReadFields(row, member, kSourceFields);
        row.source.name = text::FromUtf8(member.Name());
        row.source.dataAtTick = row.dataAtTick.value_or(row.source.connectAtTick.value_or(0));
        plant.sources.push_back(std::move(row.source));
    });
}

constexpr std::array<Field<PlantDefinition>, 1> kPlantFields = {{{"sources", ReadSources}}};

}  // namespace

bool ReadPlant(const std::string& path, PlantDefinition& plant, std::string& fault) {
    platform::JsonFile file(path);
    platform::JsonNode root;
    bool good = file.Read(root);
    try {
        if (good) ReadFields(plant, Item(root, "plant"), kPlantFields);
    } catch (const Fault& found) {
        good = file.Fault(found.place, found.words);
    }
    fault = file.GetFault();
    return good;
}

}  // namespace kalvex::vantrel

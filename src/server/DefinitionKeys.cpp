#include "server/DefinitionKeys.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/UserDirectory.h"
#include "text/Characters.h"
#include "text/CodePage.h"
#include "text/WholeNumber.h"
#include "value/LocalTime.h"
#include "value/ValueText.h"
#include "vantrel/Listening.h"

namespace kalvex::server {

namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::int64_t kMostKeepDays = 36500;
constexpr std::int64_t kMostFreeSpace = 1 << 20;  // MiB
constexpr std::int64_t kLongestStale = 365 * value::kSecondsPerDay;

struct TypeRow {
    std::string_view word;
    std::uint16_t code;
};

constexpr TypeRow kTypes[] = {
    {"bool", value::ValueType::Bool},     {"short", value::ValueType::Short},
    {"int", value::ValueType::Int},       {"int64", value::ValueType::Int64},
    {"double", value::ValueType::Double}, {"text", value::ValueType::Text},
};

struct NobodyRow {
    std::string_view word;
    vantrel::NobodyAccess access;
};

constexpr NobodyRow kNobodyRows[] = {
    {"never", vantrel::NobodyAccess::Never},
    {"local", vantrel::NobodyAccess::Local},
    {"always", vantrel::NobodyAccess::Always},
};

struct PeriodRow {
    std::string_view word;
    value::ValueKind kind;
};

constexpr PeriodRow kPeriods[] = {
    {"hour", value::KindHour}, {"day", value::KindDay}, {"month", value::KindMonth}};

bool HasControls(std::string_view text) {
    return std::any_of(text.begin(), text.end(), text::IsControl);
}

platform::Notice SetInteger(std::int64_t& target, std::string_view text, std::int64_t least,
                            std::int64_t most) {
    const auto number = text::ReadWholeNumber<std::int64_t>(text);
    if (!number || *number < least || *number > most) {
        return {platform::Translatable("oczekiwano liczby całkowitej od %s do %s"),
                {std::to_string(least), std::to_string(most)}};
    }
    target = *number;
    return {};
}

template <auto Member, std::int64_t Least, std::int64_t Most, class Target = Definitions>
platform::Notice SetSetting(Target& target, std::string_view, std::string_view text) {
    return SetInteger(target.*Member, text, Least, Most);
}

template <auto Member>
platform::Notice SetPath(Definitions& target, std::string_view, std::string_view text) {
    return vantrel::SetConfiguredPath(target.*Member, text);
}

template <bool vantrel::Listening::*Member>
platform::Notice SetFlag(Definitions& target, std::string_view, std::string_view text) {
    if (text != "0" && text != "1") return {platform::Translatable("oczekiwano true albo false")};
    target.listening.*Member = text == "1";
    return {};
}

template <platform::Notice (*Set)(vantrel::Listening&, std::string_view)>
platform::Notice SetListening(Definitions& target, std::string_view, std::string_view text) {
    return Set(target.listening, text);
}

template <std::string vantrel::Listening::*Member>
platform::Notice SetFile(Definitions& target, std::string_view, std::string_view text) {
    return vantrel::SetConfiguredPath(target.listening.*Member, text);
}

template <class Target, std::string Target::*Member>
platform::Notice SetRight(Target& target, std::string_view, std::string_view text) {
    if (!platform::IsRightText(text))
        return {platform::Translatable("oczekiwano poziomu od 0 do 100 albo nazwy grupy")};
    target.*Member = text;
    return {};
}

platform::Notice SetServerName(Definitions& target, std::string_view, std::string_view text) {
    constexpr std::string_view kForbidden = "/\\@ ";
    if (text.empty() || text.size() > kLongestName || HasControls(text) ||
        text.find_first_of(kForbidden) != std::string_view::npos) {
        return {platform::Translatable(
            "oczekiwano nazwy od 1 do 255 znaków, bez odstępów i znaków / \\ @")};
    }
    target.name = text;
    return {};
}

platform::Notice SetNobody(Definitions& target, std::string_view, std::string_view text) {
    for (const NobodyRow& row : kNobodyRows) {
        if (row.word != text) continue;
        target.nobody = row.access;
        return {};
    }
    return {platform::Translatable("oczekiwano jednego ze słów never, local, always")};
}

platform::Notice SetAutomatic(Definitions& target, std::string_view, std::string_view text) {
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        words.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    target.automatic.clear();
    for (const PeriodRow& row : kPeriods) {
        if (std::erase(words, row.word) > 0) target.automatic.push_back(row.kind);
    }
    if (words.empty()) return {};
    return {platform::Translatable("oczekiwano słów hour, day, month")};
}

template <class Target>
platform::Notice SetPattern(Target& target, std::string_view, std::string_view text) {
    if (text.empty())
        return {platform::Translatable("oczekiwano nazwy, w której * i ? zastępują znaki")};
    target.variables = text;
    return {};
}

platform::Notice SetName(VariableConfig& target, std::string_view, std::string_view text) {
    if (text.empty() || text.size() > kLongestName || HasControls(text) || text.front() == ' ' ||
        text.back() == ' ') {
        return {platform::Translatable(
            "oczekiwano nazwy od 1 do 255 znaków, bez odstępu na początku i na końcu i bez "
            "znaków sterujących")};
    }
    target.name = text;
    return {};
}

platform::Notice SetType(VariableConfig& target, std::string_view, std::string_view text) {
    for (const TypeRow& row : kTypes) {
        if (row.word != text) continue;
        target.type = row.code;
        return {};
    }
    return {
        platform::Translatable("oczekiwano jednego ze słów bool, short, int, int64, double, text")};
}

platform::Notice SetText(VariableConfig& target, std::string_view name, std::string_view text) {
    if (text.size() > kLongestText)
        return {platform::Translatable("tekst dłuższy niż 65535 znaków")};
    target.attributes[std::string(name)] = text;
    return {};
}

bool ReadNumber(std::string_view text, double& number) {
    return value::ConvertString2Double(text, &number) && std::isfinite(number);
}

template <std::optional<double> VariableConfig::*Member>
platform::Notice SetBound(VariableConfig& target, std::string_view name, std::string_view text) {
    double number = 0;
    if (!ReadNumber(text, number)) return {platform::Translatable("oczekiwano liczby")};
    target.*Member = number;
    return SetText(target, name, text);
}

template <unsigned VariableConfig::*Member>
platform::Notice SetBits(VariableConfig& target, std::string_view name, std::string_view text) {
    std::int64_t number = 0;
    const platform::Notice fault = SetInteger(number, text, 0, 255);
    if (fault) return fault;
    target.*Member = static_cast<unsigned>(number);
    return SetText(target, name, text);
}

platform::Notice SetRule(VariableConfig& target, std::string_view, std::string_view text) {
    const std::optional<ReportRule> rule = ReportRuleFromWord(text);
    if (!rule) return {platform::Translatable("oczekiwano jednego ze słów mean, sum, increase")};
    target.rule = *rule;
    return {};
}

platform::Notice SetInitial(VariableConfig& target, std::string_view, std::string_view text) {
    if (text.size() > kLongestText)
        return {platform::Translatable("tekst dłuższy niż 65535 znaków")};
    if (text.find('\0') != std::string_view::npos)
        return {platform::Translatable("tekst ze znakiem o kodzie 0")};
    target.initial = text;
    return {};
}

platform::Notice SetSignal(VariableConfig& target, std::string_view, std::string_view text) {
    platform::Notice fault;
    target.signal = Signal::Parse(text::ToUtf8(text), fault);
    return fault;
}

AlarmLimits& AlarmsOf(VariableConfig& target) {
    if (!target.alarms) target.alarms = std::make_shared<AlarmLimits>();
    return *target.alarms;
}

template <std::optional<double> AlarmLimits::*Member>
platform::Notice SetLimit(VariableConfig& target, std::string_view, std::string_view text) {
    double number = 0;
    if (!ReadNumber(text, number)) return {platform::Translatable("oczekiwano liczby")};
    AlarmsOf(target).*Member = number;
    return {};
}

platform::Notice SetHysteresis(VariableConfig& target, std::string_view, std::string_view text) {
    double number = 0;
    if (!ReadNumber(text, number) || number < 0)
        return {platform::Translatable("oczekiwano liczby nie mniejszej od 0")};
    AlarmsOf(target).hysteresis = number;
    return {};
}

platform::Notice SetRate(VariableConfig& target, std::string_view, std::string_view text) {
    double number = 0;
    if (!ReadNumber(text, number) || number <= 0)
        return {platform::Translatable("oczekiwano liczby większej od 0")};
    AlarmsOf(target).rate = number;
    return {};
}

template <std::int64_t AlarmLimits::*Member, std::int64_t Least, std::int64_t Most>
platform::Notice SetAlarmTime(VariableConfig& target, std::string_view, std::string_view text) {
    return SetInteger(AlarmsOf(target).*Member, text, Least, Most);
}

using Setting = DefinitionKey<Definitions>;

constexpr Setting kServerKeys[] = {
    {"name", SetServerName},
    {"data", SetPath<&Definitions::dataFolder>},
    {"users", SetPath<&Definitions::usersFile>},
    {"nobody", SetNobody},
    {"log", SetRight<Definitions, &Definitions::logRight>},
    {"clients", SetSetting<&Definitions::maxClients, 1, kMostClients>},
    {"variables", SetSetting<&Definitions::maxVariables, 1, vantrel::kMostVariables>},
    {"save-period", SetSetting<&Definitions::savePeriod, 1, 3600>},
    {"free-space", SetSetting<&Definitions::freeSpace, 0, kMostFreeSpace>},
};

constexpr Setting kArchiveKeys[] = {
    {"period", SetSetting<&Definitions::archivePeriod, 1, 86400>},
    {"keep-days", SetSetting<&Definitions::keepDays, 0, kMostKeepDays>},
};

constexpr Setting kReportKeys[] = {
    {"day-start", SetSetting<&Definitions::dayStart, 0, 23>},
    {"automatic", SetAutomatic, true},
};

constexpr Setting kNetworkKeys[] = {
    {"local-socket", SetFlag<&vantrel::Listening::localSocket>},
    {"group", SetListening<vantrel::SetListeningGroup>},
    {"address", SetListening<vantrel::SetListeningAddress>},
    {"certificate", SetFile<&vantrel::Listening::certificate>},
    {"key", SetFile<&vantrel::Listening::certificateKey>},
    {"authority", SetFile<&vantrel::Listening::authority>},
    {"plain-text-allowed", SetFlag<&vantrel::Listening::plainTextAllowed>},
};

constexpr DefinitionSection kSections[] = {
    {"server", kServerKeys},
    {"network", kNetworkKeys},
    {"archive", kArchiveKeys},
    {"reports", kReportKeys},
};

template <auto Member, class Settings>
bool KeepIn(const Settings& current, Settings& next) {
    const bool changed = next.*Member != current.*Member;
    next.*Member = current.*Member;
    return changed;
}

template <auto Member>
bool Keep(const Definitions& current, Definitions& next) {
    return KeepIn<Member>(current, next);
}

template <auto Member>
bool KeepListening(const Definitions& current, Definitions& next) {
    return KeepIn<Member>(current.listening, next.listening);
}

struct StartKey {
    const char* name;
    bool (*keep)(const Definitions& current, Definitions& next);
};

// Those that count at the start only.
constexpr StartKey kStartKeys[] = {
    {"server.name", Keep<&Definitions::name>},
    {"server.data", Keep<&Definitions::dataFolder>},
    {"server.users", Keep<&Definitions::usersFile>},
    {"network.local-socket", KeepListening<&vantrel::Listening::localSocket>},
    {"network.group", KeepListening<&vantrel::Listening::group>},
    {"network.address", KeepListening<&vantrel::Listening::address>},
    {"network.certificate", KeepListening<&vantrel::Listening::certificate>},
    {"network.key", KeepListening<&vantrel::Listening::certificateKey>},
    {"network.authority", KeepListening<&vantrel::Listening::authority>},
    {"network.plain-text-allowed", KeepListening<&vantrel::Listening::plainTextAllowed>},
};

constexpr DefinitionKey<AccessRule> kAccessKeys[] = {
    {"variables", SetPattern<AccessRule>},
    {"read", SetRight<AccessRule, &AccessRule::read>},
    {"write", SetRight<AccessRule, &AccessRule::write>},
    {"acknowledge", SetRight<AccessRule, &AccessRule::acknowledge>},
};

constexpr DefinitionKey<RetentionRule> kRetentionKeys[] = {
    {"variables", SetPattern<RetentionRule>},
    {"keep-days", SetSetting<&RetentionRule::keepDays, 0, kMostKeepDays, RetentionRule>},
    {"reports-keep-days",
     SetSetting<&RetentionRule::reportsKeepDays, 0, kMostKeepDays, RetentionRule>},
};

constexpr DefinitionKey<VariableConfig> kVariableKeys[] = {
    {"name", SetName},
    {"type", SetType},
    {vantrel::Attribute::Description, SetText},
    {vantrel::Attribute::DescName, SetText},
    {vantrel::Attribute::Unit, SetText},
    {vantrel::Attribute::DispFormat, SetText},
    {vantrel::Attribute::Minimum, SetBound<&VariableConfig::minimum>},
    {vantrel::Attribute::Maximum, SetBound<&VariableConfig::maximum>},
    {vantrel::Attribute::Archive, SetBits<&VariableConfig::archive>},
    {vantrel::Attribute::Reports, SetBits<&VariableConfig::reports>},
    {vantrel::Attribute::Path, SetText},
    {"report", SetRule},
    {"value", SetInitial},
    {"signal", SetSignal},
    {"ll", SetLimit<&AlarmLimits::lowLow>},
    {"l", SetLimit<&AlarmLimits::low>},
    {"h", SetLimit<&AlarmLimits::high>},
    {"hh", SetLimit<&AlarmLimits::highHigh>},
    {"hysteresis", SetHysteresis},
    {"alarm-delay", SetAlarmTime<&AlarmLimits::delay, 0, value::kSecondsPerDay>},
    {"rate", SetRate},
    {"stale", SetAlarmTime<&AlarmLimits::stale, 1, kLongestStale>},
};

// The first one that is given; one that is given as 0 is as if it were not.
std::string FirstAlarmKey(const AlarmLimits& limits) {
    const std::pair<const char*, bool> rows[] = {
        {"ll", limits.lowLow.has_value()},      {"l", limits.low.has_value()},
        {"h", limits.high.has_value()},         {"hh", limits.highHigh.has_value()},
        {"rate", limits.rate.has_value()},      {"stale", limits.stale != 0},
        {"hysteresis", limits.hysteresis != 0}, {"alarm-delay", true},
    };
    return std::ranges::find_if(rows, [](const auto& row) { return row.second; })->first;
}

// What the limits need beside each other.
platform::Notice CheckAlarms(const VariableConfig& variable, std::string& key) {
    const AlarmLimits& limits = *variable.alarms;
    if (variable.type == value::ValueType::Text) {
        key = FirstAlarmKey(limits);
        return {platform::Translatable("zmienna tekstowa nie może mieć alarmów")};
    }
    struct Row {
        const char* key;
        const std::optional<double>& limit;
        bool isHigh;
    };
    const Row rows[] = {{"ll", limits.lowLow, false},
                        {"l", limits.low, false},
                        {"h", limits.high, true},
                        {"hh", limits.highHigh, true}};
    const Row* before = nullptr;
    std::optional<double> gap;  // between the sides
    for (const Row& row : rows) {
        if (!row.limit) continue;
        const bool isOtherSide = before != nullptr && before->isHigh != row.isHigh;
        const double step = before == nullptr ? 0 : *row.limit - *before->limit;
        if (step < 0 || (isOtherSide && step == 0)) {
            key = row.key;
            return {platform::Translatable("granice muszą rosnąć: ll <= l < h <= hh")};
        }
        if (isOtherSide) gap = step;
        before = &row;
    }
    if (gap && limits.hysteresis > *gap) {
        key = "hysteresis";
        return {platform::Translatable(
            "hysteresis nie może być większa od odstępu granicy górnej od dolnej")};
    }
    if (variable.signal && limits.stale != 0) {
        key = "stale";
        return {platform::Translatable("wartość, którą wyznacza sygnał, jest zawsze aktualna")};
    }
    return {};
}

}  // namespace

std::span<const DefinitionSection> DefinitionSections() {
    return kSections;
}

std::vector<std::string> KeepUntilNextStart(const Definitions& current, Definitions& next) {
    std::vector<std::string> names;
    for (const StartKey& key : kStartKeys) {
        if (key.keep(current, next)) names.emplace_back(key.name);
    }
    return names;
}

std::span<const DefinitionKey<AccessRule>> AccessKeys() {
    return kAccessKeys;
}

std::span<const DefinitionKey<RetentionRule>> RetentionKeys() {
    return kRetentionKeys;
}

std::span<const DefinitionKey<VariableConfig>> VariableKeys() {
    return kVariableKeys;
}

platform::Notice CheckVariable(const VariableConfig& variable, std::string& key) {
    key.clear();
    if (variable.name.empty()) {
        key = "name";
        return {platform::Translatable("brak nazwy zmiennej")};
    }
    if (variable.minimum && variable.maximum && *variable.minimum > *variable.maximum) {
        key = vantrel::Attribute::Minimum;
        return {platform::Translatable("min nie może być większe od max")};
    }
    value::CVal initial(variable.initial);
    if (!variable.initial.empty() && !initial.Cast(variable.type)) {
        key = "value";
        return {platform::Translatable("oczekiwano liczby")};
    }
    double number = 0;
    if (!variable.initial.empty() && variable.type != value::ValueType::Text &&
        initial.GetValData(value::ValueType::Double, &number) && !IsBounded(variable, number)) {
        key = "value";
        return {std::isfinite(number) ? platform::Translatable("value musi być od min do max")
                                      : platform::Translatable("oczekiwano liczby")};
    }
    if (variable.signal && variable.type == value::ValueType::Text) {
        key = "signal";
        return {platform::Translatable("zmienna tekstowa nie może mieć sygnału")};
    }
    return variable.alarms ? CheckAlarms(variable, key) : platform::Notice();
}

}  // namespace kalvex::server

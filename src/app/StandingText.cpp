#include "app/StandingText.h"

#include <algorithm>
#include <string_view>

#include "text/LineScanner.h"
#include "text/TextFormat.h"
#include "value/LocalTimeText.h"

namespace kalvex::app {

namespace {

using engine::DataState;
using engine::MissingValue;
using engine::Release;
using engine::ScriptStanding;
using engine::StandingState;
using platform::Translatable;
using platform::Translator;

constexpr std::size_t kWidth = 80;
constexpr std::size_t kMostRows = 3;  // of a value
constexpr std::size_t kMostMissing = 3;

// The places of a status: line, time, and what it stands on.
struct StateRow {
    StandingState state;
    const char* word;
    const char* status;
    std::int64_t ScriptStanding::*time;
};

constexpr StateRow kStates[] = {
    {StandingState::Idle, Translatable("nieuruchomiony"), Translatable("nieuruchomiony"),
     &ScriptStanding::since},
    {StandingState::Running, Translatable("działa"), Translatable("działa, linia %s"),
     &ScriptStanding::since},
    {StandingState::Waiting, Translatable("czeka na dane"),
     Translatable("czeka na dane, linia %s od %s, %s"), &ScriptStanding::since},
    {StandingState::Sleeping, Translatable("śpi (SLEEP)"), Translatable("śpi, linia %s do %s"),
     &ScriptStanding::until},
    {StandingState::Scheduled, Translatable("czeka na porę (WAITFOR)"),
     Translatable("czeka na porę, linia %s do %s"), &ScriptStanding::until},
    {StandingState::Failing, Translatable("powtarza linię z błędem"),
     Translatable("w błędzie, linia %s od %s, %s"), &ScriptStanding::since},
    {StandingState::StoppedByCommand, Translatable("zatrzymany poleceniem"),
     Translatable("zatrzymany poleceniem, linia %s od %s"), &ScriptStanding::stopped},
    {StandingState::StoppedAtBreakpoint, Translatable("zatrzymany w punkcie przerwania"),
     Translatable("zatrzymany w punkcie przerwania, linia %s od %s"), &ScriptStanding::stopped},
    {StandingState::StoppedOnError, Translatable("zatrzymany przez błąd"),
     Translatable("zatrzymany przez błąd, linia %s od %s, %s"), &ScriptStanding::stopped},
    {StandingState::Finished, Translatable("zakończony"),
     Translatable("zakończony za linią %s, %s"), &ScriptStanding::since},
};

const StateRow& RowOf(StandingState state) {
    return *std::ranges::find(kStates, state, &StateRow::state);
}

struct DataRow {
    DataState state;
    const char* words;
};

constexpr DataRow kData[] = {
    {DataState::Usable, Translatable("wartość już jest")},
    {DataState::NoTarget, Translatable("wskaźnik nie prowadzi do żadnej zmiennej")},
    {DataState::NoElement, Translatable("lista nie ma znanego bieżącego elementu")},
    {DataState::NotReadable, Translatable("takich danych nie można odczytać")},
    {DataState::NoAddress, Translatable("nie można połączyć ze źródłem o tej nazwie")},
    {DataState::Down, Translatable("brak połączenia ze źródłem")},
    {DataState::Opening, Translatable("trwa łączenie ze źródłem")},
    {DataState::Login, Translatable("trwa logowanie do źródła")},
    {DataState::LoginRefused, Translatable("źródło odmówiło rejestracji użytkownika")},
    {DataState::NotSubscribed, Translatable("rejestracja wstrzymana (SUBSCRIBE STOP)")},
    {DataState::NoVariable, Translatable("połączone, w źródle nie ma tej zmiennej")},
    {DataState::NoAccess, Translatable("połączone, brak dostępu do tej zmiennej")},
    {DataState::NoData, Translatable("połączone, dane jeszcze nie przyszły")},
    {DataState::NoValue, Translatable("połączone, źródło nie ma wartości")},
    {DataState::Unknown, Translatable("połączone, wartość nieznana")},
    {DataState::Locked, Translatable("zablokowana (LOCK) bez znanej wartości")},
    {DataState::NotAsked, Translatable("połączone, nie zażądano raportu (GET)")},
    {DataState::Asked, Translatable("połączone, nie ma jeszcze odpowiedzi na GET")},
    {DataState::NotThere, Translatable("połączone, źródło nie dało raportu")},
    {DataState::NoReport, Translatable("połączone, raport bez znanej wartości")},
};

// The places: the source and its variable.
struct ReleaseRow {
    Release release;
    const char* words;
};

constexpr ReleaseRow kReleases[] = {
    {Release::None, ""},
    {Release::Time, Translatable("gdy minie ta pora")},
    {Release::NextTry, Translatable("przy następnej próbie")},
    {Release::Retry, Translatable("gdy kolejna próba się powiedzie")},
    {Release::Correction, Translatable("po poprawie tekstu i resecie skryptu")},
    {Release::Start, Translatable("po poleceniu start")},
    {Release::Resume, Translatable("po poleceniu start albo step")},
    {Release::Restart, Translatable("po resecie i poleceniu start")},
    {Release::Address, Translatable("gdy źródło %s dostanie adres, po resecie i poleceniu start")},
    {Release::Connection, Translatable("gdy źródło %s będzie połączone")},
    {Release::Login, Translatable("gdy źródło %s przyjmie użytkownika modułu")},
    {Release::Variable, Translatable("gdy źródło %s będzie miało zmienną %s")},
    {Release::Access, Translatable("gdy źródło %s udostępni zmienną %s użytkownikowi modułu")},
    {Release::Value, Translatable("gdy źródło %s przyśle znaną wartość zmiennej %s")},
    {Release::Answer, Translatable("gdy źródło %s odpowie na GET")},
    {Release::Report, Translatable("gdy ktoś wpisze wartość albo poprawi skrypt")},
    {Release::Subscribe, Translatable("po SUBSCRIBE START")},
};

constexpr const char* kErrorTimes = Translatable("%s (razy: %s)");
constexpr const char* kMore = Translatable("i jeszcze %s");

// ---- pieces

std::string Clean(std::string_view text) {
    // Bytes that are control characters in Windows-1250 and in UTF-8.
    constexpr std::string_view kControls = "\x7f\x81\x83\x88\x90\x98";
    std::string clean(text);
    std::ranges::replace_if(
        clean,
        [&](char c) {
            return static_cast<unsigned char>(c) < ' ' ||
                   kControls.find(c) != std::string_view::npos;
        },
        ' ');
    return std::string(text::TrimBlanks(clean));
}

std::string TimeText(std::int64_t time) {
    return time == 0 ? "-" : value::FormatLocalTime(time);
}

// As people count; of a finished script the last one.
std::string LineNumber(const ScriptStanding& standing) {
    return std::to_string(standing.line + (standing.state == StandingState::Finished ? 0 : 1));
}

std::string DataText(const engine::DataCondition& condition, const Translator& translator) {
    const std::string words =
        translator.Translate(std::ranges::find(kData, condition.state, &DataRow::state)->words);
    if (condition.reason.empty()) return words;
    return text::FormatText("%s (%s)", {words, condition.reason});
}

std::string MissingText(const MissingValue& missing, const Translator& translator) {
    const engine::DataCondition& condition = missing.condition;
    const std::string state = DataText(condition, translator);
    if (condition.source.empty()) return text::FormatText("%s: %s", {missing.name, state});
    return text::FormatText("%s = %s@%s %s: %s",
                            {missing.name, condition.source, condition.variable,
                             value::WordOfKind(missing.kind), state});
}

std::string ErrorText(const ScriptStanding& standing, const Translator& translator) {
    return text::FormatText(translator.Translate(kErrorTimes),
                            {standing.message, std::to_string(standing.error.times)});
}

using Values = std::vector<std::string>;

Values One(std::string text) {
    return {std::move(text)};
}

// ---- the report

Values LineValues(const ScriptStanding& standing, const Translator&) {
    if (standing.state == StandingState::Finished) return {};
    return One(text::FormatText("%s: %s", {LineNumber(standing), Clean(standing.text)}));
}

Values StateValues(const ScriptStanding& standing, const Translator& translator) {
    return One(translator.Translate(RowOf(standing.state).word));
}

Values TimeValues(std::int64_t time) {
    return time == 0 ? Values() : One(TimeText(time));
}

Values MissingValues(const ScriptStanding& standing, const Translator& translator) {
    Values values;
    for (const MissingValue& missing : standing.missing) {
        if (values.size() == kMostMissing) {
            values.push_back(
                text::FormatText(translator.Translate(kMore),
                                 {std::to_string(standing.missing.size() - kMostMissing)}));
            break;
        }
        values.push_back(MissingText(missing, translator));
    }
    return values;
}

Values ErrorValues(const ScriptStanding& standing, const Translator& translator) {
    return standing.error.times == 0 ? Values() : One(ErrorText(standing, translator));
}

Values ReleaseValues(const ScriptStanding& standing, const Translator& translator) {
    if (standing.release == Release::None) return {};
    const engine::DataCondition condition =
        standing.missing.empty() ? engine::DataCondition() : standing.missing.front().condition;
    const char* words = std::ranges::find(kReleases, standing.release, &ReleaseRow::release)->words;
    return One(
        text::FormatText(translator.Translate(words), {condition.source, condition.variable}));
}

struct FieldRow {
    const char* heading;
    Values (*values)(const ScriptStanding& standing, const Translator& translator);
};

constexpr FieldRow kFields[] = {
    {Translatable("Linia"), LineValues},
    {Translatable("Stan"), StateValues},
    {Translatable("Stoi od"),
     [](const ScriptStanding& s, const Translator&) { return TimeValues(s.since); }},
    {Translatable("Zatrzymany"),
     [](const ScriptStanding& s, const Translator&) { return TimeValues(s.stopped); }},
    {Translatable("Czeka do"),
     [](const ScriptStanding& s, const Translator&) { return TimeValues(s.until); }},
    {Translatable("Brak wartości"), MissingValues},
    {Translatable("Błąd"), ErrorValues},
    {Translatable("Ruszy"), ReleaseValues},
    {Translatable("Ostatnio działał"),
     [](const ScriptStanding& s, const Translator&) { return TimeValues(s.lastFinished); }},
};

Values Wrap(std::string_view text, std::size_t width) {
    Values rows;
    while (text.size() > width) {
        const std::size_t blank = text.rfind(' ', width);
        const bool atBlank = blank != std::string_view::npos && blank != 0;
        const std::size_t end = atBlank ? blank : width;
        rows.emplace_back(text.substr(0, end));
        text.remove_prefix(atBlank ? end + 1 : end);
    }
    rows.emplace_back(text);
    if (rows.size() <= kMostRows) return rows;
    rows.resize(kMostRows);
    constexpr std::string_view kCut = "...";
    rows.back().resize(std::min(rows.back().size(), width - kCut.size()));
    rows.back() += kCut;
    return rows;
}

// What a status says that a script stands on.
std::string DetailText(const ScriptStanding& standing, const Translator& translator) {
    Values pieces;
    if (standing.state != StandingState::Waiting) pieces = ErrorValues(standing, translator);
    if (!standing.missing.empty()) {
        pieces.push_back(MissingText(standing.missing.front(), translator));
    }
    if (standing.missing.size() > 1) {
        pieces.push_back(text::FormatText(translator.Translate(kMore),
                                          {std::to_string(standing.missing.size() - 1)}));
    }
    std::string detail;
    for (const std::string& piece : pieces) {
        if (!detail.empty()) detail += ", ";
        detail += piece;
    }
    return detail;
}

}  // namespace

std::string FormatStandingStatus(const ScriptStanding& standing, const Translator& translator) {
    const StateRow& row = RowOf(standing.state);
    return Clean(text::FormatText(
        translator.Translate(row.status),
        {LineNumber(standing), TimeText(standing.*row.time), DetailText(standing, translator)}));
}

std::vector<std::string> FormatStandingReport(const ScriptStanding& standing,
                                              const Translator& translator) {
    std::size_t indent = 0;
    for (const FieldRow& field : kFields) {
        indent = std::max(indent, translator.Translate(field.heading).size() + 2);
    }
    std::vector<std::string> lines;
    for (const FieldRow& field : kFields) {
        std::string heading = translator.Translate(field.heading) + ':';
        for (const std::string& value : field.values(standing, translator)) {
            for (const std::string& row : Wrap(Clean(value), kWidth - indent)) {
                heading.resize(indent, ' ');
                lines.push_back(heading + row);
                heading.clear();
            }
        }
    }
    return lines;
}

}  // namespace kalvex::app

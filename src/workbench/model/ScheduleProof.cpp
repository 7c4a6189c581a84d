#include "workbench/model/ScheduleProof.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "engine/DeclaredVariables.h"
#include "engine/StatementFamilies.h"
#include "engine/WaitFor.h"
#include "operands/FunctionFamilies.h"
#include "operands/Keywords.h"
#include "operands/Schedule.h"
#include "operands/ScheduleFunction.h"
#include "operands/TimeText.h"
#include "operands/VariableTarget.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"
#include "text/TextFormat.h"
#include "value/LocalTime.h"
#include "value/LocalTimeText.h"
#include "value/ValueText.h"
#include "workbench/model/ScheduleSearch.h"
#include "workbench/model/ScheduleWords.h"
#include "workbench/model/ValuesBeside.h"

namespace kalvex::workbench {

namespace {

using operands::ScheduleForm;
using platform::Translatable;

constexpr const char* kNoValue =
    Translatable("Zmienna %s nie ma teraz wartości, więc terminy nie są znane.");
constexpr const char* kUnreadable = Translatable(
    "Wpis \"%s\" nie pasuje do żadnej chwili: %s. Warunek nigdy nie będzie spełniony.");
constexpr const char* kNeverFits =
    Translatable("Wpis \"%s\" nie wystąpi ani razu do końca roku %s.");
constexpr const char* kNoMoreInRange =
    Translatable("W tym przedziale wpis \"%s\" już nie wystąpi.");
constexpr const char* kTolerance =
    Translatable("Warunek jest spełniony już na %s s przed każdą z tych chwil.");
constexpr const char* kRange = Translatable("Warunek może być spełniony tylko od %s do %s.");
constexpr const char* kFixedTrue =
    Translatable("Linia pyta o stałą chwilę %s: warunek jest spełniony, o każdej porze.");
constexpr const char* kFixedFalse =
    Translatable("Linia pyta o stałą chwilę %s: warunek nie jest spełniony, o żadnej porze.");
constexpr const char* kCallFails =
    Translatable("Linia zgłasza błąd: wyrażenia CHECK_EVENT_TIME nie można obliczyć.");
constexpr const char* kFirstOfMore =
    Translatable("Linia ma kilka warunków CHECK_EVENT_TIME; to są terminy pierwszego.");

constexpr const char* kNoTimes = Translatable("Linia zgłasza błąd: nie podano pory.");
constexpr const char* kNoTime = Translatable("Linia zgłasza błąd: \"%s\" nie jest porą.");
constexpr const char* kOnlyCommas =
    Translatable("Linia nie podaje żadnej pory: skrypt czeka na niej bez końca.");
constexpr const char* kPassesAfter = Translatable(
    "Skrypt rusza w sekundzie po zapisanej porze. Jeśli w niej nie dotrze do tej linii, czeka na "
    "następną porę.");
constexpr const char* kNeverPasses =
    Translatable("Linia nie przepuści skryptu ani razu do końca roku %s.");
constexpr const char* kUnderWay = Translatable("Skrypt już czeka na tej linii.");
constexpr const char* kDrifted = Translatable("poza zapisaną porą");

constexpr const char* kSpan = Translatable(
    "Linia zatrzymuje skrypt na %s. Kolejne chwile są takie, gdyby od razu do niej wracał.");
constexpr const char* kNoSpan = Translatable("Linia przepuszcza skrypt od razu.");

struct ReadingRow {
    operands::SleepForm form;
    const char* words;  // the places: the token and its fields, hours first
};

constexpr ReadingRow kReadings[] = {
    {operands::SleepForm::HoursMinutesSeconds,
     Translatable("\"%1$s\" znaczy: raz na dobę o %2$s:%3$s:%4$s.")},
    {operands::SleepForm::MinutesSeconds,
     Translatable("\"%1$s\" znaczy: co godzinę, w minucie %3$s i sekundzie %4$s.")},
    {operands::SleepForm::Seconds, Translatable("\"%1$s\" znaczy: co minutę, w sekundzie %4$s.")},
};

// What a variable has for its readers at one time.
class HeldVariable final : public operands::VariableStored {
  public:
    HeldVariable(std::string_view name, operands::CVariable& variable) : VariableStored(name) {
        for (const value::ValueKindRow& row : value::ValueKinds()) {
            value::CVal value;
            if (variable.GetValue(value, row.kind, 0) == operands::ReadValue)
                m_values.emplace(row.kind, std::move(value));
        }
    }
    int GetValue(value::CVal& out, value::ValueKind kind, int) override {
        const auto held = m_values.find(kind);
        if (held == m_values.end()) return operands::ReadNothing;
        out = held->second;
        return operands::ReadValue;
    }
    int SetValue(const value::CVal&, value::ValueKind) override { return 0; }

  private:
    std::map<value::ValueKind, value::CVal> m_values;
};

// What a line reads, and nothing that could touch the script: its variables as they stand.
class LineReader final : public operands::ScriptContext {
  public:
    LineReader(const engine::CKalvexDoc& document, std::string_view line)
        : operands::ScriptContext(document.Services()) {
        for (const std::string& name : NamesInLine(line)) {
            const std::string base(operands::BaseName(name));
            operands::CVariable* variable = operands::FindTarget(document.Variables(), base);
            if (variable != nullptr && Variables().Find(base) == nullptr)
                Variables().Append(std::make_unique<HeldVariable>(base, *variable));
        }
    }
};

std::string TwoDigits(int number) {
    const std::string digits = std::to_string(number);
    return digits.size() < 2 ? "0" + digits : digits;
}

class Proof {
  public:
    Proof(const engine::CKalvexDoc& document, int line, std::int64_t start)
        : m_document(document), m_line(line), m_start(start) {
        engine::NormaliseLine(document.Text().GetLine(line), m_text);
        m_reader.emplace(document, m_text);
        const int year = value::GetLocalYear(start) + kYearsSearched;
        m_lastYear = std::to_string(year);
        m_last = value::MakeLocalTime({.year = year + 1}) - 1;
    }

    ScheduleProof Make();

  private:
    std::string Translate(const char* polish) const {
        return m_document.Services().translator.Translate(polish);
    }
    void Remark(const char* polish, std::initializer_list<std::string_view> places = {}) {
        m_proof.remarks.push_back(text::FormatText(Translate(polish), places));
    }
    void Never(const char* polish, std::initializer_list<std::string_view> places = {}) {
        Remark(polish, places);
        m_proof.never = true;
    }

    // Whether the word names a variable that the line could not read; a remark says so.
    bool LacksValue(std::string_view word);

    void OnCondition(std::string_view rest);
    void OnEntry(const operands::ScheduleQuestion& question);
    void OnFixedTime(const operands::ScheduleQuestion& question);
    void OnWaitFor(std::string_view rest);
    bool ReadTokens(std::string_view rest);
    void RunWaitFor(engine::CWaitFor record);
    void OnSleep(std::string_view rest);

    const engine::CKalvexDoc& m_document;
    const int m_line;
    const std::int64_t m_start;
    std::int64_t m_last = 0;
    std::string m_lastYear;
    std::string m_text;
    std::optional<LineReader> m_reader;
    std::vector<std::int64_t> m_times;
    std::set<std::int64_t> m_readings;  // seconds of the day that WAITFOR is written for
    ScheduleProof m_proof;
};

// ---- what the line is

// Takes the keyword off the text, and of a comment or a label all of it.
const engine::StatementRow* FindStatement(const engine::CKalvexDoc& document,
                                          std::string_view& rest) {
    const std::string word = text::ToUpper(text::NextToken(rest));
    if (word.starts_with(';') || word.starts_with(':')) rest = {};
    return document.Services().statements.Find(word);
}

// Takes everything up to the function's word off the text.
bool FindCondition(const engine::CKalvexDoc& document, std::string_view& rest) {
    for (std::string_view token = text::NextToken(rest); !token.empty() && token != ";";
         token = text::NextToken(rest)) {
        const operands::FunctionRow* row = document.Services().functions.Find(token);
        if (row != nullptr && row->handler == operands::CheckEventTimeFunction) return true;
    }
    return false;
}

ScheduleProof Proof::Make() {
    std::string_view rest = m_text;
    const engine::StatementRow* statement = FindStatement(m_document, rest);
    if (statement != nullptr && statement->handler == engine::ExecuteWaitFor) {
        OnWaitFor(rest);
    } else if (statement != nullptr && statement->handler == engine::ExecuteSleep) {
        OnSleep(rest);
    } else if (FindCondition(m_document, rest)) {
        OnCondition(rest);
    }
    m_proof.firings = DescribeFirings(m_times, m_start, m_document.Services().translator);
    for (ScheduleFiring& firing : m_proof.firings) {
        // It goes on in the second after its time.
        const value::TimeFields at = value::SplitLocalTime(firing.time - 1);
        const int reading = (at.hour * 60 + at.minute) * 60 + at.second;
        if (!firing.fires || m_readings.empty() || m_readings.count(reading) != 0) continue;
        if (!firing.note.empty()) firing.note += "; ";
        firing.note += Translate(kDrifted);
    }
    return std::move(m_proof);
}

bool Proof::LacksValue(std::string_view word) {
    const std::string name(operands::BaseName(word));
    value::CVal value;
    operands::CVariable* variable = m_reader->Variables().Find(name);
    if (variable != nullptr) {
        value::ValueKind kind = value::GetValueKind(word);
        if (kind == value::KindNone) kind = value::KindCurrent;  // a property
        if (variable->GetValue(value, kind, 0) == operands::ReadValue) return false;
    } else {
        const auto declared = engine::BuildDeclaredVars(m_document.Text());
        if (std::ranges::find(declared, name, &engine::DeclaredVar::strName) == declared.end())
            return false;
    }
    Remark(kNoValue, {word});
    return true;
}

// ---- CHECK_EVENT_TIME

void Proof::OnCondition(std::string_view rest) {
    std::string_view more = rest;
    if (FindCondition(m_document, more)) Remark(kFirstOfMore);
    std::array<operands::Operand, 3> arguments;
    for (operands::Operand& argument : arguments) {
        const std::string_view token = text::NextToken(rest);
        const std::string upper = text::ToUpper(token);
        if (upper == operands::Keyword::Then || upper == operands::Keyword::Goto || token == ";")
            break;
        argument = operands::Operand(token);
    }
    for (const operands::Operand& argument : arguments) {
        if (!argument.empty() && LacksValue(argument)) return;
    }
    value::CVal out;
    std::unique_ptr<operands::FunctionForm> form;
    const operands::FunctionCall call{*m_reader, {},   arguments, {}, {}, value::ValueType::Double,
                                      out,       form, {}};
    const auto question = operands::ReadScheduleQuestion(call);
    if (!question) return Never(kCallFails);
    OnEntry(*question);
}

void Proof::OnEntry(const operands::ScheduleQuestion& question) {
    operands::ScheduleEntry entry;
    if (!operands::ReadScheduleEntry(question.entry, entry)) {
        const std::string why = WhyUnreadable(question.entry, m_document.Services().translator);
        return Never(kUnreadable, {question.entry, why});
    }
    const ScheduleForm form = operands::GetScheduleForm(question.a, question.b);
    if (form == ScheduleForm::Time || form == ScheduleForm::TimeOn) return OnFixedTime(question);
    std::int64_t from = m_start;
    std::int64_t last = m_last;
    if (form == ScheduleForm::PresentOn) Remark(kTolerance, {std::to_string(question.a - 1)});
    if (form == ScheduleForm::Range) {
        from = std::max<std::int64_t>(from, question.a);
        last = question.b;
        Remark(kRange, {value::FormatLocalTime(question.a), value::FormatLocalTime(question.b)});
    }
    while (m_times.size() < kFiringsShown) {
        const std::optional<std::int64_t> time = FindScheduleTime(entry, from, last);
        if (!time) break;
        m_times.push_back(*time);
        from = *time + 1;
    }
    if (!m_times.empty()) return;
    if (form == ScheduleForm::Range) return Never(kNoMoreInRange, {question.entry});
    Never(kNeverFits, {question.entry, m_lastYear});
}

void Proof::OnFixedTime(const operands::ScheduleQuestion& question) {
    const std::string time = value::FormatLocalTime(question.a);
    if (operands::CheckEventTime(question.entry, question.a, question.b, m_start))
        return Remark(kFixedTrue, {time});
    Never(kFixedFalse, {time});
}

// ---- WAITFOR

bool Proof::ReadTokens(std::string_view rest) {
    // A day on which no zone changes its clocks: the readings as they are written.
    const value::TimeFields plain{.year = value::GetLocalYear(m_start), .month = 1, .day = 15};
    for (std::string_view token = text::NextToken(rest); !token.empty();
         token = text::NextToken(rest)) {
        if (token == ",") continue;
        if (LacksValue(token)) return false;
        operands::SleepTime written;
        if (!operands::ParseSleepTime(*m_reader, token, written)) {
            Never(kNoTime, {token});
            return false;
        }
        engine::CWaitFor day;
        engine::AddWaitTimes(day, written, plain);
        for (const std::int64_t time : day.arrTimes) {
            const value::TimeFields at = value::SplitLocalTime(time);
            m_readings.insert((at.hour * 60 + at.minute) * 60 + at.second);
        }
        const value::TimeFields first = value::SplitLocalTime(day.arrTimes.front());
        const auto* row = std::ranges::find(kReadings, written.form, &ReadingRow::form);
        Remark(row->words,
               {token, TwoDigits(first.hour), TwoDigits(first.minute), TwoDigits(first.second)});
    }
    return true;
}

void Proof::OnWaitFor(std::string_view rest) {
    if (text::TrimBlanks(rest).empty()) return Never(kNoTimes);
    if (!ReadTokens(rest)) return;
    const auto& records = m_document.State().m_mapWaitFor;
    const auto known = records.find(static_cast<std::uint16_t>(m_line));
    engine::CWaitFor record;
    if (known != records.end()) {
        record = known->second;
        Remark(kUnderWay);
    } else {
        engine::ReadWaitFor(*m_reader, rest, m_start, record);
    }
    if (record.arrTimes.empty()) return Never(kOnlyCommas);
    Remark(kPassesAfter);
    RunWaitFor(std::move(record));
    if (m_times.empty()) Never(kNeverPasses, {m_lastYear});
}

// Between the seconds that are tried here a try of the line changes nothing.
void Proof::RunWaitFor(engine::CWaitFor record) {
    std::int64_t now = m_start;
    while (now <= m_last && m_times.size() < kFiringsShown) {
        if (engine::PassWaitTime(record, now)) {
            m_times.push_back(now++);
            continue;
        }
        const std::int64_t next = record.arrTimes[static_cast<std::size_t>(record.nNext)] + 1;
        now = std::min(next, value::GetLastLocalDayTime(now) + 1);
    }
}

// ---- SLEEP

void Proof::OnSleep(std::string_view rest) {
    const std::string_view token = text::NextToken(rest);
    if (token.empty()) return Never(kNoTimes);
    if (LacksValue(token)) return;
    operands::SleepTime span;
    if (!operands::ParseSleepTime(*m_reader, token, span)) return Never(kNoTime, {token});
    const std::int64_t seconds = (std::int64_t{span.hours} * 60 + span.minutes) * 60 + span.seconds;
    if (seconds <= 0) return Remark(kNoSpan);
    const engine::RunState& state = m_document.State();
    const bool sleeps = state.m_nCurrentLine == m_line && state.m_tSleepUntil != 0;
    if (sleeps) Remark(kUnderWay);
    const std::string length = std::to_string(seconds / 3600) + ":" +
                               TwoDigits(static_cast<int>(seconds / 60 % 60)) + ":" +
                               TwoDigits(static_cast<int>(seconds % 60));
    Remark(kSpan, {length});
    std::int64_t time = sleeps ? std::max(state.m_tSleepUntil, m_start) : m_start + seconds;
    for (; m_times.size() < kFiringsShown && time <= m_last; time += seconds)
        m_times.push_back(time);
    if (m_times.empty()) Never(kNeverPasses, {m_lastYear});
}

}  // namespace

bool HasSchedule(const engine::CKalvexDoc& document, int line) {
    std::string text;
    engine::NormaliseLine(document.Text().GetLine(line), text);
    std::string_view rest = text;
    const engine::StatementRow* statement = FindStatement(document, rest);
    if (statement != nullptr && (statement->handler == engine::ExecuteWaitFor ||
                                 statement->handler == engine::ExecuteSleep)) {
        return true;
    }
    return FindCondition(document, rest);
}

ScheduleProof ProveSchedule(const engine::CKalvexDoc& document, int line, std::int64_t start) {
    return Proof(document, line, start).Make();
}

}  // namespace kalvex::workbench

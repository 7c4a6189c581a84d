// Commands that ask modules beside the conversation, and change nothing.
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <set>
#include <utility>

#include "app/StandingText.h"
#include "audit/AuditRecord.h"
#include "audit/Since.h"
#include "platform/Files.h"
#include "programs/kalvexctl/Commands.h"
#include "programs/kalvexctl/Questions.h"
#include "programs/kalvexctl/StandingJson.h"
#include "text/CodePage.h"
#include "value/LocalTimeText.h"

namespace kalvex::kalvexctl {

namespace {

using engine::StandingState;
using supervision::Method;

constexpr const char* kUnknown = "-";

std::vector<std::string> Head(const Call& call, std::initializer_list<const char*> polish) {
    std::vector<std::string> head;
    for (const char* text : polish) head.push_back(text::ToUtf8(call.translator.Translate(text)));
    return head;
}

// ---- status

Cell ReportCell(const std::optional<engine::ScriptReport>& report) {
    if (!report) return {kUnknown};
    return {fmt::format("Linia {} - {}", report->line + 1, text::ToUtf8(report->text)),
            report->waiting ? Colour::None : Colour::Red};
}

bool StandsOnSomething(StandingState state) {
    return state != StandingState::Idle && state != StandingState::Running &&
           state != StandingState::Finished;
}

Row RowOf(const Call& call, const app::ScriptStatus& script) {
    const ScriptState state{WordOf(static_cast<unsigned>(script.stateWord)), script.line};
    Row row{{Cell{text::ToUtf8(script.path)}, StateCell(state.word), LineCell(state),
             ReportCell(script.report)}};
    if (StandsOnSomething(script.standing.state)) {
        row.below = text::ToUtf8(app::FormatStandingStatus(script.standing, call.translator));
    }
    return row;
}

// Local sockets, and those that the profile of the machine names.
std::vector<std::string> AllModules(const Call& call) {
    std::set<std::string> names;
    std::error_code fault;
    std::filesystem::directory_iterator entry(vantrel::RuntimeFolder(), fault);
    for (; !fault && entry != std::filesystem::directory_iterator(); entry.increment(fault)) {
        std::error_code unknown;
        if (!entry->is_socket(unknown)) continue;
        names.insert(text::FromUtf8(entry->path().filename().string()));
    }
    for (const auto& [name, address] : call.addresses) names.insert(name);
    return {names.begin(), names.end()};
}

class StatusOfMany {
  public:
    StatusOfMany(Call& call, std::vector<std::string> modules)
        : m_call(call),
          m_modules(std::move(modules)),
          m_pieces(m_modules.size()),
          m_questions(call) {
        for (std::size_t i = 0; i < m_modules.size(); ++i) {
            m_questions.Ask(m_modules[i], Method::GetStatus, {}, 0,
                            [this, i](std::string_view bytes) { return Take(i, bytes); });
        }
    }

    MaybeEnding Await() { return m_questions.Await(); }
    MaybeEnding GetEnding(std::size_t number) const { return m_questions.GetEnding(number); }
    bool IsSilent(std::size_t number) const { return m_questions.IsSilent(number); }
    const std::vector<std::string>& Modules() const { return m_modules; }

    const app::ModuleStatus& Get(std::size_t number) const { return m_pieces[number]; }

  private:
    bool Take(std::size_t number, std::string_view bytes) {
        supervision::StatusPiece piece;
        if (!supervision::Unpack(bytes, piece)) return false;
        app::ModuleStatus& status = m_pieces[number];
        std::vector<app::ScriptStatus> scripts = std::move(status.scripts);
        const std::string& wanted = m_call.arguments.script;
        std::ranges::copy_if(piece.status.scripts, std::back_inserter(scripts),
                             [&wanted](const app::ScriptStatus& script) {
                                 return wanted.empty() || script.path == wanted;
                             });
        status = std::move(piece.status);
        status.scripts = std::move(scripts);
        return true;
    }

    Call& m_call;
    const std::vector<std::string> m_modules;
    std::vector<app::ModuleStatus> m_pieces;
    Questions m_questions;
};

Ending StatusOfOne(Call& call) {
    StatusOfMany status(call, {call.GetModule()});
    if (MaybeEnding ending = status.Await()) return *ending;
    if (call.arguments.json) {
        call.output.PrintText(StatusJson(status.Get(0)) + '\n');
        return {};
    }
    std::vector<Row> rows;
    for (const app::ScriptStatus& script : status.Get(0).scripts) {
        rows.push_back(RowOf(call, script));
    }
    call.output.PrintTable(
        Head(call, {platform::Translatable("SKRYPT"), platform::Translatable("STAN"),
                    platform::Translatable("LINIA"), platform::Translatable("RAPORT")}),
        rows);
    return {};
}

void AddRows(const Call& call, const StatusOfMany& status, std::size_t number,
             std::vector<Row>& rows) {
    const Cell module{text::ToUtf8(status.Modules()[number])};
    if (const MaybeEnding ending = status.GetEnding(number)) {
        rows.push_back({{module, Cell{kUnknown}, Cell{kUnknown}, Cell{kUnknown},
                         Cell{ending->text, Colour::Red}}});
        return;
    }
    for (const app::ScriptStatus& script : status.Get(number).scripts) {
        Row& row = rows.emplace_back(RowOf(call, script));
        row.cells.insert(row.cells.begin(), module);
    }
    if (!status.Get(number).scripts.empty()) return;
    rows.push_back({{module, Cell{kUnknown}, Cell{kUnknown}, Cell{kUnknown}, Cell{kUnknown}}});
}

// For a module that has not answered as well.
std::string JsonOf(const StatusOfMany& status, std::size_t number) {
    const MaybeEnding ending = status.GetEnding(number);
    if (!ending) return StatusJson(status.Get(number));
    return UnansweredJson(status.Modules()[number], ending->text);
}

Ending StatusOfAll(Call& call, std::vector<std::string> modules) {
    StatusOfMany status(call, std::move(modules));
    if (MaybeEnding ending = status.Await(); ending && ending->status > ExitSignal) return *ending;
    std::vector<Row> rows;
    Ending result;
    for (std::size_t i = 0; i < status.Modules().size(); ++i) {
        const MaybeEnding ending = status.GetEnding(i);
        // Beside modules there are data servers, which have no scripts.
        const bool isOther =
            ending && *ending == call.Fail(Fault::NotOffered, {status.Modules()[i]});
        if (isOther && call.arguments.all) continue;
        const bool isFirst = result.status == programs::ExitDone;
        if (ending && (isFirst || status.IsSilent(i))) result.status = ending->status;
        if (call.arguments.json) call.output.PrintText(JsonOf(status, i) + '\n');
        AddRows(call, status, i, rows);
    }
    if (call.arguments.json) return result;
    call.output.PrintTable(
        Head(call, {platform::Translatable("MODUŁ"), platform::Translatable("SKRYPT"),
                    platform::Translatable("STAN"), platform::Translatable("LINIA"),
                    platform::Translatable("RAPORT")}),
        rows);
    return result;
}

// ---- one script

struct ScriptQuestion {
    engine::ScriptStanding standing;
    std::vector<int> breakpoints;
};

template <class Record>
supervision::Inquiry::Piece Into(Record& record) {
    return [&record](std::string_view bytes) { return supervision::Unpack(bytes, record); };
}

std::vector<std::string> LinesOf(const std::string& content) {
    std::vector<std::string> lines;
    std::string_view rest = content;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        lines.push_back(text::ToUtf8(line));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return lines;
}

// ---- audit

Cell KnownCell(const std::string& text) {
    return {text.empty() ? kUnknown : text::ToUtf8(text)};
}

// All for a program.
Row RowOf(const audit::AuditEntry& entry) {
    const audit::AuditRecord& record = entry.record;
    return {{Cell{value::FormatLocalTime(entry.time)},
             Cell{std::string(audit::AuditWord(record.action))}, KnownCell(record.script),
             KnownCell(record.name), KnownCell(record.oldValue.value_or("")),
             KnownCell(record.newValue.value_or("")), KnownCell(record.user),
             KnownCell(audit::AuditAddress(record)), KnownCell(record.client)}};
}

// For a person: the values and the client are too long to stand in columns.
Row ScreenRowOf(const audit::AuditEntry& entry) {
    const audit::AuditRecord& record = entry.record;
    Row row{{Cell{value::FormatLocalTime(entry.time)}, KnownCell(record.user),
             Cell{std::string(audit::AuditWord(record.action))}, KnownCell(record.script),
             KnownCell(record.name)}};
    if (record.oldValue || record.newValue) {
        row.below = KnownCell(record.oldValue.value_or("")).text + " -> " +
                    KnownCell(record.newValue.value_or("")).text + "  ";
    }
    row.below += fmt::format("({}, {})", KnownCell(audit::AuditAddress(record)).text,
                             KnownCell(record.client).text);
    return row;
}

// Prints what comes: lines at once, a table when all is there.
class AuditPrinter {
  public:
    explicit AuditPrinter(Call& call) : m_call(call) {}

    bool Take(std::string_view bytes) {
        supervision::AuditPiece piece;
        if (!supervision::Unpack(bytes, piece)) return false;
        m_unreadable = piece.unreadable;
        std::ranges::copy(piece.faults, std::back_inserter(m_faults));
        for (const audit::AuditEntry& entry : piece.entries) Print(entry);
        return true;
    }

    Ending Finish() {
        if (m_call.output.IsTerminal() && !m_call.arguments.json) {
            m_call.output.PrintTable(
                Head(m_call, {platform::Translatable("CZAS"), platform::Translatable("UŻYTKOWNIK"),
                              platform::Translatable("ZMIANA"), platform::Translatable("SKRYPT"),
                              platform::Translatable("NAZWA")}),
                m_rows);
        }
        if (m_unreadable > 0) {
            Output::Tell(m_call.Fail(Fault::AuditUnread, {std::to_string(m_unreadable)}));
        }
        Ending ending;
        for (const std::string& fault : m_faults) {
            if (ending.status != programs::ExitDone) Output::Tell(ending);
            ending = m_call.Fail(Fault::AuditFault, {text::FromUtf8(fault)});
        }
        return ending;
    }

  private:
    void Print(const audit::AuditEntry& entry) {
        if (m_call.arguments.json) return m_call.output.PrintText(audit::AuditLine(entry));
        if (!m_call.output.IsTerminal()) return m_call.output.PrintRow(RowOf(entry));
        m_rows.push_back(ScreenRowOf(entry));
    }

    Call& m_call;
    std::uint64_t m_unreadable = 0;
    std::vector<std::string> m_faults;
    std::vector<Row> m_rows;
};

}  // namespace

Ending Status(Call& call) {
    if (call.arguments.all) return StatusOfAll(call, AllModules(call));
    if (call.options.modules.size() < 2) return StatusOfOne(call);
    std::vector<std::string> modules;
    for (const std::string& module : call.options.modules) {
        if (std::ranges::find(modules, module) == modules.end()) modules.push_back(module);
    }
    return StatusOfAll(call, std::move(modules));
}

Ending Breaks(Call& call) {
    std::vector<int> breakpoints;
    Questions questions(call);
    questions.Ask(call.GetModule(), Method::GetBreakpoints, call.arguments.script, 0,
                  Into(breakpoints));
    if (MaybeEnding ending = questions.Await()) return *ending;
    for (const int line : breakpoints) call.output.PrintLine(std::to_string(line + 1));
    return {};
}

Ending Show(Call& call) {
    ScriptQuestion script;
    const std::string& path = call.arguments.script;
    {
        Questions questions(call);
        questions.Ask(call.GetModule(), Method::GetStanding, path, 0, Into(script.standing));
        questions.Ask(call.GetModule(), Method::GetBreakpoints, path, 0, Into(script.breakpoints));
        if (MaybeEnding ending = questions.Await()) return *ending;
    }
    const std::filesystem::path file = std::filesystem::path(call.options.dir) / text::ToUtf8(path);
    std::string content;
    std::string reason;
    if (!platform::ReadWholeFile(file.string(), content, reason)) {
        return call.Fail(Fault::NoFile, {text::FromUtf8(file.string()), text::FromUtf8(reason)});
    }
    const std::vector<std::string> lines = LinesOf(content);
    const bool stands = script.standing.state != StandingState::Idle;
    const int current = stands ? script.standing.line : 0;
    const int context = call.arguments.context;
    const int first = std::max(0, current - context);
    const int last = std::min(static_cast<int>(lines.size()) - 1, current + context);
    for (int line = first; line <= last; ++line) {
        const bool isBreakpoint =
            std::ranges::find(script.breakpoints, line) != script.breakpoints.end();
        call.output.PrintLine(fmt::format("{}{}{:5}  {}", stands && line == current ? '>' : ' ',
                                          isBreakpoint ? '*' : ' ', line + 1,
                                          lines[static_cast<std::size_t>(line)]));
    }
    return {};
}

Ending Why(Call& call) {
    engine::ScriptStanding standing;
    Questions questions(call);
    questions.Ask(call.GetModule(), Method::GetStanding, call.arguments.script, 0, Into(standing));
    if (MaybeEnding ending = questions.Await()) return *ending;
    if (call.arguments.json) {
        call.output.PrintText(StandingJson(call.arguments.script, standing) + '\n');
        return {};
    }
    for (const std::string& line : app::FormatStandingReport(standing, call.translator)) {
        call.output.PrintLine(text::ToUtf8(line));
    }
    return {};
}

Ending Audit(Call& call) {
    const std::string& text = call.arguments.since;
    const std::int64_t now = std::time(nullptr);
    const std::int64_t since = text.empty() ? 0 : audit::ParseSince(text, now).value_or(0);
    AuditPrinter printer(call);
    Questions questions(call);
    questions.Ask(call.GetModule(), Method::GetAudit, call.arguments.auditScript, since,
                  [&printer](std::string_view bytes) { return printer.Take(bytes); });
    if (MaybeEnding ending = questions.Await()) return *ending;
    return printer.Finish();
}

}  // namespace kalvex::kalvexctl

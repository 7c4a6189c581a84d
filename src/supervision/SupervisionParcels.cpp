#include "supervision/SupervisionParcels.h"

#include <algorithm>
#include <utility>

#include "kalvex.pb.h"
#include "platform/PasswordHash.h"
#include "text/CodePage.h"
#include "vantrel/network/WireValues.h"

namespace kalvex::supervision {

namespace {

namespace pb = ::kalvex::v1;
using vantrel::wire::ParseBytes;

// From this size on the scripts of a status go into another parcel.
constexpr std::size_t kParcelGoal = 256 << 10;
constexpr std::size_t kMostMissing = 1000;
constexpr std::string_view kCut = "...";

// The values of an enumeration of ours follow those of the wire, which begin with one more.
template <class Wire, class Ours>
Wire ToWire(Ours value) {
    return static_cast<Wire>(static_cast<int>(value) + 1);
}

template <class Ours>
Ours FromWire(int value, Ours last, Ours unknown) {
    return value < 1 || value > static_cast<int>(last) + 1 ? unknown : static_cast<Ours>(value - 1);
}

using engine::DataState;
using engine::Release;
using engine::StandingState;
static_assert(static_cast<int>(StandingState::Finished) + 1 == pb::Standing::FINISHED);
static_assert(static_cast<int>(Release::Subscribe) + 1 == pb::Standing::SUBSCRIBE);
static_assert(static_cast<int>(DataState::NoReport) + 1 == pb::MissingValue::NO_REPORT);

std::string Shown(std::string_view text) {
    if (text.size() <= kLongestText) return text::ToUtf8(text);
    return text::ToUtf8(text.substr(0, kLongestText)).append(kCut);
}

// ---- what a script stands on

void Put(const engine::MissingValue& missing, pb::MissingValue& out) {
    out.set_name(Shown(missing.name));
    out.set_kind(static_cast<int>(missing.kind));
    out.set_source(Shown(missing.condition.source));
    out.set_variable(Shown(missing.condition.variable));
    out.set_state(ToWire<pb::MissingValue::State>(missing.condition.state));
    out.set_reason(Shown(missing.condition.reason));
}

engine::MissingValue Take(const pb::MissingValue& in) {
    engine::MissingValue missing;
    missing.name = text::FromUtf8(in.name());
    const bool isKnown = in.kind() > value::KindNone && in.kind() <= value::KindArchive;
    missing.kind = isKnown ? static_cast<value::ValueKind>(in.kind()) : value::KindCurrent;
    missing.condition = {text::FromUtf8(in.source()), text::FromUtf8(in.variable()),
                         FromWire(in.state(), DataState::NoReport, DataState::Unknown),
                         text::FromUtf8(in.reason())};
    return missing;
}

void Put(const engine::ScriptStanding& standing, pb::Standing& out) {
    out.set_state(ToWire<pb::Standing::State>(standing.state));
    out.set_line(standing.line);
    out.set_text(Shown(standing.text));
    out.set_since(standing.since);
    out.set_stopped(standing.stopped);
    out.set_until(standing.until);
    for (const engine::MissingValue& missing : standing.missing) {
        if (static_cast<std::size_t>(out.missing_size()) < kMostMissing) {
            Put(missing, *out.add_missing());
        }
    }
    out.set_error_code(standing.error.code);
    out.set_error_text(Shown(standing.message));
    out.set_error_times(standing.error.times);
    out.set_last_finished(standing.lastFinished);
    out.set_release(ToWire<pb::Standing::Release>(standing.release));
}

engine::ScriptStanding Take(const pb::Standing& in) {
    engine::ScriptStanding standing;
    standing.state = FromWire(in.state(), StandingState::Finished, StandingState::Running);
    standing.line = in.line();
    standing.text = text::FromUtf8(in.text());
    standing.since = in.since();
    standing.stopped = in.stopped();
    standing.until = in.until();
    for (const pb::MissingValue& missing : in.missing()) standing.missing.push_back(Take(missing));
    standing.error.code = in.error_code();
    standing.error.times = in.error_times();
    standing.message = text::FromUtf8(in.error_text());
    standing.lastFinished = in.last_finished();
    standing.release = FromWire(in.release(), Release::Subscribe, Release::None);
    return standing;
}

// ---- status

void Put(const app::ScriptStatus& script, pb::ScriptStatus& out) {
    out.set_path(text::ToUtf8(script.path));
    out.set_status_word(static_cast<std::uint32_t>(script.stateWord));
    if (script.line) out.set_line(*script.line);
    if (script.report) {
        pb::Report& report = *out.mutable_report();
        report.set_time(script.report->time);
        report.set_level(script.report->level);
        report.set_line(script.report->line);
        report.set_text(Shown(script.report->text));
        report.set_waiting(script.report->waiting);
    }
    Put(script.standing, *out.mutable_standing());
    out.set_session_given(script.sessionGiven);
}

app::ScriptStatus Take(const pb::ScriptStatus& in) {
    app::ScriptStatus script;
    script.path = text::FromUtf8(in.path());
    script.stateWord = static_cast<int>(in.status_word());
    if (in.has_line()) script.line = in.line();
    if (in.has_report()) {
        const pb::Report& report = in.report();
        script.report = {report.time(), report.level(), report.line(),
                         text::FromUtf8(report.text()), report.waiting()};
    }
    script.standing = Take(in.standing());
    script.sessionGiven = in.session_given();
    return script;
}

pb::Status HeadOf(const app::ModuleStatus& status) {
    pb::Status head;
    head.set_module(text::ToUtf8(status.module));
    head.set_identity(text::ToUtf8(status.identity));
    head.set_log_level(status.logLevel);
    return head;
}

// ---- audit

struct AuditText {
    std::string audit::AuditRecord::*text;
    std::string* (pb::AuditEntry::*put)();
    const std::string& (pb::AuditEntry::*take)() const;
};

constexpr AuditText kAuditTexts[] = {
    {&audit::AuditRecord::script, &pb::AuditEntry::mutable_script, &pb::AuditEntry::script},
    {&audit::AuditRecord::user, &pb::AuditEntry::mutable_user, &pb::AuditEntry::user},
    {&audit::AuditRecord::address, &pb::AuditEntry::mutable_address, &pb::AuditEntry::address},
    {&audit::AuditRecord::client, &pb::AuditEntry::mutable_client, &pb::AuditEntry::client},
    {&audit::AuditRecord::name, &pb::AuditEntry::mutable_name, &pb::AuditEntry::name},
};

void Put(const audit::AuditEntry& entry, pb::AuditEntry& out) {
    out.set_time(entry.time);
    out.set_action(std::string(audit::AuditWord(entry.record.action)));
    for (const AuditText& row : kAuditTexts) *(out.*row.put)() = Shown(entry.record.*row.text);
    if (entry.record.oldValue) out.set_old_value(Shown(*entry.record.oldValue));
    if (entry.record.newValue) out.set_new_value(Shown(*entry.record.newValue));
}

// False for an action that this side does not know.
bool Take(const pb::AuditEntry& in, audit::AuditEntry& entry) {
    const auto action = audit::AuditActionOf(in.action());
    if (!action) return false;
    entry.time = in.time();
    entry.record.action = *action;
    for (const AuditText& row : kAuditTexts) {
        entry.record.*row.text = text::FromUtf8((in.*row.take)());
    }
    if (in.has_old_value()) entry.record.oldValue = text::FromUtf8(in.old_value());
    if (in.has_new_value()) entry.record.newValue = text::FromUtf8(in.new_value());
    return true;
}

}  // namespace

std::string Pack(const Question& question) {
    pb::Question out;
    out.mutable_login()->set_user(text::ToUtf8(question.user));
    out.mutable_login()->set_password(text::ToUtf8(question.password.View()));
    out.mutable_login()->set_client_name(text::ToUtf8(question.clientName));
    out.set_script(text::ToUtf8(question.script));
    out.set_since(question.since);
    return out.SerializeAsString();
}

bool Unpack(std::string_view bytes, Question& question) {
    pb::Question in;
    const bool isQuestion = ParseBytes(bytes, in);
    if (isQuestion) {
        question = {text::FromUtf8(in.login().user()), text::FromUtf8(in.login().password()),
                    text::FromUtf8(in.login().client_name()), text::FromUtf8(in.script()),
                    in.since()};
    }
    platform::WipePassword(*in.mutable_login()->mutable_password());
    return isQuestion;
}

std::vector<std::string> Pack(const StatusPiece& piece) {
    std::vector<std::string> parcels;
    pb::Status out = HeadOf(piece.status);
    std::size_t bytes = 0;
    for (const app::ScriptStatus& script : piece.status.scripts) {
        if (bytes > kParcelGoal) {
            parcels.push_back(out.SerializeAsString());
            out = HeadOf(piece.status);
            bytes = 0;
        }
        Put(script, *out.add_scripts());
        bytes += out.scripts(out.scripts_size() - 1).ByteSizeLong();
    }
    for (const std::string& path : piece.closed) out.add_closed(text::ToUtf8(path));
    out.set_complete(piece.complete);
    parcels.push_back(out.SerializeAsString());
    return parcels;
}

bool Unpack(std::string_view bytes, StatusPiece& piece) {
    pb::Status in;
    if (!ParseBytes(bytes, in)) return false;
    piece = {};
    piece.status.module = text::FromUtf8(in.module());
    piece.status.identity = text::FromUtf8(in.identity());
    piece.status.logLevel = in.log_level();
    for (const pb::ScriptStatus& script : in.scripts()) {
        piece.status.scripts.push_back(Take(script));
    }
    for (const std::string& path : in.closed()) piece.closed.push_back(text::FromUtf8(path));
    piece.complete = in.complete();
    return true;
}

std::string Pack(const std::vector<int>& breakpoints) {
    pb::Breakpoints out;
    out.mutable_lines()->Add(breakpoints.begin(), breakpoints.end());
    return out.SerializeAsString();
}

bool Unpack(std::string_view bytes, std::vector<int>& breakpoints) {
    pb::Breakpoints in;
    if (!ParseBytes(bytes, in)) return false;
    breakpoints.assign(in.lines().begin(), in.lines().end());
    return true;
}

std::string Pack(const engine::ScriptStanding& standing) {
    pb::Standing out;
    Put(standing, out);
    return out.SerializeAsString();
}

bool Unpack(std::string_view bytes, engine::ScriptStanding& standing) {
    pb::Standing in;
    if (!ParseBytes(bytes, in)) return false;
    standing = Take(in);
    return true;
}

std::string Pack(const AuditPiece& piece) {
    pb::Audit out;
    for (const audit::AuditEntry& entry : piece.entries) Put(entry, *out.add_entries());
    out.set_unreadable(piece.unreadable);
    for (const std::string& fault : piece.faults) out.add_faults(fault);
    return out.SerializeAsString();
}

bool Unpack(std::string_view bytes, AuditPiece& piece) {
    pb::Audit in;
    if (!ParseBytes(bytes, in)) return false;
    piece = {};
    for (const pb::AuditEntry& entry : in.entries()) {
        audit::AuditEntry taken;
        if (Take(entry, taken)) piece.entries.push_back(std::move(taken));
    }
    piece.unreadable = in.unreadable();
    piece.faults.assign(in.faults().begin(), in.faults().end());
    return true;
}

}  // namespace kalvex::supervision

#include "programs/kalvexctl/StandingJson.h"

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "text/CodePage.h"

namespace kalvex::kalvexctl {

namespace {

using Json = nlohmann::ordered_json;

// In the orders of the enumerations.
constexpr std::array kStates{
    "idle",           "running",  "waiting",          "sleeping",
    "scheduled",      "failing",  "stoppedByCommand", "stoppedAtBreakpoint",
    "stoppedOnError", "finished",
};
constexpr std::array kReleases{
    "none",   "time",    "nextTry", "retry",      "correction", "start",
    "resume", "restart", "address", "connection", "login",      "variable",
    "access", "value",   "answer",  "report",     "subscribe",
};
constexpr std::array kDataStates{
    "usable",  "noTarget",     "noElement",     "notReadable", "noAddress", "down",     "opening",
    "login",   "loginRefused", "notSubscribed", "noVariable",  "noAccess",  "noData",   "noValue",
    "unknown", "locked",       "notAsked",      "asked",       "notThere",  "noReport",
};
constexpr std::array kKinds{"none", "CURDATA", "HREP", "DREP", "MREP", "SREP", "archive"};

static_assert(kStates.size() == static_cast<std::size_t>(engine::StandingState::Finished) + 1);
static_assert(kReleases.size() == static_cast<std::size_t>(engine::Release::Subscribe) + 1);
static_assert(kDataStates.size() == static_cast<std::size_t>(engine::DataState::NoReport) + 1);

template <std::size_t Count, class Enumeration>
const char* WordOf(const std::array<const char*, Count>& words, Enumeration value) {
    return words.at(static_cast<std::size_t>(value));
}

Json TimeOrNull(std::int64_t time) {
    return time == 0 ? Json() : Json(time);
}

Json ReportJson(const std::optional<engine::ScriptReport>& report) {
    if (!report) return {};
    return {{"time", report->time},
            {"level", report->level},
            {"line", report->line},
            {"text", text::ToUtf8(report->text)},
            {"waiting", report->waiting}};
}

Json MissingJson(const engine::MissingValue& missing) {
    const auto kind = static_cast<std::size_t>(missing.kind);
    return {{"name", text::ToUtf8(missing.name)},
            {"kind", kind < kKinds.size() ? kKinds[kind] : kKinds[0]},
            {"source", text::ToUtf8(missing.condition.source)},
            {"variable", text::ToUtf8(missing.condition.variable)},
            {"state", WordOf(kDataStates, missing.condition.state)},
            {"reason", text::ToUtf8(missing.condition.reason)}};
}

}  // namespace

std::string StatusJson(const app::ModuleStatus& status) {
    Json scripts = Json::array();
    for (const app::ScriptStatus& script : status.scripts) {
        Json row = Json::object();
        row["path"] = text::ToUtf8(script.path);
        row["state"] = engine::StateName(script.stateWord);
        row["line"] = script.line ? Json(*script.line) : Json();
        row["statusWord"] = script.stateWord;
        row["report"] = ReportJson(script.report);
        scripts.push_back(std::move(row));
    }
    Json module = Json::object();
    module["module"] = text::ToUtf8(status.module);
    module["identity"] = text::ToUtf8(status.identity);
    module["logLevel"] = status.logLevel;
    module["scripts"] = std::move(scripts);
    return module.dump();
}

std::string UnansweredJson(const std::string& module, const std::string& error) {
    Json object = Json::object();
    object["module"] = text::ToUtf8(module);
    object["identity"] = Json();
    object["logLevel"] = Json();
    object["scripts"] = Json::array();
    object["error"] = error;
    return object.dump();
}

std::string StandingJson(const std::string& script, const engine::ScriptStanding& standing) {
    Json missing = Json::array();
    for (const engine::MissingValue& value : standing.missing) {
        missing.push_back(MissingJson(value));
    }
    Json error;
    if (standing.error.times > 0) {
        error["code"] = standing.error.code;
        error["text"] = text::ToUtf8(standing.message);
        error["times"] = standing.error.times;
    }
    Json object = Json::object();
    object["script"] = text::ToUtf8(script);
    object["state"] = WordOf(kStates, standing.state);
    object["line"] = standing.line;
    object["text"] = text::ToUtf8(standing.text);
    object["since"] = TimeOrNull(standing.since);
    object["stopped"] = TimeOrNull(standing.stopped);
    object["until"] = TimeOrNull(standing.until);
    object["missing"] = std::move(missing);
    object["error"] = std::move(error);
    object["lastFinished"] = TimeOrNull(standing.lastFinished);
    object["release"] = WordOf(kReleases, standing.release);
    return object.dump();
}

}  // namespace kalvex::kalvexctl

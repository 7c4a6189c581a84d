// PING_INIT, FTP_INIT, HTTP_INIT and their results.
#include <algorithm>
#include <charconv>
#include <climits>

#include "engine/ScriptDocument.h"
#include "host/HostStatements.h"
#include "host/LinkTests.h"
#include "operands/OperandEvaluator.h"
#include "text/LineScanner.h"
#include "text/TextFormat.h"
#include "value/ValueText.h"

namespace kalvex::host {

namespace {

constexpr std::uint32_t kDefaultTimeout = 5000;
constexpr std::uint32_t kFtpPort = 21;
constexpr std::uint32_t kHttpPort = 80;
constexpr const char* kTooManyTests = "Trwa już %d sprawdzeń połączeń, więcej być nie może";

LinkTests& TestsOf(operands::ScriptContext& script) {
    return script.GetPart<LinkTests>(operands::PartId::LinkTests, script.Services());
}

// Behind the colon at position 1 or later; npos where there is none.
std::size_t FindColon(std::string_view address) {
    const std::size_t colon = address.find(':');
    return colon == 0 ? std::string_view::npos : colon;
}

// The number at the beginning of a text, as far as it goes; 0 for none.
std::uint32_t ReadMilliseconds(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    if (text.starts_with('+')) text.remove_prefix(1);
    std::int32_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        number = text.starts_with('-') ? INT_MIN : INT_MAX;
    }
    return static_cast<std::uint32_t>(number);
}

bool ReadText(operands::ScriptContext& script, std::string_view token, std::string& out) {
    value::CVal value;
    if (!operands::EvaluateOperand(script, token, value, value::ValueType::Text, true))
        return false;
    out = value::ValueToText(value);
    return true;
}

// A parameter that is not there leaves the default.
bool ReadOptionalText(operands::ScriptContext& script, std::string_view token, std::string& out) {
    return token.empty() || ReadText(script, token, out);
}

bool ReadOptionalPort(operands::ScriptContext& script, std::string_view token, std::uint32_t& out) {
    if (token.empty()) return true;
    value::CVal value;
    if (!operands::EvaluateOperand(script, token, value, value::ValueType::Int, true)) return false;
    out = static_cast<std::uint32_t>(value::ValueToInt(value));
    return true;
}

engine::LineOutcome StartTest(engine::CKalvexDoc& document, LinkKind kind, LinkTarget target) {
    if (TestsOf(document).Start(kind, std::move(target))) return engine::LineOutcome::Finished;
    return document.FailForced(
        operands::ErrorOther,
        text::FormatText(document.Services().translator.Translate(kTooManyTests),
                         {std::to_string(kMostLinkTests)}));
}

operands::FunctionResult TakeResult(operands::FunctionCall& call, LinkKind kind, bool cutsPort) {
    std::string address;
    if (!ReadText(call.script, call.arguments[0], address)) return operands::FunctionResult::Failed;
    const std::size_t colon = FindColon(address);
    if (cutsPort && colon != std::string::npos) address.resize(colon);
    call.out = value::CVal(TestsOf(call.script).TakeResult(kind, address));
    return operands::FunctionResult::Done;
}

}  // namespace

engine::LineOutcome ExecutePingInit(engine::StatementCall& call) {
    LinkTarget target;
    target.timeout = kDefaultTimeout;
    if (!ReadText(call.document, text::NextToken(call.rest), target.address))
        return engine::LineOutcome::Failed;
    const std::size_t colon = FindColon(target.address);
    if (colon != std::string::npos) {
        target.timeout = ReadMilliseconds(std::string_view(target.address).substr(colon + 1));
        target.address.resize(colon);
    }
    return StartTest(call.document, LinkKind::Ping, std::move(target));
}

engine::LineOutcome ExecuteFtpInit(engine::StatementCall& call) {
    engine::CKalvexDoc& document = call.document;
    LinkTarget target;
    target.crypt = document.Services().crypt;
    target.port = kFtpPort;
    target.timeout = kDefaultTimeout;
    if (!ReadText(document, text::NextToken(call.rest), target.address))
        return engine::LineOutcome::Failed;
    if (!ReadOptionalPort(document, text::NextToken(call.rest), target.port))
        return engine::LineOutcome::Failed;
    if (!ReadOptionalText(document, text::NextToken(call.rest), target.user))
        return engine::LineOutcome::Failed;
    if (!ReadOptionalText(document, text::NextToken(call.rest), target.password)) {
        return engine::LineOutcome::Failed;
    }
    return StartTest(document, LinkKind::Ftp, std::move(target));
}

engine::LineOutcome ExecuteHttpInit(engine::StatementCall& call) {
    LinkTarget target;
    target.port = kHttpPort;
    if (!ReadText(call.document, text::NextToken(call.rest), target.address))
        return engine::LineOutcome::Failed;
    if (!ReadOptionalPort(call.document, text::NextToken(call.rest), target.port)) {
        return engine::LineOutcome::Failed;
    }
    return StartTest(call.document, LinkKind::Http, std::move(target));
}

operands::FunctionResult PingResultFunction(operands::FunctionCall& call) {
    return TakeResult(call, LinkKind::Ping, true);
}

operands::FunctionResult FtpResultFunction(operands::FunctionCall& call) {
    return TakeResult(call, LinkKind::Ftp, false);
}

operands::FunctionResult HttpResultFunction(operands::FunctionCall& call) {
    return TakeResult(call, LinkKind::Http, true);
}

}  // namespace kalvex::host

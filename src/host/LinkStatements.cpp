// PING_INIT, FTP_INIT, HTTP_INIT and their results.
#include <algorithm>
#include <charconv>
#include <climits>

#include "engine/ScriptDocument.h"
#include "host/HostStatements.h"
#include "host/LinkTests.h"
#include "operands/OperandEvaluator.h"
#include "text/LineScanner.h"
#include "value/ValueText.h"

namespace kalvex {

namespace {

constexpr std::uint32_t kDefaultTimeout = 5000;
constexpr std::uint32_t kFtpPort = 21;
constexpr std::uint32_t kHttpPort = 80;

CLinkTests& TestsOf(CScriptContext& script) {
    return script.GetPart<CLinkTests>(DocumentPart::LinkTests, script.Services());
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

bool ReadText(CScriptContext& script, std::string_view token, std::string& out) {
    CVal value;
    if (!EvaluateOperand(script, token, value, ValueType::Text, true)) return false;
    out = ValueToText(value);
    return true;
}

// A parameter that is not there leaves the default.
bool ReadOptionalText(CScriptContext& script, std::string_view token, std::string& out) {
    return token.empty() || ReadText(script, token, out);
}

bool ReadOptionalPort(CScriptContext& script, std::string_view token, std::uint32_t& out) {
    if (token.empty()) return true;
    CVal value;
    if (!EvaluateOperand(script, token, value, ValueType::Int, true)) return false;
    out = static_cast<std::uint32_t>(ValueToInt(value));
    return true;
}

FunctionResult TakeResult(FunctionCall& call, LinkKind kind, bool cutsPort) {
    std::string address;
    if (!ReadText(call.script, call.arguments[0], address)) return FunctionResult::Failed;
    const std::size_t colon = FindColon(address);
    if (cutsPort && colon != std::string::npos) address.resize(colon);
    call.out = CVal(TestsOf(call.script).TakeResult(kind, address));
    return FunctionResult::Done;
}

}  // namespace

LineOutcome ExecutePingInit(StatementCall& call) {
    LinkTarget target;
    target.timeout = kDefaultTimeout;
    if (!ReadText(call.document, NextToken(call.rest), target.address)) return LineOutcome::Failed;
    const std::size_t colon = FindColon(target.address);
    if (colon != std::string::npos) {
        target.timeout = ReadMilliseconds(std::string_view(target.address).substr(colon + 1));
        target.address.resize(colon);
    }
    TestsOf(call.document).Start(LinkKind::Ping, std::move(target));
    return LineOutcome::Finished;
}

LineOutcome ExecuteFtpInit(StatementCall& call) {
    CKalvexDoc& document = call.document;
    LinkTarget target;
    target.crypt = document.Services().crypt;
    target.port = kFtpPort;
    target.timeout = kDefaultTimeout;
    if (!ReadText(document, NextToken(call.rest), target.address)) return LineOutcome::Failed;
    if (!ReadOptionalPort(document, NextToken(call.rest), target.port)) return LineOutcome::Failed;
    if (!ReadOptionalText(document, NextToken(call.rest), target.user)) return LineOutcome::Failed;
    if (!ReadOptionalText(document, NextToken(call.rest), target.password)) {
        return LineOutcome::Failed;
    }
    TestsOf(document).Start(LinkKind::Ftp, std::move(target));
    return LineOutcome::Finished;
}

LineOutcome ExecuteHttpInit(StatementCall& call) {
    LinkTarget target;
    target.port = kHttpPort;
    if (!ReadText(call.document, NextToken(call.rest), target.address)) return LineOutcome::Failed;
    if (!ReadOptionalPort(call.document, NextToken(call.rest), target.port)) {
        return LineOutcome::Failed;
    }
    TestsOf(call.document).Start(LinkKind::Http, std::move(target));
    return LineOutcome::Finished;
}

FunctionResult PingResultFunction(FunctionCall& call) {
    return TakeResult(call, LinkKind::Ping, true);
}

FunctionResult FtpResultFunction(FunctionCall& call) {
    return TakeResult(call, LinkKind::Ftp, false);
}

FunctionResult HttpResultFunction(FunctionCall& call) {
    return TakeResult(call, LinkKind::Http, true);
}

}  // namespace kalvex

#include "host/DataFiles.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/ScriptDocument.h"
#include "host/DataFile.h"
#include "host/HostStatements.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"
#include "value/ValueText.h"

namespace kalvex::host {

namespace {

constexpr std::string_view kOnly = "-A";
constexpr std::string_view kAllBut = "-R";
constexpr std::string_view kNoDecimals = ".00";
constexpr std::string_view kNoValue = "0";

// Which variables are treated.
struct Selection {
    enum class Mode { All, Only, AllBut };
    Mode mode = Mode::All;
    std::vector<std::string> names;

    bool Contains(std::string_view name) const {
        const bool listed = std::ranges::find(names, name) != names.end();
        return mode == Mode::All || listed == (mode == Mode::Only);
    }

    // The same, and takes the name off the list: it counts once.
    bool Take(std::string_view name) {
        const bool contained = Contains(name);
        std::erase(names, name);
        return contained;
    }
};

struct Parameters {
    std::string path;  // absolute; empty if there is none
    std::string section;
    std::string value;
    Selection selection;
};

enum class Form { WithoutValue, WithValue };

// A lone minus takes the next token on.
std::string NextSigned(std::string_view& text) {
    std::string token(text::NextToken(text));
    if (token == "-") token += text::NextToken(text);
    return token;
}

bool IsOption(std::string_view token) {
    return text::EqualNoCase(token, kOnly) || text::EqualNoCase(token, kAllBut);
}

// A quoted text, the value of a variable, or the token as it stands; false for a variable that has
// no value now.
bool Resolve(operands::ScriptContext& script, std::string_view token, std::string& out) {
    out = token;
    if (token.empty()) return true;
    if (token.size() > 1 && token.front() == '"' && token.back() == '"') {
        out = token.substr(1, token.size() - 2);
        return true;
    }
    operands::CVariable* variable = script.Variables().Find(operands::BaseName(token));
    const value::ValueKind kind = value::GetValueKind(token);
    if (variable == nullptr || kind == value::KindNone) {
        script.SetError(operands::ErrorUndefinedVariable, token, false);
        return true;
    }
    value::CVal value;
    const int result = variable->GetValue(value, kind, 0);
    if (result == operands::ReadValue) {
        out = value::ValueToText(value);
        return true;
    }
    return script.Fail(
        result == operands::ReadUnavailable ? operands::ErrorRemoteValue : operands::ErrorWaiting,
        token);
}

// A numeric variable names a section by its whole number.
bool ResolveWhole(operands::ScriptContext& script, std::string_view token, std::string& out) {
    if (!Resolve(script, token, out)) return false;
    if (out.ends_with(kNoDecimals)) out.resize(out.size() - kNoDecimals.size());
    return true;
}

bool ReadSelection(operands::ScriptContext& script, std::string_view option, std::string_view text,
                   Selection& out) {
    if (option.empty()) return true;
    if (!IsOption(option)) return script.Fail(operands::ErrorUndefinedVariable, option);
    out.mode = text::EqualNoCase(option, kOnly) ? Selection::Mode::Only : Selection::Mode::AllBut;
    while (true) {
        const std::string_view name = text::NextToken(text);
        if (name.empty()) return true;
        if (IsOption(name)) return script.Fail(operands::ErrorUndefinedVariable, name);
        out.names.emplace_back(name);
    }
}

bool ReadParameters(operands::ScriptContext& script, std::string_view text, Form form,
                    Parameters& out) {
    if (!Resolve(script, text::NextToken(text), out.path)) return false;
    std::string option =
        form == Form::WithValue ? std::string(text::NextToken(text)) : NextSigned(text);
    if (!IsOption(option)) {
        if (!ResolveWhole(script, option, out.section)) return false;
        if (form == Form::WithValue && !ResolveWhole(script, NextSigned(text), out.value)) {
            return false;
        }
        option = NextSigned(text);
    }
    if (!ReadSelection(script, option, text, out.selection)) return false;
    if (out.path.empty()) return script.Fail(operands::ErrorNoFileName, out.path);
    const platform::Paths& paths = script.Services().paths;
    out.path = paths.GetFullPath(out.path, paths.GetRootPath());
    return true;
}

// A number takes the variable's type: into an integer from the text, so that no digit is lost.
void Assign(operands::CVariable& variable, std::string_view text) {
    double number = 0;
    if (!value::ConvertString2Double(text, &number)) {
        variable.SetValue(value::CVal(text), value::KindCurrent);
        return;
    }
    const int type = variable.GetValueType(value::KindCurrent, 1);
    value::CVal value = value::ValueType::IsInteger(type) ? value::CVal(text) : value::CVal(number);
    if (value.Cast(type)) variable.SetValue(value, value::KindCurrent);
}

DataFileResult Rewrite(operands::ScriptContext& script, platform::FileStore& files,
                       const Parameters& parameters, std::span<const DataEntry> entries) {
    RewrittenData data;
    const std::string file = platform::NativePath(parameters.path);
    const bool replaced = files.Replace(file, platform::NativePath(BackupPath(parameters.path)),
                                        [&](std::string_view old) {
                                            script.TellForeignText(file, old);
                                            data = RewriteData(old, parameters.section, entries);
                                            return std::move(data.text);
                                        });
    if (!replaced) return script.Fail(operands::ErrorFileOpen, parameters.path);
    return data.hasMore ? DataFileResult::Data : DataFileResult::Nothing;
}

using Operation = DataFileResult (*)(operands::ScriptContext&, platform::FileStore&,
                                     std::string_view);

engine::LineOutcome Execute(engine::StatementCall& call, Operation operation) {
    platform::FileStore& files = *call.document.Services().files;
    return engine::FinishedIf(operation(call.document, files, call.rest) != DataFileResult::Failed);
}

operands::FunctionResult Evaluate(operands::FunctionCall& call, Operation operation) {
    platform::FileStore& files = *call.script.Services().files;
    const DataFileResult result = operation(call.script, files, operands::TextBehindKeyword(call));
    call.out = value::CVal(result == DataFileResult::Data ? 1 : 0);
    return operands::FunctionResult::Done;
}

}  // namespace

DataFileResult ReadDataFile(operands::ScriptContext& script, platform::FileStore& files,
                            std::string_view text) {
    Parameters parameters;
    if (!ReadParameters(script, text, Form::WithoutValue, parameters)) {
        return DataFileResult::Failed;
    }
    std::string content;
    const std::string file = platform::NativePath(parameters.path);
    if (files.Read(file, content) != platform::FileOutcome::Done) {
        return script.Fail(operands::ErrorFileOpen, parameters.path);
    }
    script.TellForeignText(file, content);
    DataFileResult result = DataFileResult::Nothing;
    ReadDataLines(content, parameters.section, [&](std::string_view name, std::string_view value) {
        operands::CVariable* variable = operands::FindVariable(script, name);
        if (variable == nullptr) return;
        result = DataFileResult::Data;
        if (parameters.selection.Take(variable->GetName())) Assign(*variable, value);
    });
    return result;
}

DataFileResult WriteDataFile(operands::ScriptContext& script, platform::FileStore& files,
                             std::string_view text) {
    Parameters parameters;
    if (!ReadParameters(script, text, Form::WithoutValue, parameters)) {
        return DataFileResult::Failed;
    }
    std::vector<DataEntry> entries;
    for (const std::unique_ptr<operands::CVariable>& variable : script.Variables()) {
        if (!parameters.selection.Contains(variable->GetName())) continue;
        DataEntry entry{variable->GetName(), std::string()};
        if (variable->GetNameValueText(*entry.line, value::KindCurrent) == 0) entry.line.reset();
        entries.push_back(std::move(entry));
    }
    return Rewrite(script, files, parameters, entries);
}

DataFileResult SetDataFile(operands::ScriptContext& script, platform::FileStore& files,
                           std::string_view text) {
    Parameters parameters;
    if (!ReadParameters(script, text, Form::WithValue, parameters)) return DataFileResult::Failed;
    if (parameters.value.empty()) parameters.value = kNoValue;
    std::vector<DataEntry> entries;
    for (const std::unique_ptr<operands::CVariable>& variable : script.Variables()) {
        const std::string& name = variable->GetName();
        if (!parameters.selection.Contains(name)) continue;
        entries.push_back({name, name + ':' + parameters.value});
    }
    return Rewrite(script, files, parameters, entries);
}

engine::LineOutcome ExecuteReadFile(engine::StatementCall& call) {
    return Execute(call, ReadDataFile);
}

engine::LineOutcome ExecuteWriteFile(engine::StatementCall& call) {
    return Execute(call, WriteDataFile);
}

engine::LineOutcome ExecuteSetFile(engine::StatementCall& call) {
    return Execute(call, SetDataFile);
}

operands::FunctionResult ReadFileFunction(operands::FunctionCall& call) {
    return Evaluate(call, ReadDataFile);
}

operands::FunctionResult WriteFileFunction(operands::FunctionCall& call) {
    return Evaluate(call, WriteDataFile);
}

operands::FunctionResult SetFileFunction(operands::FunctionCall& call) {
    return Evaluate(call, SetDataFile);
}

}  // namespace kalvex::host

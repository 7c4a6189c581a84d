#include "host/DataFiles.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "engine/ScriptDocument.h"
#include "host/DataFile.h"
#include "host/HostStatements.h"
#include "platform/posix/FileStore.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"
#include "value/ValueText.h"

namespace kalvex {

namespace {

constexpr std::string_view kOnly = "-A";
constexpr std::string_view kAllBut = "-R";
constexpr std::string_view kNoDecimals = ".00";
constexpr std::string_view kNoValue = "0";

// Which variables are treated.
struct CSelection {
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

struct CParameters {
    std::string path;  // absolute; empty if there is none
    std::string section;
    std::string value;
    CSelection selection;
};

enum class Form { WithoutValue, WithValue };

// A lone minus takes the next token on.
std::string NextSigned(std::string_view& text) {
    std::string token(NextToken(text));
    if (token == "-") token += NextToken(text);
    return token;
}

bool IsOption(std::string_view token) {
    return EqualNoCase(token, kOnly) || EqualNoCase(token, kAllBut);
}

bool Fail(CScriptContext& document, ScriptError code, std::string_view text) {
    document.SetError(code, text, false);
    return false;
}

// A quoted text, the value of a variable, or the token as it stands; false for a variable that has
// no value now.
bool Resolve(CScriptContext& document, std::string_view token, std::string& out) {
    out = token;
    if (token.empty()) return true;
    if (token.size() > 1 && token.front() == '"' && token.back() == '"') {
        out = token.substr(1, token.size() - 2);
        return true;
    }
    CVariable* variable = document.Variables().Find(BaseName(token));
    const ValueKind kind = GetValueKind(token);
    if (variable == nullptr || kind == KindNone) {
        document.SetError(ErrorUndefinedVariable, token, false);
        return true;
    }
    CVal value;
    const int result = variable->GetValue(value, kind, 0);
    if (result == ReadValue) {
        out = ValueToText(value);
        return true;
    }
    return Fail(document, result == ReadUnavailable ? ErrorRemoteValue : ErrorWaiting, token);
}

// A numeric variable names a section by its whole number.
bool ResolveWhole(CScriptContext& document, std::string_view token, std::string& out) {
    if (!Resolve(document, token, out)) return false;
    if (out.ends_with(kNoDecimals)) out.resize(out.size() - kNoDecimals.size());
    return true;
}

bool ReadSelection(CScriptContext& document, std::string_view option, std::string_view text,
                   CSelection& out) {
    if (option.empty()) return true;
    if (!IsOption(option)) return Fail(document, ErrorUndefinedVariable, option);
    out.mode = EqualNoCase(option, kOnly) ? CSelection::Mode::Only : CSelection::Mode::AllBut;
    while (true) {
        const std::string_view name = NextToken(text);
        if (name.empty()) return true;
        if (IsOption(name)) return Fail(document, ErrorUndefinedVariable, name);
        out.names.emplace_back(name);
    }
}

bool ReadParameters(CScriptContext& document, std::string_view text, Form form, CParameters& out) {
    if (!Resolve(document, NextToken(text), out.path)) return false;
    std::string option = form == Form::WithValue ? std::string(NextToken(text)) : NextSigned(text);
    if (!IsOption(option)) {
        if (!ResolveWhole(document, option, out.section)) return false;
        if (form == Form::WithValue && !ResolveWhole(document, NextSigned(text), out.value)) {
            return false;
        }
        option = NextSigned(text);
    }
    if (!ReadSelection(document, option, text, out.selection)) return false;
    if (out.path.empty()) return Fail(document, ErrorNoFileName, out.path);
    const Paths& paths = document.Services().paths;
    out.path = paths.GetFullPath(out.path, paths.GetRootPath());
    return true;
}

// A number takes the variable's type: into an integer from the text, so that no digit is lost.
void Assign(CVariable& variable, std::string_view text) {
    double number = 0;
    if (!ConvertString2Double(text, &number)) {
        variable.SetValue(CVal(text), KindCurrent);
        return;
    }
    const int type = variable.GetValueType(KindCurrent, 1);
    CVal value = ValueType::IsInteger(type) ? CVal(text) : CVal(number);
    if (value.Cast(type)) variable.SetValue(value, KindCurrent);
}

DataFileResult Rewrite(CScriptContext& document, FileStore& files, const CParameters& parameters,
                       std::span<const DataEntry> entries) {
    const std::string path = NativePath(parameters.path);
    const std::string backup = NativePath(BackupPath(parameters.path));
    std::string old;
    const bool copied = files.MoveAside(path, backup) != FileOutcome::Failed &&
                        files.Read(backup, old) != FileOutcome::Failed;
    if (copied) {
        const RewrittenData data = RewriteData(old, parameters.section, entries);
        if (files.Create(path, data.text)) {
            return data.hasMore ? DataFileResult::Data : DataFileResult::Nothing;
        }
    }
    document.SetError(ErrorFileOpen, parameters.path, false);
    return DataFileResult::Failed;
}

using Operation = DataFileResult (*)(CScriptContext&, FileStore&, std::string_view);

bool Execute(StatementCall& call, Operation operation) {
    PosixFileStore files;
    return operation(call.document, files, call.rest) != DataFileResult::Failed;
}

FunctionResult Evaluate(FunctionCall& call, Operation operation) {
    PosixFileStore files;
    const DataFileResult result = operation(call.document, files, TextBehindKeyword(call));
    call.out = CVal(result == DataFileResult::Data ? 1 : 0);
    return FunctionResult::Done;
}

}  // namespace

DataFileResult ReadDataFile(CScriptContext& document, FileStore& files, std::string_view text) {
    CParameters parameters;
    if (!ReadParameters(document, text, Form::WithoutValue, parameters)) {
        return DataFileResult::Failed;
    }
    std::string content;
    if (files.Read(NativePath(parameters.path), content) != FileOutcome::Done) {
        document.SetError(ErrorFileOpen, parameters.path, false);
        return DataFileResult::Failed;
    }
    DataFileResult result = DataFileResult::Nothing;
    ReadDataLines(content, parameters.section, [&](std::string_view name, std::string_view value) {
        CVariable* variable = FindVariable(document, name);
        if (variable == nullptr) return;
        result = DataFileResult::Data;
        if (parameters.selection.Take(variable->GetName())) Assign(*variable, value);
    });
    return result;
}

DataFileResult WriteDataFile(CScriptContext& document, FileStore& files, std::string_view text) {
    CParameters parameters;
    if (!ReadParameters(document, text, Form::WithoutValue, parameters)) {
        return DataFileResult::Failed;
    }
    std::vector<DataEntry> entries;
    for (const std::unique_ptr<CVariable>& variable : document.Variables()) {
        if (!parameters.selection.Contains(variable->GetName())) continue;
        DataEntry entry{variable->GetName(), std::string()};
        if (variable->GetNameValueText(*entry.line, KindCurrent) == 0) entry.line.reset();
        entries.push_back(std::move(entry));
    }
    return Rewrite(document, files, parameters, entries);
}

DataFileResult SetDataFile(CScriptContext& document, FileStore& files, std::string_view text) {
    CParameters parameters;
    if (!ReadParameters(document, text, Form::WithValue, parameters)) return DataFileResult::Failed;
    if (parameters.value.empty()) parameters.value = kNoValue;
    std::vector<DataEntry> entries;
    for (const std::unique_ptr<CVariable>& variable : document.Variables()) {
        const std::string& name = variable->GetName();
        if (!parameters.selection.Contains(name)) continue;
        entries.push_back({name, name + ':' + parameters.value});
    }
    return Rewrite(document, files, parameters, entries);
}

bool ExecuteReadFile(StatementCall& call) {
    return Execute(call, ReadDataFile);
}

bool ExecuteWriteFile(StatementCall& call) {
    return Execute(call, WriteDataFile);
}

bool ExecuteSetFile(StatementCall& call) {
    return Execute(call, SetDataFile);
}

FunctionResult ReadFileFunction(FunctionCall& call) {
    return Evaluate(call, ReadDataFile);
}

FunctionResult WriteFileFunction(FunctionCall& call) {
    return Evaluate(call, WriteDataFile);
}

FunctionResult SetFileFunction(FunctionCall& call) {
    return Evaluate(call, SetDataFile);
}

}  // namespace kalvex

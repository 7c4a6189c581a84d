// The text of a script between the file and the first line that runs: INCLUDE and INCLUDE_VAR are
// replaced by what they stand for, one level deep.
#include <optional>
#include <string>
#include <string_view>

#include "engine/ScriptDocument.h"
#include "operands/Keywords.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"
#include "text/PatternMatch.h"
#include "text/TextFormat.h"

namespace kalvex::engine {

namespace {

constexpr const char* kLineEnd = "\r\n";

std::string_view TrimOf(std::string_view text, std::string_view characters) {
    const std::size_t first = text.find_first_not_of(characters);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

// The file's lines, each with its line end: a last line without one is a line too.
int AppendLines(std::string_view content, std::string& lines) {
    int count = 0;
    for (; !content.empty(); ++count) {
        const std::size_t end = content.find('\n');
        std::string_view line = content.substr(0, end);
        content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
        if (end != std::string_view::npos && line.ends_with('\r')) line.remove_suffix(1);
        lines += line;
        lines += kLineEnd;
    }
    return count;
}

std::string LocalName(std::string name) {
    for (char& c : name) {
        if (c == ' ' || c == '.') c = '_';
    }
    return std::string(TrimOf(name, " \t\r\n\v\f"));
}

class Expansion {
  public:
    explicit Expansion(CKalvexDoc& document)
        : m_document(document), m_text(document.Text()), m_services(document.Services()) {}

    // False when a file failed in the middle of its reading, which ends the expansion there.
    bool Run() {
        std::string line;
        for (m_line = 0; m_line < m_text.GetLineCount(); ++m_line) {
            NormaliseLine(m_text.GetLine(m_line), line);
            std::string_view rest = line;
            const std::string keyword = text::ToUpper(text::NextToken(rest));
            if (keyword == operands::Keyword::Include && !IncludeFile(rest)) return false;
            if (keyword == operands::Keyword::IncludeVar) IncludeVariables(rest);
        }
        return true;
    }

  private:
    void ReplaceLine(const std::string& line) {
        m_text.InsertScriptText(m_line, line + kLineEnd, true);
    }

    void InsertBehind(const std::string& line) {
        m_text.InsertScriptText(m_line, line + kLineEnd, false);
    }

    void InsertAndPass(const std::string& lines, int count) {
        if (count == 0) return;
        m_text.InsertScriptText(m_line, lines, false);
        m_line += count;
    }

    void InsertFault(const std::string& fault) {
        InsertBehind(fault);
        ++m_line;
    }

    // A console has its module's word for it.
    void TellFile(const std::string& path, const std::string& error) {
        if (m_services.consoleClient) return;
        m_document.LogLine(
            text::FormatText(m_services.translator.Translate(
                                 " : Nie można odczytać pliku %s (%s), INCLUDE w wierszu %s"),
                             {path, text::FromUtf8(error), std::to_string(m_line + 1)}),
            platform::LogErrors);
    }

    bool IncludeFile(std::string_view rest) {
        const std::string path = m_services.paths.GetFullPath(TrimOf(rest, " \"\t"));
        ReplaceLine("; BEGIN -> INCLUDE " + path + " */");

        std::string content;
        std::string error;
        const std::string file = platform::NativePath(path);
        const platform::FileRead read = platform::ReadFile(file, content, error);
        m_document.TellForeignText(file, content);
        if (read == platform::FileRead::NotOpened) {
            TellFile(path, error);
            InsertFault("ERROR - file \"" + path + "\" not found");
        } else {
            std::string lines;
            const int count = AppendLines(content, lines);
            InsertAndPass(lines, count);
        }
        if (read == platform::FileRead::Broken) {
            TellFile(path, error);
            InsertFault("ERROR - file \"" + path + "\" %s" + text::FromUtf8(error));
            return false;
        }
        InsertBehind("; END -> INCLUDE " + path + " */");
        return true;
    }

    void IncludeVariables(std::string_view rest) {
        const std::string server(text::NextToken(rest));
        const std::string_view filter = text::NextToken(rest);
        if (server.empty()) {
            InsertFault("ERROR - source \"" + server + "\" not found");
            return;
        }
        ReplaceLine("; BEGIN -> INCLUDE_VAR " + server + " */");
        InsertVariableDeclarations(server, filter);
        InsertBehind("; END -> INCLUDE_VAR " + server + " */");
    }

    void InsertVariableDeclarations(const std::string& server, std::string_view filter) {
        if (m_services.sources == nullptr) return;
        const auto names = m_services.sources->GetVariableNames(server);
        if (!names) return;
        std::string lines;
        int count = 0;
        for (const std::string& name : *names) {
            const bool wanted =
                filter.empty() ||
                text::CompareWithPattern(name, filter, text::PatternOption::VariableNames);
            if (!wanted) continue;
            lines += "REMOTE " + LocalName(name) + ' ' + server + '@' + name;
            lines += kLineEnd;
            ++count;
        }
        InsertAndPass(lines, count);
    }

    CKalvexDoc& m_document;
    ScriptText& m_text;
    const DocumentServices& m_services;
    int m_line = 0;
};

}  // namespace

bool CKalvexDoc::ExpandIncludes(bool expand) {
    Reload();
    m_bIncludesExpanded = expand && Expansion(*this).Run();
    if (expand && !m_bIncludesExpanded) return false;
    m_modified = false;
    return true;
}

}  // namespace kalvex::engine

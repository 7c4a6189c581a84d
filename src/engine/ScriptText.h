// The text of a script as lines, with the operations that the preparation needs. An editor may
// stand behind it; without one the line list serves. Lines are Windows-1250 without their line
// ends.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kalvex::engine {

// The line as statements read it: tabs are blanks, leading blanks are gone. `line` is overwritten.
void NormaliseLine(std::string_view raw, std::string& line);
// The same to where there is room for all of `raw`; the end of it.
char* NormaliseLine(std::string_view raw, char* line);

// A text of n line ends has n + 1 lines; the carriage return of a line end belongs to it.
std::vector<std::string> SplitLines(std::string_view text);

class ScriptText {
  public:
    virtual ~ScriptText() = default;

    virtual int GetLineCount() const = 0;
    virtual std::string_view GetLine(int n) const = 0;  // valid until the text changes
    virtual void SetText(std::string_view text) = 0;    // line ends CR LF or LF
    virtual std::string GetText() const = 0;            // line ends CR LF

    // With `replace` the text takes the place of the line and its line end, otherwise it goes in
    // behind that line. `text` carries its own line end.
    virtual void InsertScriptText(int line, std::string_view text, bool replace) = 0;
};

class LineList final : public ScriptText {
  public:
    LineList() : m_lines(1) {}

    int GetLineCount() const override { return static_cast<int>(m_lines.size()); }
    std::string_view GetLine(int n) const override { return m_lines[static_cast<std::size_t>(n)]; }
    void SetText(std::string_view text) override;
    std::string GetText() const override;
    void InsertScriptText(int line, std::string_view text, bool replace) override;

    // The lines take the place of `removed` lines from `first` on; at least one line is left.
    void ReplaceLines(int first, int removed, std::vector<std::string> lines);

  private:
    std::vector<std::string> m_lines;  // never empty
};

}  // namespace kalvex::engine

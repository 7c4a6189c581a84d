// The one text of a script, which its interpreter reads and its editor edits. What a person edits
// comes line by line and is not told back; what the document does with the text, a listener hears.
// The marks of the lines move with them: through edits, and through the expansion of includes and
// back, when those within the included text go. Main thread; lines count from 0.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/ScriptText.h"
#include "workbench/model/ScriptMarkers.h"

namespace kalvex::workbench {

// `removed` lines from `first` on have gone, `added` others stand there now.
struct LinesReplaced {
    int first = 0;
    int removed = 0;
    int added = 0;
    bool linesMove = false;  // what belongs to the lines behind moves with them, else numbers count
};

class TextListener {
  public:
    virtual ~TextListener() = default;
    // Told at once, so that a listener which follows every change always has the same text.
    virtual void OnLinesReplaced(const LinesReplaced& change) = 0;
};

class EditedText final : public engine::ScriptText {
  public:
    // Lines that a person's edit brings or takes, told before the marks move.
    using ShiftReport = std::function<void(int line, int count)>;

    // Neither is owned; null for none.
    void SetMarkers(ScriptMarkers* markers) { m_markers = markers; }
    void SetListener(TextListener* listener) { m_listener = listener; }
    void ReportShifts(ShiftReport inserted, ShiftReport deleted);

    int GetLineCount() const override { return m_lines.GetLineCount(); }
    std::string_view GetLine(int n) const override { return m_lines.GetLine(n); }
    std::string GetText() const override { return m_lines.GetText(); }

    // ---- by the document

    // Takes back what was inserted since the last call, and then replaces the lines that differ.
    // Those keep the marks of their numbers.
    void SetText(std::string_view text) override;
    void InsertScriptText(int line, std::string_view text, bool replace) override;

    // ---- by a person

    // Costs as much as what is replaced, and a move of the lines behind where their number changes.
    // A mark stays with the text of its line as far as that can be told, else with its place.
    void ReplaceLines(int first, int removed, std::vector<std::string> lines);

  private:
    struct Insertion {
        int line;
        int count;
    };

    void TakeBackInsertions();
    void TakeOver(std::vector<std::string> lines);
    void Replace(int first, int removed, std::vector<std::string> lines, bool linesMove);
    void Shift(int line, int count);

    engine::LineList m_lines;
    std::vector<Insertion> m_insertions;  // of the expansion, each in the lines as they were then
    ScriptMarkers* m_markers = nullptr;
    TextListener* m_listener = nullptr;
    ShiftReport m_inserted;
    ShiftReport m_deleted;
};

}  // namespace kalvex::workbench

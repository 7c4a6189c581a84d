// External programs: how the line of EXEC is read, and the programs that a script has started and
// may watch. Main thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "operands/DocumentPart.h"
#include "operands/ScriptContext.h"
#include "platform/Processes.h"

namespace kalvex::host {

// What EXEC starts. Texts are Windows-1250; the parameters are one text, quotes kept, a blank
// behind each.
struct ProgramLine {
    std::string program;
    bool isQuoted = false;  // the program was
    std::string directory;
    std::string parameters;
};

enum class ExecForm { Statement, Function };

// Reads everything behind the keyword. The function knows "-WD" at the start of a token too.
ProgramLine ReadProgramLine(operands::ScriptContext& script, std::string_view text, ExecForm form);

// The parameters as the program gets them: cut at blanks outside double quotes, which go.
std::vector<std::string> SplitParameters(std::string_view parameters);

// The programs that a document's functions have started, until its run state is cleared.
class StartedPrograms final : public operands::DocumentPart {
  public:
    explicit StartedPrograms(platform::Processes& processes) : m_processes(processes) {}
    ~StartedPrograms() override { ClearRunState(); }
    void ClearRunState() override;

    void Add(int id) { m_arrProcessHandles.push_back(id); }
    // The identifier as the system knows it, 0 if it is none of these.
    int Find(double id) const;

  private:
    platform::Processes& m_processes;
    std::vector<int> m_arrProcessHandles;
};

}  // namespace kalvex::host

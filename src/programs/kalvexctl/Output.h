// Standard output and standard error of kalvexctl. Main thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/LogSink.h"
#include "programs/kalvexctl/Endings.h"
#include "programs/kalvexctl/Table.h"

namespace kalvex::kalvexctl {

// False for a standard stream that the caller has closed: by then libraries have put another thing
// in its place, which is none of a file's kinds.
bool IsStream(int descriptor);

class Output final : public platform::LogSink {
  public:
    Output();

    bool IsTerminal() const { return m_isTerminal; }
    // Nothing can be written any more.
    bool IsClosed() const { return m_closed; }
    // Why not, in the system's words; empty when the other side just reads no more.
    const std::string& GetFault() const { return m_fault; }

    // A table with a head on a terminal, a line for each row for a program.
    void PrintTable(const std::vector<std::string>& head, const std::vector<Row>& rows);
    void PrintRow(const Row& row) { PrintTable({}, {row}); }
    // UTF-8, without its end; cut on a terminal.
    void PrintLine(std::string_view line);
    // As it is.
    void PrintText(std::string_view text);
    // A terminal is emptied; a program sees nothing of it.
    void Clear();

    // On standard error.
    static void Tell(const Ending& ending);
    // What a connection has to say of files that it cannot read.
    void Log(std::string_view text, int level) override;

  private:
    Screen GetScreen() const;

    const bool m_isTerminal;
    const bool m_isColoured;
    bool m_closed = false;
    std::string m_fault;
};

}  // namespace kalvex::kalvexctl

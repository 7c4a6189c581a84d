// Messages between documents and the remote console. A module publishes through it, a console
// client sends commands through it. Main thread.
#pragma once

#include <string_view>

namespace kalvex::engine {

class CKalvexDoc;

enum class ConsoleCommand : int { Start = 2, Stop = 4, Reset = 6, Step = 8 };
enum class ConsoleStateMessage : int { Stepped = 9, Breakpoint = 16 };

class ConsoleLink {
  public:
    virtual ~ConsoleLink() = default;
    virtual void SendCommand(std::string_view documentKey, ConsoleCommand command) = 0;
    virtual void SendLine(std::string_view documentKey, int line) = 0;
    virtual void SendState(std::string_view documentKey, ConsoleStateMessage message, int stateWord,
                           int line) = 0;
    // The text has been written to its file.
    virtual void OnSaved(CKalvexDoc&) {}
};

}  // namespace kalvex::engine

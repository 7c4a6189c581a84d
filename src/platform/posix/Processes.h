// Programs as children of this process, each in a process group of its own. A child that ends is
// taken off the system's table at once, by the handler of SIGCHLD, which the first object installs;
// children that others have started are not touched.
#pragma once

#include <sys/types.h>

#include <functional>
#include <unordered_map>
#include <utility>

#include "platform/Processes.h"

namespace kalvex::platform {

struct ChildProcess;

class PosixProcesses final : public Processes {
  public:
    PosixProcesses();
    ~PosixProcesses() override;

    // The identifier is the number of a descriptor of the process, or a number of its own where
    // that one still names a program that has ended: a descriptor is held as long as the program
    // runs.
    int Start(const ProgramCall& call, std::string& error) override;
    void Release(int id) override;
    // 128 plus the signal for a program that a signal has ended.
    std::optional<int> GetExitCode(int id, std::string& error) override;
    bool Terminate(int id, int exitCode, std::string& error) override;
    // Through the program's windows where it has some, else by SIGTERM.
    bool RequestClose(int id) override;
    void WaitSecond() override;
    bool IsEnding() const override { return m_isEnding && m_isEnding(); }

    // Calls `afterSecond` behind each second that is waited for; `isEnding` answers for IsEnding.
    void OnWait(std::function<void()> afterSecond, std::function<bool()> isEnding) {
        m_afterSecond = std::move(afterSecond);
        m_isEnding = std::move(isEnding);
    }

  private:
    struct Entry {
        ChildProcess* child = nullptr;  // none once its end has been noted
        int state = 0;                  // of one that has ended
        std::optional<int> terminateCode;
    };

    int Register(pid_t pid, int fd);
    static bool IsRunning(Entry& entry);
    static bool SendSignal(const Entry& entry, int signal);
    static void LetGo(Entry& entry);

    std::unordered_map<int, Entry> m_byId;
    int m_lastId = 0;  // the greatest one given so far
    std::function<void()> m_afterSecond;
    std::function<bool()> m_isEnding;
};

}  // namespace kalvex::platform

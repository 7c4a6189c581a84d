// Programs that scripts start, watch and end. Main thread. Texts are the system's (UTF-8), failures
// its words.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kalvex::platform {

struct ProgramCall {
    std::string program;  // a path, or a name that is looked up along PATH
    std::vector<std::string> arguments;
    std::string directory;  // empty: that of this process
};

class Processes {
  public:
    virtual ~Processes() = default;

    // The exit code that says that a program runs; one that ends with it looks as if it ran on.
    static constexpr int kStillActive = 259;

    // The identifier of the started program, which stays valid after its end until it is released;
    // 0 when it could not be started, as what is neither an executable nor a script with "#!". The
    // program gets no input, its output is dropped, and nothing of this process is open in it.
    virtual int Start(const ProgramCall& call, std::string& error) = 0;

    // Gives the identifier up; the program runs on.
    virtual void Release(int id) = 0;

    // Nothing when the state cannot be read.
    virtual std::optional<int> GetExitCode(int id, std::string& error) = 0;

    // Ends the program at once; its exit code is then `exitCode`. False for one that has ended.
    virtual bool Terminate(int id, int exitCode, std::string& error) = 0;

    // Asks the program to end; false when there was nobody to ask.
    virtual bool RequestClose(int id) = 0;

    // Blocks for one whole second.
    virtual void WaitSecond() = 0;
    // Whether this process is asked to end, so that nothing is waited for any longer.
    virtual bool IsEnding() const { return false; }
};

// For a process that starts no programs: every attempt fails.
Processes& NoProcesses();

}  // namespace kalvex::platform

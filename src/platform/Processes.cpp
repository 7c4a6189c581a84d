#include "platform/Processes.h"

#include <cerrno>
#include <cstring>

namespace kalvex::platform {

namespace {

class MissingProcesses final : public Processes {
  public:
    int Start(const ProgramCall&, std::string& error) override { return Refuse(error); }
    void Release(int) override {}
    std::optional<int> GetExitCode(int, std::string& error) override {
        Refuse(error);
        return std::nullopt;
    }
    bool Terminate(int, int, std::string& error) override { return Refuse(error) != 0; }
    bool RequestClose(int) override { return false; }
    void WaitSecond() override {}

  private:
    static int Refuse(std::string& error) {
        error = std::strerror(EPERM);
        return 0;
    }
};

}  // namespace

Processes& NoProcesses() {
    static MissingProcesses processes;
    return processes;
}

}  // namespace kalvex::platform

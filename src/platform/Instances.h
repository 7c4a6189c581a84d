// Which copies of a program run on this machine. What a process has taken goes with it, however it
// ends. Main thread.
#pragma once

#include <list>
#include <string>
#include <string_view>

#include "platform/FileLock.h"

namespace kalvex::platform {

class Instances {
  public:
    virtual ~Instances() = default;

    // Whether this process became the primary one of that name on the machine.
    virtual bool SetPrimaryInstance(std::string_view name) = 0;
    virtual bool IsPrimaryInstance() const = 0;

    // Whether this instance of that name may run. A refusal has the system's words in `error` when
    // it could not even be asked for, and none when another process is that instance.
    virtual bool LockInstance(std::string_view name, int instance, std::string& error) = 0;
};

// By lock files in a folder that all users of the machine's modules share.
class FileInstances final : public Instances {
  public:
    // The folder is made when it is first needed.
    explicit FileInstances(std::string folder) : m_folder(std::move(folder)) {}

    bool SetPrimaryInstance(std::string_view name) override;
    bool IsPrimaryInstance() const override { return m_primary; }
    bool LockInstance(std::string_view name, int instance, std::string& error) override;

  private:
    bool Take(const std::string& file, std::string& error);

    const std::string m_folder;
    std::list<FileLock> m_locks;
    bool m_primary = false;
};

}  // namespace kalvex::platform

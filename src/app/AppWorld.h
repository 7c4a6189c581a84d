// What the application asks of the process that it lives in. Everything here is called on the main
// thread.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "app/ConsoleConfiguration.h"
#include "app/MainWindow.h"
#include "app/Supervision.h"
#include "app/TickDriver.h"
#include "engine/DocumentServices.h"
#include "platform/Clock.h"
#include "platform/Crypt.h"
#include "platform/FileStore.h"
#include "platform/Instances.h"
#include "platform/MainLoop.h"
#include "platform/NetworkProbes.h"
#include "platform/Processes.h"
#include "platform/Profile.h"
#include "platform/Translator.h"
#include "platform/UserManager.h"
#include "platform/UserStore.h"
#include "vantrel/Transport.h"

namespace kalvex::app {

// The loop of the process; it calls nothing from within these operations.
class AppLoop : public platform::MainLoop {
  public:
    // Calls `work` every so many milliseconds, 10 at least; a timer of that number begins anew.
    // False when the system has no timer to give.
    virtual bool SetTimer(int id, std::int64_t milliseconds, std::function<void()> work) = 0;
    virtual void KillTimer(int id) = 0;
    // Whose ticks come from now on, one a millisecond at most; null for none. Not owned.
    virtual void SetTickSource(TickSource* source) = 0;
    // Ends the loop after the work at hand.
    virtual void Quit() = 0;
};

// A library that has to be started before its use.
class AppLibrary {
  public:
    virtual ~AppLibrary() = default;
    // False with the reason, an engine text, in `error`.
    virtual bool Start(std::string& error) = 0;
    virtual void Stop() = 0;
};

// What carries messages to data servers, between the start and the stop of its library. It does its
// own periodic work.
class AppTransports {
  public:
    virtual ~AppTransports() = default;
    virtual vantrel::TransportFactory& Factory() = 0;
};

// Lets consoles come to a module.
class AppConsoleDoor {
  public:
    virtual ~AppConsoleDoor() = default;
    // Under that name, for consoles and for who supervises the module. False with an engine text in
    // `error` when it cannot listen as told.
    virtual bool Open(vantrel::SessionAcceptor& acceptor, Supervised& module,
                      const ConsoleConfiguration& configuration, const std::string& name,
                      std::string& error) = 0;
    // About once a second while it is open.
    virtual void Check() = 0;
    virtual void Close() = 0;
};

// Nothing is owned; all of it outlives the application.
struct AppWorld {
    platform::Clock& clock;
    const platform::Translator& translator;
    AppLoop& loop;
    platform::Profile& profile;
    const platform::CCrypt& crypt;
    platform::UserManager& users;
    platform::Instances& instances;
    platform::Processes& processes;
    platform::FileStore& files;
    platform::NetworkProbes& probes;
    AppTransports& transports;
    std::vector<AppLibrary*> libraries = {};         // in the order of their start
    const platform::UserStore* userStore = nullptr;  // who may log in; null: nobody's console comes
    AppConsoleDoor* consoleDoor = nullptr;           // null where no console can come
    MainWindow* window = nullptr;                    // without one the process is not interactive
    bool canMirror = false;                          // it can be a console of another module
    bool service = false;                    // run by the system, with no session of its own
    engine::LineWatch* lineWatch = nullptr;  // where a slow line is told
    engine::RunCounts* counts = nullptr;     // where scripts count; none where nobody counts
    // Microseconds of the clock that ticks go by; none where time stands still in a tick.
    std::function<std::int64_t()> tickClock = {};

    // In the system's encoding; the folders are absolute paths.
    std::vector<std::string> arguments = {};  // without the program's name
    std::string workingDir = {};              // of the profile and of relative paths
    std::string logFolder = {};
    std::string hostName = {};
};

}  // namespace kalvex::app

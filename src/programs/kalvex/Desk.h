// A module, or a console of one, with its window: the real world, the application in it, and the
// window before it. Main thread.
#pragma once

#include <string>

#include "app/Health.h"
#include "app/KalvexApp.h"
#include "platform/GettextTranslator.h"
#include "platform/IniProfile.h"
#include "platform/UserSession.h"
#include "platform/posix/FileStore.h"
#include "platform/posix/NetworkProbes.h"
#include "platform/posix/Processes.h"
#include "platform/posix/SystemClock.h"
#include "programs/ModuleLibraries.h"
#include "programs/OptionTable.h"
#include "workbench/qt/KalvexWindow.h"
#include "workbench/qt/QtLoop.h"

namespace kalvex::desk {

// Has the signals that the desk answers wait for it. Before the application of the toolkit, whose
// threads would take them.
void HoldSignals();

class KalvexDesk {
  public:
    // Made behind the application of the toolkit and before any other thread; the working
    // directory of the process is that of the options.
    explicit KalvexDesk(const programs::ModuleOptions& options);

    // From the start to the end; the exit status.
    int Run();

  private:
    app::AppWorld MakeWorld(const programs::ModuleOptions& options);
    void WatchSignals();
    void LogHealth();

    platform::SystemClock m_clock;
    platform::GettextTranslator m_translator;
    window::QtLoop m_loop;
    platform::IniProfile m_profile;
    platform::CCrypt m_crypt;
    platform::FileInstances m_instances;
    platform::PosixProcesses m_processes;
    platform::PosixFileStore m_files;
    platform::PosixNetworkProbes m_probes;
    programs::UserLibrary m_userLibrary;
    programs::NetworkLibrary m_network;
    programs::ConsoleDoor m_consoleDoor;
    platform::UserSession m_users;
    app::Health m_health;
    window::KalvexWindow m_window;
    app::CKalvexApp m_app;
};

}  // namespace kalvex::desk

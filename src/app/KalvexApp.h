// The application: the role of its process, the order in which everything starts and stops, and
// what the process has once: settings, log, data sources, documents. Main thread.
//
// InitInstance, then the loop of the process until it is told to quit, then ExitInstance, whatever
// came before.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/AppClientConsole.h"
#include "app/AppConsole.h"
#include "app/AppWorld.h"
#include "app/CmdLine.h"
#include "app/Configuration.h"
#include "app/ErrorReminder.h"
#include "app/KalvexLog.h"
#include "app/MainFrame.h"
#include "app/ScriptDocuments.h"
#include "engine/DocumentServices.h"
#include "platform/Paths.h"
#include "sources/ClientInterface.h"

namespace kalvex::app {

// How the process ends, for whoever started it.
struct AppEnd {
    int exitStatus = 0;
    std::string text;  // an engine text; empty when there is nothing to say
};

class CKalvexApp final : private LogOutlets {
  public:
    // The calling thread becomes the main one.
    explicit CKalvexApp(const AppWorld& world);
    ~CKalvexApp() override;
    CKalvexApp(const CKalvexApp&) = delete;
    CKalvexApp& operator=(const CKalvexApp&) = delete;

    // False when the process has to end, with the reason in GetEnd.
    bool InitInstance();
    // Closes the documents and lets go of the data sources. With flag 0 the person at the keyboard
    // may refuse, which gives -1 and changes nothing; otherwise 0.
    int CloseInstance(int flag);
    // Stops what InitInstance has started; the exit status.
    int ExitInstance();
    const AppEnd& GetEnd() const { return m_end; }

    // What the system, the window and the user management tell.
    void OnCloseMainWindow();
    // True in `ending`: the session of the person at the keyboard ends.
    void OnEndSession(bool ending);
    // Parameter 0: another user is logged in, 1: something else to tell of; any other: rights may
    // have changed.
    void OnUserBroadcast(unsigned int parameter, std::string_view info);
    // Why lines cannot be written to the file of the log, an engine text; empty when they can.
    const std::string& GetLogFault() const { return m_logFault; }
    // The files may have been moved: the next line goes to those that bear the names then.
    void ReopenLogFiles();
    // Takes effect at once, is told and kept.
    void SetLogLevel(int level);

    // ---- scripts, as the person at the window opens, saves and closes them; none of it asks

    // The script of that file, which is opened unless it is open; null with the system's words in
    // `error` when it does not open, and with none when the person has been told why.
    engine::CKalvexDoc* OpenScript(std::string_view path, std::string& error);
    // Without a file.
    engine::CKalvexDoc& NewScript();
    // To that file, an engine text, which is the script's from then on; false, with the system's
    // words in `error`, leaves the script with the file that it had.
    bool SaveScriptAs(engine::CKalvexDoc& document, std::string_view path, std::string& error);
    void CloseScript(engine::CKalvexDoc& document);

    // The person wants the session of a script that is not held here.
    void AskForSession(engine::CKalvexDoc& document);

    // ---- settings, changed and written at once

    // The person's changes of the application dialog.
    void Configure(KalvexConfiguration configuration);
    void SetColumnWidths(std::vector<unsigned int> widths);
    // See ConfigurationStore::EditSources.
    bool EditSources(const std::function<bool(std::vector<sources::CSourceDesc>&)>& change);

    std::string ReadLogFont() const { return m_store->ReadLogFont(); }
    void KeepLogFont(std::string_view font) { m_store->WriteLogFont(font); }

    // Scripts given on the command line, in the system's encoding; a process with a window opens
    // them.
    const std::vector<std::string>& GetScriptArguments() const { return m_cmdLine.GetScripts(); }

    bool IsConsoleClient() const { return m_consoleClient; }
    bool IsInteractiveMode() const { return m_world.window != nullptr; }
    // By which the servers know the module, and the machine's process in it.
    const std::string& GetModuleName() const { return m_configuration.moduleName; }
    const std::string& GetClientIdentity() const { return m_clientIdentity; }
    int GetCloseLevel() const { return m_closeLevel; }
    const KalvexConfiguration& Configuration() const { return m_configuration; }
    // After InitInstance: the profile's path without its ending, which what lies beside it shares;
    // the path of the log files without theirs. Both in the system's encoding.
    std::string GetProfileBase() const { return m_profile.substr(0, m_profile.rfind('.')); }
    const std::string& GetLogBase() const { return m_logBase; }
    const platform::Paths& Paths() const { return *m_paths; }
    const std::string& GetWorkingDir() const { return m_world.workingDir; }
    // Whether there are documents yet, and still.
    bool HasDocuments() const { return m_documents != nullptr; }
    CKalvexLog& Log() { return m_log; }

    // After InitInstance: of the process until its end; the sources go with CloseInstance, and are
    // null then.
    CMainFrame& MainFrame() { return *m_frame; }
    ScriptDocuments& Documents() { return *m_documents; }
    sources::CClientInterface* ClientInterface() { return m_clientInterface.get(); }
    // Of a console of another module alone, until CloseInstance.
    console::ClientConsole& RemoteModule() { return m_clientConsole->Console(); }

  private:
    using Step = bool (CKalvexApp::*)();
    static const Step kSteps[];

    // The steps of InitInstance; false ends it.
    bool ShowParameters();
    bool ReadRole();
    bool RefuseOptionC();
    bool DecideRole();
    bool LockInstance();
    bool ConfigureProfile();
    bool NameLogFiles();
    bool StartLibraries();
    bool RequirePrimaryInstance();
    bool OpenProfile();
    bool TakeNames();
    bool LoadSettings();
    bool OpenLogFile();
    bool MakeDocuments();
    bool CreateMainFrame();
    bool CreateClientInterface();
    bool TellRole();
    bool StartConsole();
    bool ScheduleAutoStart();
    bool CompleteFrame();

    platform::Questions& Questions();
    bool Fail(std::string text);
    bool FailWithBox(std::string text);
    std::string WithInstance(std::string_view format, std::string_view name) const;

    void RunAutoStart();
    bool LogIn();
    void OpenAutoStartScripts();
    void OnLoginFailed(std::string text);
    void DoPeriodicWork();
    void RemindOfErrors();
    void CheckLogFile();
    std::string FindLogFault() const;
    void UpdateCloseEntry();
    void UpdateTitle();
    void CloseFrame();
    void ReleaseScripts();
    void CloseDocument(engine::CKalvexDoc& document);
    void LogAppStart();
    void LogAppStop();

    void ShowStatusLine(std::string_view text) override;
    void OnLogLevel(int level) override;

    const AppWorld m_world;
    CCmdLine m_cmdLine;
    bool m_consoleClient = false;
    int m_instance = 1;
    int m_closeLevel = 0;
    std::string m_profile;  // path
    std::string m_logBase;  // path and name of the log files
    KalvexConfiguration m_configuration;
    std::string m_clientIdentity;
    CKalvexLog m_log;
    CLog m_diagnosticLog;
    std::optional<platform::Paths> m_paths;
    std::optional<ConfigurationStore> m_store;
    std::size_t m_librariesStarted = 0;
    platform::NoAnswers m_noAnswers;
    std::unique_ptr<sources::CClientInterface> m_clientInterface;
    platform::ToldFiles m_toldFiles;
    std::unique_ptr<engine::DocumentServices> m_services;
    std::unique_ptr<ScriptDocuments> m_documents;
    std::unique_ptr<AppConsole> m_console;              // of a module
    std::unique_ptr<AppClientConsole> m_clientConsole;  // of a console client
    std::unique_ptr<CMainFrame> m_frame;
    ErrorReminder m_reminder{m_world.clock};
    std::string m_logFault;
    std::uint64_t m_linesLost = 0;  // of the log, when its file was looked at last
    bool m_startLogged = false;
    bool m_closing = false;
    AppEnd m_end;
};

}  // namespace kalvex::app

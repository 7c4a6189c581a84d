#include "programs/kalvexd/Check.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>

#include "app/Configuration.h"
#include "app/ConsoleConfiguration.h"
#include "app/ProfileKeys.h"
#include "engine/ScriptDocument.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "platform/FileTexts.h"
#include "platform/Files.h"
#include "platform/IniProfile.h"
#include "platform/UserSession.h"
#include "platform/posix/AccountName.h"
#include "platform/posix/SystemClock.h"
#include "programs/ModuleLibraries.h"
#include "text/CodePage.h"

namespace kalvex::kalvexd {

namespace {

// Engine texts.
using Faults = std::vector<std::string>;

// What a script tells while it is made ready is a fault.
class FaultLog final : public platform::LogSink {
  public:
    explicit FaultLog(Faults& faults) : m_faults(faults) {}
    void Log(std::string_view text, int) override { m_faults.emplace_back(text); }

  private:
    Faults& m_faults;
};

class Check {
  public:
    Check(const std::string& workingDir, const std::string& path,
          const platform::Translator& translator)
        : m_workingDir(workingDir), m_path(path), m_translator(translator) {}

    Faults Find() {
        std::string error;
        std::error_code unknown;
        if (!std::filesystem::exists(m_path, unknown)) {
            Tell({platform::Translatable("Nie ma pliku %s"), {m_path}});
        } else if (!m_profile.IsReadable(error)) {
            Tell({platform::kUnreadableFile,
                  {m_path, platform::InWords({error.c_str()}, m_translator)}});
        } else {
            CheckSettings();
            CheckUsers();
            CheckScripts();
        }
        return std::move(m_faults);
    }

  private:
    void Tell(const platform::Notice& fault) {
        m_faults.push_back(text::FromUtf8(platform::InWords(fault, m_translator)));
    }

    void Take(Faults faults) { std::ranges::move(faults, std::back_inserter(m_faults)); }

    void CheckSettings() {
        const platform::CCrypt crypt(m_workingDir + '/' + app::kKeyFileName,
                                     platform::KeyFile::ReadOnly);
        const app::ConfigurationStore store(m_profile, crypt, m_paths, false);
        store.ReadSources(m_configuration);
        store.ReadWindows(m_configuration);
        Take(store.FindFaults(m_configuration, m_path, m_translator));
        app::ConsoleConfiguration console;
        Take(app::ReadConsole(m_profile, m_path, m_translator, console));
    }

    // The store would make files of its own beside it.
    void CheckUsers() {
        const std::string file = platform::NativePath(m_users.GetFile());
        std::string content;
        std::string error;
        if (file.empty() || platform::ReadWholeFile(file, content, error)) return;
        Tell({platform::Translatable("Nie można otworzyć pliku użytkowników %s (%s)"),
              {file, error}});
    }

    void CheckScripts() {
        if (!platform::HasEngineForm(m_workingDir)) {
            Tell({platform::Translatable("Nazwa folderu %s ma znaki spoza Windows-1250, więc jego "
                                         "pliki nie otworzą się"),
                  {m_workingDir}});
        }
        if (m_configuration.autostart.empty()) {
            Tell({platform::Translatable("Brak skryptów do uruchomienia (plik %s, sekcja [%s])"),
                  {m_path, app::Section::Autostart}});
        }
        const platform::UserSession nobody(m_users.Store(), platform::AccountName());
        engine::DocumentServices services{
            {m_clock, m_log, m_translator, nobody, m_paths, language::Functions()},
            language::Statements(),
            m_questions};
        for (const std::string& path : m_configuration.autostart) {
            engine::CKalvexDoc document(services);
            std::string error;
            if (!document.Open(path, error)) {
                m_faults.push_back(path + " : " + text::FromUtf8(error));
                continue;
            }
            document.PrepareRun();
            document.CheckStructure();
        }
    }

    const std::string& m_workingDir;
    const std::string& m_path;
    const platform::Translator& m_translator;
    platform::IniProfile m_profile{m_path};
    const programs::UserLibrary m_users{m_profile, m_translator};
    const platform::Paths m_paths{m_workingDir};
    app::KalvexConfiguration m_configuration;
    Faults m_faults;
    FaultLog m_log{m_faults};
    platform::SystemClock m_clock;
    platform::NoAnswers m_questions;
};

}  // namespace

int RunCheck(const KalvexdOptions& options, const app::CCmdLine& line, const std::string& profile,
             const platform::Translator& translator) {
    Faults faults = line.GetWarnings(translator);
    std::ranges::move(Check(options.workingDir, profile, translator).Find(),
                      std::back_inserter(faults));
    for (const std::string& fault : faults) std::cerr << text::ToUtf8(fault) << '\n';
    return faults.empty() ? programs::ExitDone : programs::ExitFailed;
}

}  // namespace kalvex::kalvexd

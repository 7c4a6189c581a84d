// A process for the application in tests: whatever it asks of its world goes into one record, in
// order. Texts of the record are UTF-8.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "app/KalvexApp.h"
#include "platform/IniProfile.h"
#include "support/in_process.h"
#include "support/scratch_folder.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"

namespace kalvex::app {

using Record = std::vector<std::string>;

class FakeLoop final : public AppLoop {
  public:
    explicit FakeLoop(Record& record) : m_record(record) {}

    void Post(std::function<void()> work) override { posted.Post(std::move(work)); }
    bool SetTimer(int id, std::int64_t milliseconds, std::function<void()> work) override {
        m_record.push_back("timer " + std::to_string(id) + " " + std::to_string(milliseconds));
        if (refused.contains(id)) return false;
        timers[id] = std::move(work);
        return true;
    }
    void KillTimer(int id) override {
        if (timers.erase(id) != 0) m_record.push_back("no timer " + std::to_string(id));
    }
    void SetTickSource(TickSource* source) override {
        m_record.push_back(source != nullptr ? "ticks" : "no ticks");
        tickSource = source;
    }
    void Quit() override { m_record.push_back("quit"); }

    void Fire(int id) {
        const std::function<void()> work = timers.at(id);
        work();
    }

    platform::PostedWork posted;
    std::map<int, std::function<void()>> timers;
    std::set<int> refused;
    TickSource* tickSource = nullptr;

  private:
    Record& m_record;
};

// The profile of the machine has one key: AutoRC.
class FakeProfile final : public platform::Profile {
  public:
    explicit FakeProfile(Record& record) : m_record(record) {}

    void SetProfileConfigEx(std::string path) override {
        m_record.push_back("profile " + path.substr(path.rfind('/') + 1));
        m_file.SetProfileConfigEx(std::move(path));
    }
    bool IsReadable(std::string& error, const std::string& path) const override {
        return m_file.IsReadable(error, path);
    }
    std::string GetProfileStringEx(std::string_view section, std::string_view key,
                                   std::string_view fallback,
                                   const std::string& path) const override {
        if (path == GetCommonProfilePath()) {
            m_record.push_back("common " + std::string(key));
            return automaticClient.empty() ? std::string(fallback) : automaticClient;
        }
        m_record.push_back("read " + std::string(section) + "/" + text::ToUtf8(key));
        return m_file.GetProfileStringEx(section, key, fallback, path);
    }
    platform::ProfileEntries GetProfileSectionEx(std::string_view section,
                                                 const std::string& path) const override {
        if (path.empty()) m_record.push_back("read " + std::string(section));
        return m_file.GetProfileSectionEx(section, path);
    }
    bool WriteProfileStringEx(std::string_view section, std::optional<std::string_view> key,
                              std::optional<std::string_view> value,
                              const std::string& path) override {
        m_record.push_back("write " + std::string(section) + "/" + text::ToUtf8(key.value_or("")));
        return m_file.WriteProfileStringEx(section, key, value, path);
    }
    bool WriteProfileSectionEx(std::string_view section, const platform::ProfileEntries& entries,
                               const std::string& path) override {
        return m_file.WriteProfileSectionEx(section, entries, path);
    }
    bool EditProfileSectionEx(std::string_view section,
                              const std::function<bool(platform::ProfileEntries&)>& change,
                              const std::string& path) override {
        return m_file.EditProfileSectionEx(section, change, path);
    }
    const platform::Notice& GetWriteFault() const override { return m_file.GetWriteFault(); }
    std::string GetCommonProfilePath() const override { return commonPath; }

    std::string automaticClient;
    std::string commonPath = "/common";

  private:
    Record& m_record;
    platform::IniProfile m_file;
};

class FakeInstances final : public platform::Instances {
  public:
    explicit FakeInstances(Record& record) : m_record(record) {}

    bool SetPrimaryInstance(std::string_view name) override {
        m_record.push_back("primary " + std::string(name));
        return primary;
    }
    bool IsPrimaryInstance() const override { return primary; }
    bool LockInstance(std::string_view name, int instance, std::string& error) override {
        m_record.push_back("lock " + std::string(name) + " " + std::to_string(instance));
        error = lockError;
        return lockFree;
    }

    bool primary = true;
    bool lockFree = true;
    std::string lockError;

  private:
    Record& m_record;
};

class FakeLibrary : public AppLibrary {
  public:
    FakeLibrary(Record& record, std::string name) : m_record(record), m_name(std::move(name)) {}

    bool Start(std::string& error) override {
        m_record.push_back("start " + m_name);
        error = fault;
        return fault.empty();
    }
    void Stop() override { m_record.push_back("stop " + m_name); }

    std::string fault;

  protected:
    Record& m_record;

  private:
    std::string m_name;
};

// Carries messages within the process.
class FakeVantrel final : public FakeLibrary, public AppTransports {
  public:
    explicit FakeVantrel(Record& record) : FakeLibrary(record, "Vantrel") {}

    vantrel::TransportFactory& Factory() override { return network; }

    support::InProcessNetwork network;
};

class FakeUsers final : public platform::UserManager {
  public:
    explicit FakeUsers(Record& record) : m_record(record) {}

    bool RegisterUser(std::string_view name, std::string_view password) override {
        m_record.push_back("register " + text::ToUtf8(name) + "/" + text::ToUtf8(password));
        return accepted;
    }
    bool CheckRight(int needed) const override { return level >= needed; }
    std::string GetActiveUserName() const override { return {}; }
    std::string GetActiveUserDescription() const override { return {}; }
    std::string GetAccountName() const override { return "kalvex"; }

    bool accepted = true;
    int level = 0;

  private:
    Record& m_record;
};

class FakeWindow final : public MainWindow {
  public:
    explicit FakeWindow(Record& record) : m_record(record) {}

    bool AskYesNo(std::string_view text) override {
        if (whileAsked) whileAsked();
        return Answer("ask " + text::ToUtf8(text));
    }
    void ShowMessage(std::string_view text) override { Add("message " + text::ToUtf8(text)); }
    bool ShowCmdLineParamsDlg(std::string_view help) override {
        helpShown = help;
        return Answer("parameters");
    }
    bool Login() override { return Answer("login"); }
    bool SaveModified() override {
        Add("save");
        return saved;
    }
    void SetTitle(std::string_view title) override { Add("title " + text::ToUtf8(title)); }
    void Show() override { Add("show"); }
    void Hide() override { Add("hide"); }
    void SetStatusLine(std::string_view text) override { Add("status " + text::ToUtf8(text)); }
    void EnableCloseEntry(bool enabled) override { Add(enabled ? "may close" : "may not close"); }
    void ModifyTrayIcon(bool error, std::string_view title, std::string_view text) override {
        Add(std::string("icon ") + (error ? "error" : "normal") + "/" + text::ToUtf8(title) + "/" +
            text::ToUtf8(text));
    }
    void UpdateToolBar() override { Add("tool bar"); }
    void MinimiseFrame(engine::CKalvexDoc& document) override {
        Add("minimise " + text::ToUtf8(document.GetDocKey()));
    }
    void RefreshVariables(engine::CKalvexDoc& document) override {
        Add("variables " + text::ToUtf8(document.GetDocKey()));
    }

    std::function<void()> whileAsked;
    bool answer = true;
    bool saved = true;
    std::string helpShown;

  private:
    void Add(std::string line) { m_record.push_back(std::move(line)); }
    bool Answer(std::string line) {
        Add(std::move(line));
        return answer;
    }

    Record& m_record;
};

// The world, and the application when it has been started.
class AppTest : public testing::Test, protected LogListener {
  protected:
    ~AppTest() override;

    void PutScript(const std::string& name, const std::string& text) const {
        m_folder.Put(name, text::FromUtf8(text));
    }
    void PutProfile(const std::string& text, const std::string& name = "Kalvex.ini") const {
        m_folder.Put(name, text::FromUtf8(text));
    }

    // The process with these arguments begins; whether it goes on.
    bool Start(std::vector<std::string> arguments = {});
    CKalvexApp& App() { return *m_app; }

    // The record without the lines that begin with one of these words.
    Record Without(const std::vector<std::string>& words) const;
    // What the lines that begin with this word go on with.
    Record Those(const std::string& word) const;
    std::string FileText(const std::string& name) const { return m_folder.Get(name); }

    static constexpr std::int64_t kNow = 1710050400;  // 2024-03-10 07:00:00 in Warsaw

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    std::string m_workingDir = m_folder.Path();
    Record m_record;
    platform::VirtualClock m_clock{kNow};
    platform::Translator m_translator;
    FakeLoop m_loop{m_record};
    FakeProfile m_profile{m_record};
    platform::CCrypt m_crypt{m_folder.Path("Kalvex.key"), platform::KeyFile::ReadOnly};
    FakeUsers m_users{m_record};
    FakeInstances m_instances{m_record};
    FakeLibrary m_mordex{m_record, "Mordex"};
    FakeLibrary m_dorlin{m_record, "Dorlin"};
    FakeVantrel m_vantrel{m_record};
    FakeWindow m_window{m_record};
    bool m_hasWindow = false;
    bool m_service = false;
    bool m_canMirror = false;
    std::unique_ptr<CKalvexApp> m_app;

  private:
    void OnLogMessage(const LogMessage& message) override {
        m_record.push_back("log " + text::ToUtf8(message.text));
    }
};

}  // namespace kalvex::app

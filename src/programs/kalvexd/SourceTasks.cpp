#include "programs/kalvexd/SourceTasks.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iostream>
#include <optional>

#include "app/Configuration.h"
#include "platform/FileEdit.h"
#include "platform/FileTexts.h"
#include "platform/Files.h"
#include "platform/IniProfile.h"
#include "programs/PasswordPrompt.h"
#include "text/CodePage.h"

namespace kalvex::kalvexd {

namespace {

constexpr const char* kNotWritten =
    platform::Translatable("Nie można zapisać profilu lub jego klucza: %s");
constexpr const char* kNotWrittenSince =
    platform::Translatable("Nie można zapisać profilu %s (%s)");

int Fail(const platform::Translator& translator, const platform::Notice& notice) {
    std::cerr << platform::InWords(notice, translator) << '\n';
    return 1;
}

std::string KeyFileOf(const std::string& profile) {
    return (std::filesystem::path(profile).parent_path() / app::kKeyFileName).string();
}

// The sources of a profile. A key is made when one is needed, and only then.
class SourceBook {
  public:
    SourceBook(const std::string& path, platform::KeyFile use)
        : m_profile(path), m_crypt(KeyFileOf(path), use) {}

    std::vector<sources::CSourceDesc> Read() const {
        app::KalvexConfiguration configuration;
        m_store.ReadSources(configuration);
        return configuration.sources;
    }

    // With no other writer in between; see ConfigurationStore::EditSources.
    bool Edit(const std::function<bool(std::vector<sources::CSourceDesc>&)>& change) {
        return m_store.EditSources(change);
    }

    const platform::CCrypt& Crypt() const { return m_crypt; }
    bool IsReadable(std::string& error) const { return m_profile.IsReadable(error); }
    const platform::Notice& GetWriteFault() const { return m_profile.GetWriteFault(); }

  private:
    platform::IniProfile m_profile;
    const platform::CCrypt m_crypt;
    const platform::Paths m_paths{"/"};
    app::ConfigurationStore m_store{m_profile, m_crypt, m_paths, false};
};

// What a task works on.
struct Desk {
    SourceBook& book;
    const SourceOrder& order;
    const std::string& profile;
    const platform::Translator& translator;
};

bool HasLostPasswords(const std::vector<sources::CSourceDesc>& sources) {
    return std::ranges::any_of(sources, &sources::CSourceDesc::lost);
}

int FailLost(const Desk& desk) {
    return Fail(desk.translator,
                {platform::Translatable("Profil ma hasła, których nie otwiera klucz %s"),
                 {KeyFileOf(desk.profile)}});
}

int FailToWrite(const Desk& desk) {
    const platform::Notice& fault = desk.book.GetWriteFault();
    if (fault.polish != platform::kFolderLocked && fault.polish != platform::kBinary)
        return Fail(desk.translator, {kNotWritten, {desk.profile}});
    const std::string words = platform::InWords(fault, desk.translator);
    return Fail(desk.translator, {kNotWrittenSince, {desk.profile, words}});
}

// Changes the sources of which no password is lost; `fault` says why `change` refuses.
int EditSources(const Desk& desk,
                const std::function<bool(std::vector<sources::CSourceDesc>& sources)>& change,
                const platform::Notice& fault) {
    bool lost = false;
    bool refused = false;
    const bool written = desk.book.Edit([&](std::vector<sources::CSourceDesc>& sources) {
        lost = HasLostPasswords(sources);
        refused = !lost && !change(sources);
        return !lost && !refused;
    });
    if (lost) return FailLost(desk);
    if (refused) return Fail(desk.translator, fault);
    return written ? 0 : FailToWrite(desk);
}

auto FindSource(std::vector<sources::CSourceDesc>& sources, const std::string& name) {
    return std::ranges::find(sources, name, &sources::CSourceDesc::name);
}

// An engine text; false, which is told, when there is none.
bool Ask(const Desk& desk, std::string& password) {
    std::string typed;
    if (!programs::AskPassword(typed, desk.translator)) {
        Fail(desk.translator, {platform::Translatable("Nie podano hasła")});
        return false;
    }
    password = text::FromUtf8(typed);
    std::string again = text::ToUtf8(password);
    const bool fits = again == typed;
    platform::CCrypt::SecureEmptyString(typed);
    platform::CCrypt::SecureEmptyString(again);
    if (fits) return true;
    platform::CCrypt::SecureEmptyString(password);
    Fail(desk.translator, {platform::Translatable("Hasło ma znaki spoza Windows-1250")});
    return false;
}

int AddSource(const Desk& desk) {
    const SourceOrder& order = desk.order;
    if (!app::IsSourceField(order.name) || !app::IsSourceField(order.user)) {
        return Fail(desk.translator,
                    {platform::Translatable(
                        "Nazwa źródła i użytkownik nie mogą być puste ani zawierać przecinka")});
    }
    std::string password;
    if (!Ask(desk, password)) return 1;
    const std::string sealed = desk.book.Crypt().EncryptText(password);
    platform::CCrypt::SecureEmptyString(password);
    const auto add = [&](std::vector<sources::CSourceDesc>& sources) {
        auto found = FindSource(sources, order.name);
        if (found == sources.end()) found = sources.emplace(found);
        found->name = order.name;
        found->user = order.user;
        found->password = sealed;
        return true;
    };
    return EditSources(desk, add, {});
}

int ListSources(const Desk& desk) {
    std::string error;
    if (!desk.book.IsReadable(error)) {
        return Fail(desk.translator,
                    {platform::kUnreadableFile,
                     {desk.profile, platform::InWords({error.c_str()}, desk.translator)}});
    }
    for (const sources::CSourceDesc& source : desk.book.Read()) {
        std::cout << text::ToUtf8(source.name) << '\t' << text::ToUtf8(source.user) << '\n';
    }
    return 0;
}

int RemoveSource(const Desk& desk) {
    const auto remove = [&](std::vector<sources::CSourceDesc>& sources) {
        const auto found = FindSource(sources, desk.order.name);
        if (found == sources.end()) return false;
        sources.erase(found);
        return true;
    };
    return EditSources(desk, remove, {platform::Translatable("Brak źródła o tej nazwie")});
}

// In the form that scripts may have, of no source.
int Protect(const Desk& desk) {
    std::string password;
    if (!Ask(desk, password)) return 1;
    const std::optional<std::string> sealed = desk.book.Crypt().EncryptTextWithLabel({}, password);
    platform::CCrypt::SecureEmptyString(password);
    if (!sealed) {
        return Fail(desk.translator, {platform::Translatable("Nie można zapisać klucza: %s"),
                                      {KeyFileOf(desk.profile)}});
    }
    std::cout << *sealed << '\n';
    return 0;
}

struct TaskRow {
    SourceTask task;
    platform::KeyFile use;
    int (*run)(const Desk& desk);
};

constexpr TaskRow kTasks[] = {
    {SourceTask::Add, platform::KeyFile::MadeAtFirstUse, AddSource},
    {SourceTask::List, platform::KeyFile::ReadOnly, ListSources},
    {SourceTask::Remove, platform::KeyFile::MadeAtFirstUse, RemoveSource},
    {SourceTask::Protect, platform::KeyFile::MadeAtFirstUse, Protect},
};

}  // namespace

int RunSourceTask(const SourceOrder& order, const std::string& profile,
                  const platform::Translator& translator) {
    const TaskRow& row = *std::ranges::find(kTasks, order.task, &TaskRow::task);
    const platform::Notice open = platform::DescribeOpenSecret(KeyFileOf(profile));
    if (open && order.task != SourceTask::List) return Fail(translator, open);
    // A key that is missing beside protected passwords is not made, so this comes first.
    SourceBook reader(profile, platform::KeyFile::ReadOnly);
    const Desk desk{reader, order, profile, translator};
    const bool mayMakeKey = row.use == platform::KeyFile::MadeAtFirstUse;
    if (mayMakeKey && HasLostPasswords(reader.Read())) return FailLost(desk);
    SourceBook book(profile, row.use);
    return row.run(Desk{book, order, profile, translator});
}

}  // namespace kalvex::kalvexd

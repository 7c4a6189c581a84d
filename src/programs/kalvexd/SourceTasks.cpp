#include "programs/kalvexd/SourceTasks.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "app/Configuration.h"
#include "platform/IniProfile.h"
#include "programs/PasswordPrompt.h"
#include "text/CodePage.h"

namespace kalvex::kalvexd {

namespace {

constexpr const char* kNotWritten =
    platform::Translatable("Nie można zapisać profilu lub jego klucza: %s");

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

    // False when it cannot be read again as it was to be written.
    bool Write(const std::vector<sources::CSourceDesc>& sources) {
        app::KalvexConfiguration configuration;
        configuration.sources = sources;
        m_store.WriteSources(configuration);
        const auto same = [this](const sources::CSourceDesc& a, const sources::CSourceDesc& b) {
            return a.name == b.name && a.user == b.user &&
                   m_crypt.DecryptText(a.password) == m_crypt.DecryptText(b.password);
        };
        return std::ranges::equal(sources, Read(), same);
    }

    bool HasLostPasswords() const { return m_store.HasLostPasswords(); }
    std::string Protect(const std::string& password) const { return m_crypt.EncryptText(password); }

  private:
    platform::IniProfile m_profile;
    const platform::CCrypt m_crypt;
    const platform::Paths m_paths{"/"};
    app::ConfigurationStore m_store{m_profile, m_crypt, m_paths, false};
};

auto FindSource(std::vector<sources::CSourceDesc>& sources, const std::string& name) {
    return std::ranges::find(sources, name, &sources::CSourceDesc::name);
}

bool IsField(const std::string& text) {
    return !text.empty() && text.find_first_of(",\r\n") == std::string::npos;
}

int AddSource(SourceBook& book, const SourceOrder& order, const std::string& profile,
              const platform::Translator& translator) {
    if (!IsField(order.name) || !IsField(order.user)) {
        return Fail(translator,
                    {platform::Translatable(
                        "Nazwa źródła i użytkownik nie mogą być puste ani zawierać przecinka")});
    }
    std::string password;
    if (!programs::AskPassword(password, translator))
        return Fail(translator, {platform::Translatable("Nie podano hasła")});
    std::string engineText = text::FromUtf8(password);
    platform::CCrypt::SecureEmptyString(password);
    std::vector<sources::CSourceDesc> sources = book.Read();
    auto found = FindSource(sources, order.name);
    if (found == sources.end())
        found = sources.insert(found, sources::CSourceDesc{order.name, {}, {}});
    found->user = order.user;
    found->password = book.Protect(engineText);
    platform::CCrypt::SecureEmptyString(engineText);
    return book.Write(sources) ? 0 : Fail(translator, {kNotWritten, {profile}});
}

int ListSources(SourceBook& book, const SourceOrder&, const std::string&,
                const platform::Translator&) {
    for (const sources::CSourceDesc& source : book.Read()) {
        std::cout << text::ToUtf8(source.name) << '\t' << text::ToUtf8(source.user) << '\n';
    }
    return 0;
}

int RemoveSource(SourceBook& book, const SourceOrder& order, const std::string& profile,
                 const platform::Translator& translator) {
    std::vector<sources::CSourceDesc> sources = book.Read();
    const auto found = FindSource(sources, order.name);
    if (found == sources.end())
        return Fail(translator, {platform::Translatable("Brak źródła o tej nazwie")});
    sources.erase(found);
    return book.Write(sources) ? 0 : Fail(translator, {kNotWritten, {profile}});
}

struct TaskRow {
    SourceTask task;
    bool writes;
    int (*run)(SourceBook& book, const SourceOrder& order, const std::string& profile,
               const platform::Translator& translator);
};

constexpr TaskRow kTasks[] = {
    {SourceTask::Add, true, AddSource},
    {SourceTask::List, false, ListSources},
    {SourceTask::Remove, true, RemoveSource},
};

}  // namespace

int RunSourceTask(const SourceOrder& order, const std::string& profile,
                  const platform::Translator& translator) {
    const TaskRow& row = *std::ranges::find(kTasks, order.task, &TaskRow::task);
    if (row.writes && SourceBook(profile, platform::KeyFile::ReadOnly).HasLostPasswords()) {
        return Fail(translator,
                    {platform::Translatable("Profil ma hasła, których nie otwiera klucz %s"),
                     {KeyFileOf(profile)}});
    }
    SourceBook book(profile,
                    row.writes ? platform::KeyFile::MadeAtFirstUse : platform::KeyFile::ReadOnly);
    return row.run(book, order, profile, translator);
}

}  // namespace kalvex::kalvexd

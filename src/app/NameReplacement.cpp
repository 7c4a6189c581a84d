#include "app/NameReplacement.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <vector>

#include "app/Log.h"
#include "platform/Files.h"
#include "platform/ForeignText.h"
#include "platform/LogFile.h"
#include "platform/LogGap.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex::app {

namespace {

using platform::Translatable;

constexpr const char* kWarning =
    Translatable("Wszystkie zmiany globalne w skryptach zostaną wykonane nieodwracalnie.");
constexpr const char* kNotLoaded = Translatable("Błąd ładowania pliku zamiany zmiennych");
constexpr const char* kNoRecords = Translatable("Brak poprawnych definicji zamiany nazw");
constexpr const char* kRepeated = Translatable("Powtórzona pozycja w pliku %s@%s");
constexpr const char* kNoLog = Translatable("Nie można zapisać pliku rejestru %s (%s)");
constexpr const char* kHeader =
    Translatable("Polecenie zastąpienia nazw zmiennych w skryptach. Plik z definicją nazw - %s");
constexpr const char* kScript = Translatable("Skrypt: %s");
constexpr const char* kRenamed = Translatable("Zamiana nazwy zmiennej %s (źródło %s) na %s");
constexpr const char* kBadLine = Translatable("Skrypt: Błąd w \"%s\" w %s linii.");
constexpr const char* kNoChange = Translatable("\tBrak zmian");
constexpr const char* kNotOpened = Translatable("Nie można otworzyć pliku %s (%s)");
constexpr const char* kNotSaved = Translatable("Nie można zapisać pliku %s (%s)");
constexpr const char* kNotListed = Translatable("Nie można odczytać folderu %s (%s)");
constexpr const char* kDone = Translatable(
    "Zamiana nazw zmiennych została wykonana. Szczegółowe informacje znajdują się w pliku "
    "Kalvex_Replace.log");

constexpr const char* kLogName = "/Kalvex_Replace";
constexpr std::size_t kLogBytes = 10000000;

constexpr char kTab = '\t';
constexpr std::size_t kLeastFields = 3;
constexpr const char* kScriptEnding = ".KX";
constexpr const char* kRemote = "REMOTE";

// The place stays at the tab that ended a field, and one tab before the next is passed over, so
// that only a second tab makes an empty field.
std::optional<CNameReplaceRecord> ReadRecord(std::string_view line) {
    CNameReplaceRecord record;
    std::size_t count = 0;
    while (count < record.fields.size()) {
        if (line.size() > 1 && line[0] == kTab && line[1] == kTab) {
            line.remove_prefix(1);
        } else {
            if (line.starts_with(kTab)) line.remove_prefix(1);
            if (line.empty()) break;
            record.fields[count] = line.substr(0, line.find(kTab));
            line.remove_prefix(record.fields[count].size());
        }
        ++count;
    }
    if (count < kLeastFields) return std::nullopt;
    return record;
}

std::string KeyOf(std::string_view source, std::string_view variable) {
    return std::string(source) + '/' + std::string(variable);
}

struct RemoteLine {
    std::string name;
    std::string source;
    std::string variable;
    const char* quote = "";  // around the address

    bool IsComplete() const { return !name.empty() && !source.empty() && !variable.empty(); }
    std::string Written(std::string_view newVariable) const {
        return std::string(kRemote) + ' ' + name + ' ' + quote + source + '@' +
               std::string(newVariable) + quote + "\r\n";
    }
};

// As the statement reads it; nothing for a line of another one.
std::optional<RemoteLine> ReadRemoteLine(std::string_view line) {
    std::string normalised;
    engine::NormaliseLine(line, normalised);
    std::string_view rest = normalised;
    if (!text::EqualNoCase(text::NextToken(rest), kRemote)) return std::nullopt;
    RemoteLine remote;
    remote.name = text::NextToken(rest);
    std::string_view address = text::NextToken(rest);
    if (address.size() > 1 && address.starts_with('"')) {
        address = address.substr(1, address.size() - 2);
        remote.quote = "\"";
    }
    const std::size_t at = address.find('@');
    remote.source = address.substr(0, at);
    if (at != std::string_view::npos) remote.variable = address.substr(at + 1);
    return remote;
}

bool IsScript(const std::filesystem::path& path) {
    return text::EqualNoCase(path.extension().string(), kScriptEnding);
}

struct FolderContent {
    std::vector<std::string> folders;  // by name, each with its path
    std::vector<std::string> scripts;
};

FolderContent ListFolder(const std::string& folder, std::error_code& error) {
    FolderContent content;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::error_code unknown;
        if (entry->is_directory(unknown)) {
            if (!entry->is_symlink(unknown)) content.folders.push_back(entry->path().string());
        } else if (IsScript(entry->path())) {
            content.scripts.push_back(entry->path().string());
        }
    }
    std::ranges::sort(content.folders);
    std::ranges::sort(content.scripts);
    return content;
}

}  // namespace

bool NameList::Load(const std::string& path,
                    const std::function<void(const CNameReplaceRecord&)>& repeated) {
    m_records.clear();
    std::string content;
    std::string error;
    if (!platform::ReadWholeFile(path, content, error)) return false;
    engine::LineList lines;
    lines.SetText(content);
    for (int i = 0; i < lines.GetLineCount(); ++i) {
        const std::optional<CNameReplaceRecord> record = ReadRecord(lines.GetLine(i));
        if (!record) continue;
        const std::string key = KeyOf(record->fields[0], record->fields[1]);
        if (!m_records.try_emplace(key, *record).second) repeated(*record);
    }
    return true;
}

bool NameList::Lookup(std::string_view source, std::string_view variable, std::string& newVariable,
                      std::string& spare) {
    const auto found = m_records.find(KeyOf(source, variable));
    if (found == m_records.end()) return false;
    newVariable = found->second.fields[2];
    spare = found->second.fields[3];
    found->second.used = true;
    return true;
}

// The log of the renaming. A line that cannot be written is counted, and the count told as soon as
// it can be.
class NameReplacement::Journal {
  public:
    explicit Journal(const Parts& parts) : m_parts(parts), m_file(parts.clock) {
        m_file.KeepTabs();
        m_file.SetFile(parts.logFolder + kLogName, kLogBytes);
    }

    bool CanOpen(std::string& error) const { return m_file.CanOpen(error); }
    std::uint64_t GetLost() const { return m_lost; }

    void Write(const platform::Notice& notice) {
        if (m_lost > 0 &&
            m_file.Write(text::ToUtf8(platform::GapText(m_lost, m_parts.translator)))) {
            m_lost = 0;
        }
        const bool written =
            m_lost == 0 &&
            m_file.Write(notice ? platform::InWords(notice, m_parts.translator) : std::string());
        if (!written) ++m_lost;
    }

    // In the log as well.
    void WriteFault(const char* polish, const std::string& path, const std::string& error) {
        const platform::Notice notice{polish, {path, error}};
        Write(notice);
        m_parts.log.Log(text::FromUtf8(platform::InWords(notice, m_parts.translator)),
                        platform::LogErrors);
    }

  private:
    const Parts& m_parts;
    platform::CLogFile m_file;
    std::uint64_t m_lost = 0;
};

void NameReplacement::Tell(const platform::Notice& notice) {
    m_parts.window.ShowMessage(text::FromUtf8(platform::InWords(notice, m_parts.translator)));
}

void NameReplacement::Run() {
    Tell({kWarning});
    const auto tellRepeated = [this](const CNameReplaceRecord& record) {
        Tell({kRepeated, {text::ToUtf8(record.fields[0]), text::ToUtf8(record.fields[1])}});
    };
    const std::optional<std::string> file = m_parts.desk.AskForFile(
        m_parts.translator.Translate("Zmienne (*.txt)|*.txt|Wszystkie pliki (*.*)|*.*||"));
    if (!file || !m_names.Load(*file, tellRepeated)) return Tell({kNotLoaded});
    std::string content;
    std::string error;
    platform::ReadWholeFile(*file, content, error);
    if (const auto foreign = platform::DescribeForeignText(*file, content)) Tell(foreign);
    if (m_names.Count() == 0) return Tell({kNoRecords});
    const std::optional<std::string> folder = m_parts.desk.AskForFolder(
        m_parts.translator.Translate("Zmiany globalne w skryptach - wybór katalogu"));
    if (!folder) return;
    Journal journal(m_parts);
    if (!journal.CanOpen(error)) {
        return Tell({kNoLog, {m_parts.logFolder + kLogName + ".log", error}});
    }
    journal.Write({kHeader, {*file}});
    RenameBelow(*folder, journal);
    journal.Write({});
    if (journal.GetLost() > 0) {
        m_parts.window.ShowMessage(platform::GapText(journal.GetLost(), m_parts.translator));
    }
    Tell({kDone});
}

void NameReplacement::RenameBelow(const std::string& folder, Journal& journal) {
    std::error_code error;
    const FolderContent content = ListFolder(folder, error);
    if (error) journal.WriteFault(kNotListed, folder, error.message());
    for (const std::string& inner : content.folders) RenameBelow(inner, journal);
    for (const std::string& script : content.scripts) RenameIn(script, journal);
}

void NameReplacement::RenameIn(const std::string& path, Journal& journal) {
    std::string error;
    const std::unique_ptr<RenamedScript> script = m_parts.desk.Open(path, error);
    if (!script) return journal.WriteFault(kNotOpened, path, error);
    journal.Write({kScript, {path}});
    if (!RenameLines(script->Text(), path, journal)) journal.Write({kNoChange});
    if (!script->Save(error)) journal.WriteFault(kNotSaved, path, error);
}

bool NameReplacement::RenameLines(engine::ScriptText& text, const std::string& path,
                                  Journal& journal) {
    bool changed = false;
    for (int i = 0; i < text.GetLineCount(); ++i) {
        const std::optional<RemoteLine> remote = ReadRemoteLine(text.GetLine(i));
        if (!remote) continue;
        if (!remote->IsComplete()) {
            journal.Write({kBadLine, {path, std::to_string(i + 1)}});
            continue;
        }
        std::string newVariable;
        std::string spare;
        if (!m_names.Lookup(remote->source, remote->variable, newVariable, spare)) continue;
        text.InsertScriptText(i, remote->Written(newVariable), true);
        journal.Write({kRenamed,
                       {text::ToUtf8(remote->variable), text::ToUtf8(remote->source),
                        text::ToUtf8(newVariable)}});
        changed = true;
    }
    return changed;
}

}  // namespace kalvex::app

#include "server/Definitions.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <new>
#include <unordered_map>

#include "platform/Files.h"
#include "server/CsvTable.h"
#include "server/DefinitionKeys.h"
#include "server/TomlText.h"
#include "text/CodePage.h"
#include "text/Encoding.h"
#include "text/PatternMatch.h"
#include "text/ShellWord.h"
#include "value/ValueText.h"

namespace kalvex::server {

namespace {

constexpr vantrel::ListeningKeys kListeningKeys = {
    .group = "group",
    .address = "address",
    .certificate = "certificate",
    .certificateKey = "key",
    .authority = "authority",
    .plainText = "plain-text-allowed = true",
};

constexpr std::size_t kMostFaults = 100;
constexpr std::string_view kNetwork = "network";

struct Place {
    std::size_t file = 0;  // in the order in which the files are read
    int line = 0;
    int column = 0;  // 0: the line as a whole
};

// The configuration of the machine's service lies where a service does not write, and its store
// where its unit lets it.
constexpr const char* kMachineFolder = "/etc/sorvane";
constexpr const char* kMachineData = "/var/lib/sorvane";

bool IsOfTheMachine(const std::string& path) {
    std::error_code failed;
    const std::filesystem::path full = std::filesystem::absolute(path, failed);
    return !failed && full.lexically_normal().parent_path() == kMachineFolder;
}

// Reads one configuration into `m_out` and gathers what is wrong with it.
class Reader {
  public:
    Reader(const std::string& path, Definitions& out, bool listens)
        : m_folder(std::filesystem::path(path).parent_path().string()),
          m_out(out),
          m_listens(listens) {
        m_files.push_back(path);
        if (!IsOfTheMachine(path)) return;
        out.dataFolder = kMachineData;
        out.usersFile = std::string(kMachineData) + "/users.sqlite";
    }

    void Read();
    std::vector<std::string> Faults(const platform::Translator& translator);

  private:
    void Tell(Place place, std::string key, platform::Notice reason) {
        if (++m_faultCount <= kMostFaults) {
            m_faults.push_back({place, std::move(key), std::move(reason)});
        }
    }
    void TellOtherEncoding(Place place);
    bool IsOfBoundedSize(std::size_t file);  // told when it is not
    std::optional<std::vector<CsvRow>> RowsOf(const std::string& content, std::size_t file);
    void CheckColumns(const CsvRow& head, std::size_t file);
    std::string Below(const std::string& path) const {
        return (std::filesystem::path(m_folder) / path).string();
    }
    static int LineOf(const toml::node& node) { return static_cast<int>(node.source().begin.line); }

    template <class Target>
    void SetKey(Target& target, std::span<const DefinitionKey<Target>> keys, Place place,
                std::string_view prefix, std::string_view name, const std::string& utf8);
    template <class Target>
    void ReadTable(Target& target, std::span<const DefinitionKey<Target>> keys,
                   const toml::table& table, std::string_view section);
    const toml::array* TablesOf(const toml::node& node, std::string_view section);
    void ReadVariables(const toml::node& node);
    template <class Rule>
    void ReadRules(std::vector<Rule>& rules, std::span<const DefinitionKey<Rule>> keys,
                   const toml::node& node, std::string_view section);
    void ApplyRetention();
    void ReadFiles(const toml::node& node);
    void ReadCsvFile(const std::string& path, Place named);
    void AddVariable(VariableConfig variable, Place place, std::string_view prefix);
    Place PlaceOf(const std::string& key) const;
    void CheckNetwork();

    struct Entry {
        Place place;
        std::string key;
        platform::Notice reason;
    };

    std::string m_folder;
    std::vector<std::string> m_files;
    Definitions& m_out;
    bool m_listens;
    std::vector<Entry> m_faults;
    std::unordered_map<std::string, Place> m_names;
    std::unordered_map<std::string, int> m_lines;  // of the settings, by key
    std::size_t m_faultCount = 0;
};

// The text of a number or text; nothing for anything else.
std::optional<std::string> ScalarText(const toml::node& node) {
    if (const auto* text = node.as_string()) return text->get();
    if (const auto* number = node.as_integer()) return std::to_string(number->get());
    if (const auto* number = node.as_floating_point()) return value::FormatDouble(number->get());
    if (const auto* flag = node.as_boolean()) return flag->get() ? "1" : "0";
    return std::nullopt;
}

// The same for a list, its elements in lines.
std::optional<std::string> ListText(const toml::node& node) {
    const toml::array* list = node.as_array();
    if (list == nullptr) return std::nullopt;
    std::string text;
    for (const toml::node& element : *list) {
        const std::optional<std::string> line = ScalarText(element);
        if (!line || line->find('\n') != std::string::npos) return std::nullopt;
        if (&element != &list->front()) text += '\n';
        text += *line;
    }
    return text;
}

std::string Qualified(std::string_view prefix, std::string_view name) {
    std::string key(prefix);
    if (!key.empty()) key += '.';
    return key.append(name);
}

template <class Target>
void Reader::SetKey(Target& target, std::span<const DefinitionKey<Target>> keys, Place place,
                    std::string_view prefix, std::string_view name, const std::string& utf8) {
    const std::string text = text::FromUtf8(utf8);
    if (text::ToUtf8(text) != utf8) {
        Tell(place, Qualified(prefix, name),
             {platform::Translatable("znak spoza strony kodowej Windows-1250")});
        return;
    }
    platform::Notice reason = FindKey(keys, name)->set(target, name, text);
    if (reason) Tell(place, Qualified(prefix, name), std::move(reason));
}

template <class Target>
void Reader::ReadTable(Target& target, std::span<const DefinitionKey<Target>> keys,
                       const toml::table& table, std::string_view section) {
    for (const auto& [key, node] : table) {
        const Place place{0, LineOf(node)};
        m_lines[Qualified(section, key.str())] = place.line;
        const DefinitionKey<Target>* known = FindKey(keys, key.str());
        if (known == nullptr) {
            Tell(place, Qualified(section, key.str()), {platform::Translatable("nieznany klucz")});
            continue;
        }
        const std::optional<std::string> text = known->list ? ListText(node) : ScalarText(node);
        if (text) {
            SetKey(target, keys, place, section, key.str(), *text);
        } else {
            Tell(place, Qualified(section, key.str()),
                 {known->list ? platform::Translatable("oczekiwano listy tekstów")
                              : platform::Translatable("oczekiwano tekstu albo liczby")});
        }
    }
}

const toml::array* Reader::TablesOf(const toml::node& node, std::string_view section) {
    const toml::array* tables = node.as_array();
    if (tables != nullptr &&
        std::all_of(tables->begin(), tables->end(),
                    [](const toml::node& entry) { return entry.is_table(); })) {
        return tables;
    }
    Tell({0, LineOf(node)}, std::string(section),
         {platform::Translatable("oczekiwano sekcji [[%s]]"), {std::string(section)}});
    return nullptr;
}

void Reader::AddVariable(VariableConfig variable, Place place, std::string_view prefix) {
    std::string key;
    platform::Notice reason = CheckVariable(variable, key);
    if (reason) {
        Tell(place, Qualified(prefix, key), std::move(reason));
        return;
    }
    const auto [known, isNew] = m_names.emplace(variable.name, place);
    if (!isNew) {
        Tell(place, Qualified(prefix, "name"),
             {platform::Translatable("zmienna %s jest już w %s:%d"),
              {text::ToUtf8(variable.name), m_files[known->second.file],
               std::to_string(known->second.line)}});
        return;
    }
    m_out.variables.push_back(std::move(variable));
}

void Reader::ReadVariables(const toml::node& node) {
    const toml::array* tables = TablesOf(node, "variable");
    if (tables == nullptr) return;
    for (const toml::node& entry : *tables) {
        const std::size_t faults = m_faultCount;
        VariableConfig variable;
        ReadTable(variable, VariableKeys(), *entry.as_table(), "variable");
        if (m_faultCount == faults) {
            AddVariable(std::move(variable), {0, LineOf(entry)}, "variable");
        }
    }
}

template <class Rule>
void Reader::ReadRules(std::vector<Rule>& rules, std::span<const DefinitionKey<Rule>> keys,
                       const toml::node& node, std::string_view section) {
    const toml::array* tables = TablesOf(node, section);
    if (tables == nullptr) return;
    for (const toml::node& entry : *tables) {
        ReadTable(rules.emplace_back(), keys, *entry.as_table(), section);
    }
}

void Reader::ApplyRetention() {
    for (VariableConfig& variable : m_out.variables) {
        const auto rule = std::ranges::find_if(m_out.retention, [&](const RetentionRule& each) {
            return text::CompareWithPattern(
                variable.name, each.variables,
                text::PatternOption::Wildcards | text::PatternOption::Whole);
        });
        const bool fits = rule != m_out.retention.end();
        variable.keepDays = fits ? rule->keepDays : m_out.keepDays;
        variable.reportsKeepDays = fits ? rule->reportsKeepDays : 0;
    }
}

void Reader::ReadFiles(const toml::node& node) {
    const toml::array* tables = TablesOf(node, "variables");
    if (tables == nullptr) return;
    for (const toml::node& entry : *tables) {
        std::string file;
        for (const auto& [key, value] : *entry.as_table()) {
            const Place place{0, LineOf(value)};
            if (key.str() != "file") {
                Tell(place, Qualified("variables", key.str()),
                     {platform::Translatable("nieznany klucz")});
            } else if (const auto* text = value.as_string()) {
                file = text->get();
            } else {
                Tell(place, "variables.file", {platform::Translatable("oczekiwano ścieżki")});
            }
        }
        if (!file.empty()) ReadCsvFile(Below(file), {0, LineOf(entry)});
    }
}

void Reader::TellOtherEncoding(Place place) {
    Tell(place, "",
         {platform::Translatable("plik nie jest w UTF-8, wygląda na Windows-1250; zamieni go "
                                 "polecenie: kalvex-convert --to utf-8 %s"),
          {text::ShellWord(m_files[place.file])}});
}

bool Reader::IsOfBoundedSize(std::size_t file) {
    std::error_code failed;
    const std::uintmax_t size = std::filesystem::file_size(m_files[file], failed);
    if (failed || size <= kLongestDefinitionFile) return true;
    Tell({file}, "",
         {platform::Translatable("plik większy niż %s MiB"),
          {std::to_string(kLongestDefinitionFile >> 20)}});
    return false;
}

void Reader::CheckColumns(const CsvRow& head, std::size_t file) {
    const Place place{file, head.line};
    if (head.cells.size() > VariableKeys().size()) {
        Tell(place, "", {platform::Translatable("więcej kolumn niż kluczy zmiennej")});
        return;
    }
    for (const std::string& column : head.cells) {
        if (FindKey(VariableKeys(), column) == nullptr) {
            Tell(place, column, {platform::Translatable("nieznana kolumna")});
        } else if (std::count(head.cells.begin(), head.cells.end(), column) > 1) {
            Tell(place, column, {platform::Translatable("kolumna występuje więcej niż raz")});
        }
    }
}

// Nothing for a file that has no variables or is refused as a whole.
std::optional<std::vector<CsvRow>> Reader::RowsOf(const std::string& content, std::size_t file) {
    const CsvBounds bounds{1 + vantrel::kMostVariables, VariableKeys().size()};
    std::vector<CsvRow> rows = ReadCsv(content, bounds);
    if (rows.empty()) return std::nullopt;
    const auto foreign = std::find_if(rows.begin(), rows.end(), [](const CsvRow& row) {
        return !std::all_of(row.cells.begin(), row.cells.end(), text::IsUtf8);
    });
    if (foreign != rows.end()) {
        TellOtherEncoding({file, foreign->line});
        return std::nullopt;
    }
    if (rows.size() > bounds.rows) {
        Tell({file, rows.back().line}, "",
             {platform::Translatable("więcej zmiennych niż %s"),
              {std::to_string(vantrel::kMostVariables)}});
        return std::nullopt;
    }
    const std::size_t before = m_faultCount;
    CheckColumns(rows.front(), file);
    if (m_faultCount != before) return std::nullopt;
    return rows;
}

void Reader::ReadCsvFile(const std::string& path, Place named) {
    const std::size_t file = m_files.size();
    m_files.push_back(path);
    if (!IsOfBoundedSize(file)) return;
    std::string content;
    std::string error;
    if (!platform::ReadWholeFile(path, content, error)) {
        Tell(named, "variables.file", {"%s: %s", {path, error}});
        return;
    }
    const std::optional<std::vector<CsvRow>> read = RowsOf(content, file);
    if (!read) return;
    const std::vector<CsvRow>& rows = *read;
    const CsvRow& head = rows.front();
    for (std::size_t index = 1; index < rows.size(); ++index) {
        const CsvRow& row = rows[index];
        const Place place{file, row.line};
        const std::size_t faults = m_faultCount;
        if (!row.closed) {
            Tell(place, head.cells[std::min(row.cells.size(), head.cells.size()) - 1],
                 {platform::Translatable("niezamknięty cudzysłów")});
            continue;
        }
        if (row.cells.size() > head.cells.size()) {
            Tell(place, "", {platform::Translatable("więcej komórek niż kolumn")});
            continue;
        }
        VariableConfig variable;
        for (std::size_t cell = 0; cell < row.cells.size(); ++cell) {
            if (row.cells[cell].empty()) continue;
            SetKey(variable, VariableKeys(), place, "", head.cells[cell], row.cells[cell]);
        }
        if (m_faultCount == faults) AddVariable(std::move(variable), place, "");
    }
}

Place Reader::PlaceOf(const std::string& key) const {
    const auto found = m_lines.find(key);
    return {0, found == m_lines.end() ? 0 : found->second};
}

void Reader::CheckNetwork() {
    std::string name;
    platform::Notice reason = vantrel::CheckListening(m_out.listening, kListeningKeys, name);
    if (reason) {
        const std::string key = Qualified(kNetwork, name);
        Tell(PlaceOf(key), key, std::move(reason));
    }
    struct Row {
        const char* key;
        std::string& path;
        bool secret = false;
    };
    const Row files[] = {{"network.certificate", m_out.listening.certificate},
                         {"network.key", m_out.listening.certificateKey, true},
                         {"network.authority", m_out.listening.authority}};
    for (const auto& file : files) {
        if (file.path.empty()) continue;
        file.path = Below(file.path);
        std::string content;
        std::string error;
        platform::Notice fault;
        if (!platform::ReadWholeFile(file.path, content, error)) {
            fault = {"%s: %s", {file.path, error}};
        } else if (file.secret) {
            fault = platform::DescribeOpenSecret(file.path);
        }
        if (fault) Tell(PlaceOf(file.key), file.key, std::move(fault));
    }
}

void Reader::Read() {
    if (!IsOfBoundedSize(0)) return;
    std::string content;
    std::string error;
    if (!platform::ReadWholeFile(m_files.front(), content, error)) {
        Tell({}, "", {"%s", {error}});
        return;
    }
    if (const std::optional<int> line = text::FindOtherLine(content)) {
        TellOtherEncoding({0, *line});
        return;
    }
    TomlFault fault;
    const std::optional<toml::table> parsed = ParseToml(content, fault);
    if (!parsed) {
        Tell({0, fault.line, fault.column}, "", std::move(fault.reason));
        return;
    }
    for (const auto& [key, node] : *parsed) {
        const std::string_view name = key.str();
        if (name == kNetwork && !m_listens) continue;
        const auto sections = DefinitionSections();
        const auto section =
            std::find_if(sections.begin(), sections.end(),
                         [name](const DefinitionSection& known) { return known.name == name; });
        if (section != sections.end()) {
            if (const toml::table* table = node.as_table()) {
                ReadTable(m_out, section->keys, *table, name);
            } else {
                Tell({0, LineOf(node)}, std::string(name),
                     {platform::Translatable("oczekiwano sekcji [%s]"), {std::string(name)}});
            }
        } else if (name == "access") {
            ReadRules(m_out.access, AccessKeys(), node, name);
        } else if (name == "retention") {
            ReadRules(m_out.retention, RetentionKeys(), node, name);
        } else if (name == "variable") {
            ReadVariables(node);
        } else if (name == "variables") {
            ReadFiles(node);
        } else {
            Tell({0, LineOf(node)}, std::string(name), {platform::Translatable("nieznana sekcja")});
        }
    }
    ApplyRetention();
    m_out.dataFolder = Below(m_out.dataFolder);
    m_out.usersFile = Below(m_out.usersFile);
    m_out.files = m_files;
    if (m_listens) CheckNetwork();
    if (m_out.variables.size() > static_cast<std::size_t>(m_out.maxVariables)) {
        Tell({0, 0}, "",
             {platform::Translatable("zmiennych jest %s, a server.variables dopuszcza %s"),
              {std::to_string(m_out.variables.size()), std::to_string(m_out.maxVariables)}});
    }
}

std::vector<std::string> Reader::Faults(const platform::Translator& translator) {
    std::stable_sort(m_faults.begin(), m_faults.end(), [](const Entry& a, const Entry& b) {
        return a.place.file != b.place.file ? a.place.file < b.place.file
                                            : a.place.line < b.place.line;
    });
    std::vector<std::string> lines;
    for (const Entry& fault : m_faults) {
        std::string line = m_files[fault.place.file] + ":";
        for (const int number : {fault.place.line, fault.place.column}) {
            if (number > 0) line += std::to_string(number) + ":";
        }
        if (!fault.key.empty()) line += " " + fault.key + ":";
        lines.push_back(line + " " + platform::InWords(fault.reason, translator));
    }
    if (m_faultCount > kMostFaults) {
        const platform::Notice rest{platform::Translatable("dalszych błędów: %s"),
                                    {std::to_string(m_faultCount - kMostFaults)}};
        lines.push_back(platform::InWords(rest, translator));
    }
    return lines;
}

bool Load(const std::string& path, bool listens, const platform::Translator& translator,
          Definitions& out, std::vector<std::string>& errors) {
    out = Definitions();
    Reader reader(path, out, listens);
    try {
        reader.Read();
        errors = reader.Faults(translator);
    } catch (const std::bad_alloc&) {
        const platform::Notice reason{platform::Translatable("brak pamięci")};
        errors = {path + ": " + platform::InWords(reason, translator)};
    }
    return errors.empty();
}

}  // namespace

value::CVal InitialValue(const VariableConfig& config) {
    value::CVal value(config.initial);
    return !config.initial.empty() && value.Cast(config.type) ? value : value::CVal();
}

bool IsBounded(const VariableConfig& config, double number) {
    return std::isfinite(number) && (!config.minimum || number >= *config.minimum) &&
           (!config.maximum || number <= *config.maximum);
}

std::string StorePath(const Definitions& definitions) {
    return definitions.dataFolder + "/store.sqlite";
}

bool LoadDefinitions(const std::string& path, const platform::Translator& translator,
                     Definitions& out, std::vector<std::string>& errors) {
    return Load(path, true, translator, out, errors);
}

bool LoadVariables(const std::string& path, const platform::Translator& translator,
                   Definitions& out, std::vector<std::string>& errors) {
    return Load(path, false, translator, out, errors);
}

}  // namespace kalvex::server

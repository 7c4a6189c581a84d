#include "programs/sorvaned/Import.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>

#include "platform/UserStore.h"
#include "platform/posix/RegularFile.h"
#include "programs/ShownValues.h"
#include "programs/sorvaned/ImportReading.h"
#include "programs/sorvaned/ImportTable.h"
#include "programs/sorvaned/ImportWriting.h"
#include "programs/sorvaned/Printer.h"
#include "server/CsvReader.h"
#include "server/StoreReader.h"
#include "text/CodePage.h"

namespace kalvex::sorvaned {

namespace {

constexpr const char* kNoUser = platform::Translatable("Brak użytkownika o tej nazwie");
constexpr const char* kDouble = platform::Translatable("ta sama wartość stoi już w wierszu %d");
constexpr const char* kNothingWritten =
    platform::Translatable("%s: błędnych wierszy %d, niczego nie zapisano");

struct Counts {
    std::size_t fresh = 0;
    std::size_t changed = 0;
    std::size_t unchanged = 0;
};

// What the store makes of the row: reports are a user's then.
bool IsUnchanged(const value::CVal& standing, const value::CVal& value, value::ValueKind kind) {
    const std::uint16_t added = value::IsReport(kind) ? value::Status::SetByUser : 0;
    const auto isNone = [](const value::CVal& one) {
        return one.GetType() == value::ValueType::None;
    };
    return (standing.GetStatus() | added) == value.GetStatus() &&
           standing.IsText() == value.IsText() && isNone(standing) == isNone(value) &&
           standing == value;
}

class ImportRun {
  public:
    ImportRun(const server::Definitions& definitions, const SorvanedOptions& options,
              const platform::Translator& translator)
        : m_definitions(definitions), m_options(options), m_translator(translator) {}

    int Run();

  private:
    // False, told, when there is no use in going on.
    bool FindUser();
    bool OpenAll();
    bool ReadAll();
    bool TakeRow(const server::CsvRow& cells, const ImportReading& reading);
    std::string Summary() const;

    int Fail(const std::string& line) const {
        std::cerr << line << '\n';
        return programs::ExitFailed;
    }
    int Fail(const platform::Notice& notice) const {
        return Fail(platform::InWords(notice, m_translator));
    }
    void TellFault(int line, const platform::Notice& fault);

    const server::Definitions& m_definitions;
    const SorvanedOptions& m_options;
    const platform::Translator& m_translator;
    platform::UserRecord m_user;
    server::StoreReader m_store;
    std::map<std::string, server::VariableId> m_stored;
    ImportTable m_table;
    std::map<SeriesKey, Counts> m_counts;
    std::size_t m_faults = 0;
};

bool ImportRun::FindUser() {
    m_user.name = platform::kNobody;
    if (m_options.asUser.empty()) return true;
    platform::UserStore users;
    std::string error;
    if (!users.Open(m_definitions.usersFile, error)) {
        Fail(text::ToUtf8(m_translator.Translate(text::ToUtf8(error).c_str())));
        return false;
    }
    const auto found = users.Find(text::FromUtf8(m_options.asUser));
    if (found) m_user = *found;
    if (!found) Fail(platform::Notice{kNoUser});
    return found.has_value();
}

bool ImportRun::OpenAll() {
    const std::string path = server::StorePath(m_definitions);
    platform::Notice fault;
    if (!m_store.Open(path, fault)) {
        Fail(fault);
        return false;
    }
    m_stored = m_store.Variables();
    if (!m_store.Fault().empty()) {
        Fail(path + ": " + m_store.Fault());
        return false;
    }
    const int file = platform::OpenRegularFile(m_options.file, O_RDONLY);
    if (file < 0) {
        Fail(m_options.file + ": " + platform::FileFault(errno));
        return false;
    }
    ::close(file);
    if (m_table.Open()) return true;
    Fail(m_table.GetFault());
    return false;
}

void ImportRun::TellFault(int line, const platform::Notice& fault) {
    ++m_faults;
    Fail(m_options.file + ':' + std::to_string(line) + ": " +
         platform::InWords(fault, m_translator));
}

bool ImportRun::TakeRow(const server::CsvRow& cells, const ImportReading& reading) {
    ImportedRow row;
    if (const platform::Notice fault = reading.Take(cells, row)) {
        TellFault(cells.line, fault);
        return true;
    }
    const auto known = m_stored.find(row.variable->name);
    std::optional<value::CVal> standing;
    if (known != m_stored.end()) {
        standing = m_store.ValueAt({known->second, row.kind, row.value.GetTime()});
        if (!m_store.Fault().empty()) {
            Fail(server::StorePath(m_definitions) + ": " + m_store.Fault());
            return false;
        }
    }
    const bool isSame = standing && IsUnchanged(*standing, row.value, row.kind);
    const SeriesKey series{row.variable - m_definitions.variables.data(), row.kind};
    std::optional<int> before;
    if (!m_table.Add(series, row.value, cells.line, !isSame, before)) {
        Fail(m_table.GetFault());
        return false;
    }
    if (before) {
        TellFault(cells.line, {kDouble, {std::to_string(*before)}});
        return true;
    }
    Counts& counts = m_counts[series];
    ++(isSame ? counts.unchanged : standing ? counts.changed : counts.fresh);
    return true;
}

bool ImportRun::ReadAll() {
    std::ifstream stream(m_options.file, std::ios::binary);
    server::CsvReader reader(stream, kColumnCount);
    ImportReading reading(m_definitions, m_user);
    server::CsvRow row;
    row.line = 1;
    if (!reader.Next(row)) row.cells.clear();
    if (const platform::Notice fault = reading.TakeHead(row)) {
        TellFault(row.line, fault);
        return true;
    }
    while (reader.Next(row)) {
        if (!TakeRow(row, reading)) return false;
    }
    if (!stream.bad()) return true;
    Fail(m_options.file + ": " + platform::FileFault(EIO));
    return false;
}

std::string ImportRun::Summary() const {
    std::string summary;
    for (const auto& [series, counts] : m_counts) {
        const std::string& name =
            m_definitions.variables[static_cast<std::size_t>(series.variable)].name;
        const std::string kind(value::WordOfKind(series.kind));
        if (m_options.json) {
            const nlohmann::ordered_json object = {{"variable", text::ToUtf8(name)},
                                                   {"kind", kind},
                                                   {"new", counts.fresh},
                                                   {"changed", counts.changed},
                                                   {"unchanged", counts.unchanged}};
            summary += object.dump() + '\n';
            continue;
        }
        summary += programs::ShownText(name) + '\t' + kind;
        for (const std::size_t count : {counts.fresh, counts.changed, counts.unchanged}) {
            summary += '\t' + std::to_string(count);
        }
        summary += '\n';
    }
    return summary;
}

int ImportRun::Run() {
    if (!FindUser() || !OpenAll()) return programs::ExitFailed;
    Caller caller(m_definitions, m_translator);
    if (m_options.write && !caller.TakeLogin(m_options.asUser)) return programs::ExitFailed;
    if (!ReadAll()) return programs::ExitFailed;
    if (m_options.write && m_faults > 0) {
        return Fail({kNothingWritten, {m_options.file, std::to_string(m_faults)}});
    }
    if (m_options.write && !WriteImported(caller, m_table, m_definitions)) {
        return programs::ExitFailed;
    }
    Printer printer;
    printer.Put(Summary());
    const int status = printer.End(m_translator);
    return m_faults > 0 ? programs::ExitFailed : status;
}

}  // namespace

int Import(const server::Definitions& definitions, const SorvanedOptions& options,
           const platform::Translator& translator) {
    return ImportRun(definitions, options, translator).Run();
}

}  // namespace kalvex::sorvaned

// What the rows of a file that is imported mean, and what is wrong with them. Main thread.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Translator.h"
#include "platform/UserDirectory.h"
#include "programs/sorvaned/StoredRows.h"
#include "server/CsvTable.h"
#include "server/Definitions.h"
#include "server/Rights.h"

namespace kalvex::sorvaned {

inline constexpr std::size_t kColumnCount = std::size(kColumns);

// As it will stand in the store.
struct ImportedRow {
    const server::VariableConfig* variable = nullptr;
    value::ValueKind kind = value::KindNone;
    value::CVal value;  // with its time
};

class ImportReading {
  public:
    // The definitions outlive it. The user comes from this machine.
    ImportReading(const server::Definitions& definitions, const platform::UserRecord& user);

    // The first row, which names the columns in any order. What is wrong with it, or nothing.
    platform::Notice TakeHead(const server::CsvRow& head);
    // The same for each further row.
    platform::Notice Take(const server::CsvRow& cells, ImportedRow& row) const;

  private:
    struct Known {
        const server::VariableConfig* config;
        server::Rights::Granted granted;
    };

    platform::Notice TakeTime(const std::string& cell, ImportedRow& row) const;
    const Known* Find(const std::string& name) const;

    std::unordered_map<std::string, Known> m_variables;  // by name, an engine text
    std::array<std::size_t, kColumnCount> m_places{};    // of the columns
};

}  // namespace kalvex::sorvaned

// What a data server is told to be: its settings, its variables, who may do what with them. Read
// from one TOML file and the CSV files that it names; docs/data-server.md is the reference.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Translator.h"
#include "server/Alarms.h"
#include "server/ReportComputing.h"
#include "server/Signals.h"
#include "value/Value.h"
#include "vantrel/Attributes.h"
#include "vantrel/Listening.h"
#include "vantrel/LoginDesk.h"
#include "vantrel/Messages.h"

namespace kalvex::server {

// Of the text of an attribute or a value, in bytes.
inline constexpr std::size_t kLongestText = 65535;

// Of the configuration and of each CSV file, in bytes.
inline constexpr std::uintmax_t kLongestDefinitionFile = std::uintmax_t{64} << 20;

struct VariableConfig {
    std::string name;
    std::uint16_t type = value::ValueType::Double;
    std::map<std::string, std::string> attributes;  // what clients are told: "de", "nd", ...
    std::optional<double> minimum;
    std::optional<double> maximum;
    unsigned archive = 0;  // ArchiveBit
    unsigned reports = 0;  // ReportBit
    ReportRule rule = ReportRule::Mean;
    std::string initial;  // the text of the value that a new variable has; empty: none
    std::optional<Signal> signal;
    std::shared_ptr<AlarmLimits> alarms;  // null: none of their keys is given
    // What the retention that counts for it says, in days; 0 keeps all.
    std::int64_t keepDays = 0;
    std::int64_t reportsKeepDays = 0;
};

// What a new variable has: of its type, or of none where the definition gives no value. Its time is
// 0.
value::CVal InitialValue(const VariableConfig& config);

// Finite, and not outside min and max.
bool IsBounded(const VariableConfig& config, double number);

struct AccessRule {
    std::string variables = "*";  // a pattern
    std::string read = "0";
    std::string write = "50";
    std::string acknowledge = "50";
};

struct RetentionRule {
    std::string variables = "*";  // a pattern
    std::int64_t keepDays = 0;    // of archive values; 0 keeps all
    std::int64_t reportsKeepDays = 0;
};

// The highest that `clients` can be; that of `variables` is kMostVariables.
inline constexpr std::int64_t kMostClients = 10'000;

struct Definitions {
    std::string name = "sorvaned";
    std::string dataFolder = "data";              // these two are system paths (UTF-8), made
    std::string usersFile = "data/users.sqlite";  // relative to the configuration file
    vantrel::NobodyAccess nobody = vantrel::NobodyAccess::Local;
    std::string logRight = "100";
    std::int64_t maxClients = 100;
    std::int64_t maxVariables = 100000;
    std::int64_t savePeriod = 10;  // seconds
    std::int64_t freeSpace = 512;  // MiB; less on the disk of the data is told. 0: never
    std::int64_t archivePeriod = 60;
    std::int64_t keepDays = 0;
    std::int64_t dayStart = 0;
    std::vector<value::ValueKind> automatic;  // report kinds, each once, the shorter first
    vantrel::Listening listening;             // paths as above
    std::vector<AccessRule> access;
    std::vector<RetentionRule> retention;  // the first that fits counts, else keepDays
    std::vector<VariableConfig> variables;
    std::vector<std::string> files;  // what it was read from, the configuration itself first
};

// Where the store lies; a system path (UTF-8).
std::string StorePath(const Definitions& definitions);

// Reads the configuration. When anything is wrong the answer is false and `errors` holds a line for
// each fault, in UTF-8: file, line, column of what is no TOML, key if there is one, reason; `out`
// is then undefined. After a hundred faults the rest is not told.
bool LoadDefinitions(const std::string& path, const platform::Translator& translator,
                     Definitions& out, std::vector<std::string>& errors);

// The same for who wants the name and the variables alone, on a machine that need not be the
// server's: the section [network] is passed over.
bool LoadVariables(const std::string& path, const platform::Translator& translator,
                   Definitions& out, std::vector<std::string>& errors);

// Puts back into `next` what cannot change while the server runs. The answer names the keys whose
// change has to wait for the next start.
std::vector<std::string> KeepUntilNextStart(const Definitions& current, Definitions& next);

}  // namespace kalvex::server

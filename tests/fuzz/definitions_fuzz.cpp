// The configuration of a data server with a CSV file that it names. An input is a row of fields:
// the first kind is the configuration, any other the CSV file.
#include <algorithm>
#include <set>

#include "fuzz/WireFields.h"
#include "fuzz/fuzz.h"
#include "server/Definitions.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"

namespace kalvex::fuzz {

namespace {

constexpr std::uint64_t kConfiguration = (1 << 3) | 2;
constexpr std::uint64_t kTable = (2 << 3) | 2;

constexpr const char* kWhole = R"(# komentarz
[server]
name = "Stacja"
clients = 5
variables = 7
[network]
address = "127.0.0.1:4300"
plain-text-allowed = true
[archive]
period = 1
[reports]
day-start = 6
automatic = ["month", "hour"]
[[access]]
variables = "Z*"
read = 'gaz'
[[variables]]
file = "a.csv"
[[variable]]
name = "Z1.P"
type = "int"
min = -5.5e3
max = 0xFF
signal = "sine mean=1 amplitude=2 period=3"
value = """7"""
)";

constexpr const char* kSyntax[] = {
    "[[",
    "[=]",
    "[a.[b]]",
    "a = [}",
    "a.b.c = 1",
    "a = {b.c = [1, 2.5, {}], 'd' = \"\\u0142\"}",
    "a = 1979-05-27T07:32:00.5-07:00",
    "a = [inf, nan, 0b1, 0o7, 1_000, true]",
    "\xEF\xBB\xBF[ \"a\" . 'b' ]\n\"\"\"x\"\"\" = '''y'''''",
    "a = \"ł\" ł",
    "a = 1\r\nb\r",
};

void Check(const std::string& path, const server::Definitions& definitions,
           const std::vector<std::string>& errors) {
    for (const std::string& error : errors) {
        Demand(!error.starts_with(path + ": błąd"), "a syntax error has a place");
        Demand(text::IsUtf8(error), "a fault is UTF-8");
    }
    if (!errors.empty()) return;
    std::set<std::string> names;
    for (const server::VariableConfig& variable : definitions.variables) {
        Demand(names.insert(variable.name).second, "a name is given once");
        const value::CVal initial = server::InitialValue(variable);
        Demand(variable.initial.empty() || initial.GetType() == variable.type,
               "a first value is of the type");
    }
    Demand(names.size() <= static_cast<std::size_t>(definitions.maxVariables),
           "no more variables than there may be");
}

}  // namespace

std::vector<std::string> FuzzCorpus() {
    const std::string table =
        "name;type;min;signal\nZ1.T;double;\"0\";\n# ł\n\"Z\"\"2\";text;;\nZ3;int;;ramp from=0 "
        "to=9 "
        "period=5\n";
    std::vector<std::string> corpus{"", JoinFields({{kConfiguration, kWhole}, {kTable, table}})};
    for (const char* syntax : kSyntax) corpus.push_back(JoinFields({{kConfiguration, syntax}}));
    return corpus;
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kalvex::support::ScratchFolder folder;
    static const kalvex::platform::Translator translator;
    std::vector<kalvex::fuzz::WireField> fields;
    kalvex::fuzz::SplitFields(kalvex::fuzz::Bytes(data, size), fields);
    std::string configuration;
    std::string table;
    for (const kalvex::fuzz::WireField& field : fields) {
        (field.tag == kalvex::fuzz::kConfiguration ? configuration : table) += field.content;
    }
    const std::string path = folder.Put("plant.toml", configuration);
    folder.Put("a.csv", table);
    kalvex::server::Definitions definitions;
    std::vector<std::string> errors;
    kalvex::fuzz::Demand(LoadDefinitions(path, translator, definitions, errors) == errors.empty(),
                         "what is refused has a reason");
    kalvex::fuzz::Check(path, definitions, errors);
    return 0;
}

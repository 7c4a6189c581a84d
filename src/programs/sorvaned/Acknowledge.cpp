#include "programs/sorvaned/Acknowledge.h"

#include <nlohmann/json.hpp>
#include <set>

#include "programs/ShownValues.h"
#include "programs/sorvaned/Caller.h"
#include "programs/sorvaned/Printer.h"
#include "server/StoreReader.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"
#include "vantrel/OrderWords.h"

namespace kalvex::sorvaned {

namespace {

constexpr const char* kClient = "sorvaned acknowledge";
constexpr const char* kRefused = platform::Translatable("%s: alarmy niepotwierdzone (%s)");

class AcknowledgeServer final : public CalledServer {
  public:
    explicit AcknowledgeServer(Caller& caller) : CalledServer(caller), m_caller(caller) {}

    bool HasFailed() const { return m_failed; }
    // Variables whose alarms are acknowledged.
    const std::vector<std::string>& Acknowledged() const { return m_acknowledged; }

  protected:
    void OnAcknowledgement(const vantrel::RequestRecord& record) override {
        if (record.result == vantrel::ResultOk) {
            m_acknowledged.push_back(record.variable);
        } else {
            Fail(record.variable, record.result);
        }
    }
    void OnOrderLost(const vantrel::LostOrder& order) override {
        Fail(order.variable, vantrel::ResultServerFault);
    }

  private:
    void Fail(const std::string& variable, std::uint16_t result) {
        m_failed = true;
        m_caller.Tell({kRefused,
                       {text::ToUtf8(variable),
                        text::ToUtf8(vantrel::ResultWords(result, m_caller.GetTranslator()))}});
    }

    Caller& m_caller;
    bool m_failed = false;
    std::vector<std::string> m_acknowledged;
};

class NameChoice {
  public:
    explicit NameChoice(const server::Definitions& definitions)
        : m_path(server::StorePath(definitions)) {}

    // A name as it stands; for a pattern those with alarms that are not acknowledged.
    bool Add(const std::string& pattern, platform::Notice& fault);
    // Each once, in the order in which they were added.
    const std::vector<std::string>& Names() const { return m_names; }

  private:
    void Put(const std::string& name) {
        if (m_known.insert(name).second) m_names.push_back(name);
    }

    const std::string m_path;
    std::vector<std::string> m_names;
    std::set<std::string> m_known;
};

bool NameChoice::Add(const std::string& pattern, platform::Notice& fault) {
    if (pattern.find_first_of("*?") == std::string::npos) {
        Put(pattern);
        return true;
    }
    server::StoreReader reader;
    if (!reader.Open(m_path, fault)) return false;
    reader.ReadAlarms({pattern, true, {}, {}}, [&](const server::JournalAlarm& alarm) {
        if (!alarm.acknowledged) Put(alarm.variable);
    });
    if (reader.Fault().empty()) return true;
    fault = {"%s: %s", {m_path, reader.Fault()}};
    return false;
}

std::string LineOf(const std::string& name, bool json) {
    if (!json) return programs::ShownText(name) + '\n';
    return nlohmann::ordered_json{{"variable", text::ToUtf8(name)}}.dump() + '\n';
}

}  // namespace

int Acknowledge(const server::Definitions& definitions, const SorvanedOptions& options,
                const platform::Translator& translator) {
    Caller caller(definitions, translator);
    if (!caller.TakeLogin(options.asUser)) return programs::ExitFailed;
    NameChoice choice(definitions);
    for (const std::string& name : options.names) {
        platform::Notice fault;
        if (choice.Add(text::FromUtf8(name), fault)) continue;
        caller.Tell(fault);
        return programs::ExitFailed;
    }
    AcknowledgeServer server(caller);
    if (!caller.Enter(server, kClient, Breaks::End)) return programs::ExitFailed;
    for (const std::string& name : choice.Names()) server.Acknowledge(name);
    const bool answered = caller.Await([&] { return server.WritesWaiting() == 0; });
    Printer printer;
    for (const std::string& name : server.Acknowledged()) printer.Put(LineOf(name, options.json));
    const int status = printer.End(translator);
    return answered && !server.HasFailed() ? status : programs::ExitFailed;
}

}  // namespace kalvex::sorvaned

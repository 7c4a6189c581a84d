#include "programs/sorvaned/Values.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>

#include "programs/ShownValues.h"
#include "programs/sorvaned/Caller.h"
#include "programs/sorvaned/Printer.h"
#include "server/StoreValues.h"
#include "text/CodePage.h"
#include "text/PatternMatch.h"
#include "value/LocalTimeText.h"

namespace kalvex::sorvaned {

namespace {

constexpr const char* kClient = "sorvaned values";
constexpr int kPattern = text::PatternOption::Wildcards | text::PatternOption::Whole;

constexpr const char* kNoVariable = platform::Translatable("%s: nie ma takiej zmiennej");
constexpr const char* kNoList = platform::Translatable("Serwer %s nie podaje listy zmiennych");

class ValuesServer;

class ShownVariable final : public vantrel::CVarVal {
  public:
    ShownVariable(std::string_view name, ValuesServer& server) : CVarVal(name), m_server(server) {}

    void SetValue(value::CVal value) override;

    bool isTold = false;    // what the server holds, or that there is nothing to be seen
    bool isAbsent = false;  // there is nothing to be seen
    bool isChanged = false;
    std::optional<value::CVal> printed;

  private:
    ValuesServer& m_server;
};

// Subscribes to all variables that fit.
class ValuesServer final : public CalledServer {
  public:
    ValuesServer(Caller& caller, std::string pattern)
        : CalledServer(caller), m_pattern(std::move(pattern)) {}

    // All that fit have been told.
    bool IsComplete() const { return m_listed && m_untold == 0; }
    bool HasFailed() const { return m_failed; }
    bool IsEmpty() const { return m_found == 0; }
    bool HasChanged() const { return !m_changed.empty(); }
    // Variables to be printed, in the order of their changes, and each once.
    std::vector<ShownVariable*> TakeChanged();

    void Mark(ShownVariable& variable);

  protected:
    std::unique_ptr<vantrel::CVarVal> CreateVarVal(std::string_view name) override {
        ++m_untold;
        return std::make_unique<ShownVariable>(name, *this);
    }
    void OnConnect() override;
    void OnVarAccessError(const vantrel::RequestRecord& record) override;

  private:
    void TakeList(const std::optional<vantrel::CObjInfoList>& list);

    const std::string m_pattern;
    bool m_listed = false;
    bool m_failed = false;  // there is no list
    std::size_t m_untold = 0;
    std::size_t m_found = 0;
    std::vector<ShownVariable*> m_changed;
};

void ShownVariable::SetValue(value::CVal value) {
    CVarVal::SetValue(std::move(value));
    isAbsent = false;
    m_server.Mark(*this);
}

void ValuesServer::Mark(ShownVariable& variable) {
    if (!std::exchange(variable.isTold, true)) {
        --m_untold;
        if (!variable.isAbsent) ++m_found;
    }
    if (!std::exchange(variable.isChanged, true)) m_changed.push_back(&variable);
}

void ValuesServer::OnConnect() {
    CalledServer::OnConnect();
    if (m_pattern.find_first_of("*?") == std::string::npos) {
        RegisterVariable(m_pattern);
        m_listed = true;
        return Subscribe();
    }
    AskVarDefList([this](const std::optional<vantrel::CObjInfoList>& list) { TakeList(list); });
}

// Without a list while the connection has gone meanwhile there will be another one.
void ValuesServer::TakeList(const std::optional<vantrel::CObjInfoList>& list) {
    if (GetState() != vantrel::StateConnected) return;
    m_failed = !list;
    if (m_failed) return;
    for (const vantrel::CVarDefInfo& info : *list) {
        if (text::CompareWithPattern(info.GetName(), m_pattern, kPattern)) {
            RegisterVariable(info.GetName());
        }
    }
    m_listed = true;
    Subscribe();
}

void ValuesServer::OnVarAccessError(const vantrel::RequestRecord& record) {
    auto& variable = static_cast<ShownVariable&>(*GetVarVal(record.variable));
    variable.isAbsent = true;
    variable.Value() = server::NoValue();
    Mark(variable);
}

std::vector<ShownVariable*> ValuesServer::TakeChanged() {
    for (ShownVariable* variable : m_changed) variable->isChanged = false;
    return std::exchange(m_changed, {});
}

std::string LineOf(const ShownVariable& variable, bool json) {
    const value::CVal& value = variable.Value();
    const std::int64_t time = value.GetTime();
    if (json) {
        const nlohmann::ordered_json object = {
            {"variable", text::ToUtf8(variable.GetName())},
            {"value", programs::JsonContent(value)},
            {"status", value.GetStatus()},
            {"time", time == 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(time)}};
        return object.dump() + '\n';
    }
    const std::string status = programs::ShownStatus(value.GetStatus());
    return programs::ShownText(variable.GetName()) + '\t' + programs::ShownContent(value) + '\t' +
           (status.empty() ? "-" : status) + '\t' +
           (time == 0 ? "-" : value::FormatExactLocalTime(time)) + '\n';
}

// What stands as it has been printed is left out, and so is what was never to be seen.
void Print(ValuesServer& server, const SorvanedOptions& options, Printer& printer) {
    for (ShownVariable* variable : server.TakeChanged()) {
        std::optional<value::CVal>& printed = variable->printed;
        const value::CVal& value = variable->Value();
        if (printed ? server::IsSame(*printed, value) && printed->GetTime() == value.GetTime()
                    : variable->isAbsent) {
            continue;
        }
        printer.Put(LineOf(*variable, options.json));
        if (options.watch) printed = value;
    }
    printer.Flush();
}

}  // namespace

int ShowValues(const server::Definitions& definitions, const SorvanedOptions& options,
               const platform::Translator& translator) {
    Caller caller(definitions, translator);
    if (!caller.TakeLogin(options.asUser)) return programs::ExitFailed;
    ValuesServer server(caller, text::FromUtf8(options.pattern));
    const auto ended = [&] {
        return caller.IsSignalled() ? programs::ExitDone : programs::ExitFailed;
    };
    const Breaks breaks = options.watch ? Breaks::WaitOut : Breaks::End;
    if (!caller.Enter(server, kClient, breaks)) return ended();
    const bool answered = caller.Await([&] { return server.IsComplete() || server.HasFailed(); });
    if (!answered) return ended();
    if (server.HasFailed()) {
        caller.Tell({kNoList, {text::ToUtf8(definitions.name)}});
        return programs::ExitFailed;
    }
    if (server.IsEmpty() && options.pattern != "*") {
        caller.Tell({kNoVariable, {options.pattern}});
        return programs::ExitFailed;
    }
    Printer printer;
    Print(server, options, printer);
    while (options.watch && !printer.IsClosed()) {
        if (!caller.Await([&] { return server.HasChanged(); })) break;
        Print(server, options, printer);
    }
    const int status = printer.End(translator);
    return options.watch && caller.IsRefused() ? programs::ExitFailed : status;
}

}  // namespace kalvex::sorvaned

#include "consoles_fixture.h"

#include <algorithm>

namespace kalvex::console {

ConsolesTest::~ConsolesTest() {
    while (!m_consoles.empty()) End(*m_consoles.back());
}

TestConsole& ConsolesTest::AddConsole(const std::string& identity, const std::string& user) {
    TestConsole& console = *m_consoles.emplace_back(
        std::make_unique<TestConsole>(clock, folder.Path(), identity, user));
    if (m_server) console.network.AddServer("Kalvex", *m_server);
    console.console->Open();
    Reconnect(console);
    return console;
}

TestConsole& ConsolesTest::AddConsoleElsewhere(const std::string& identity,
                                               const std::string& consoleFolder) {
    TestConsole& console = *m_consoles.emplace_back(
        std::make_unique<TestConsole>(clock, consoleFolder, identity, "JAN"));
    console.network.AddServer("Kalvex", *m_server);
    console.console->Open();
    Reconnect(console);
    return console;
}

void ConsolesTest::Settle() {
    bool worked = true;
    while (std::exchange(worked, false)) {
        for (const auto& console : m_consoles) {
            if (!console->network.IsIdle()) worked = true;
            console->network.Deliver();
            if (console->loop.Run()) worked = true;
        }
    }
}

void ConsolesTest::Break(TestConsole& console) {
    console.network.Break("Kalvex", vantrel::ReasonLost);
    Settle();
}

void ConsolesTest::Reconnect(TestConsole& console) {
    console.client->SourceList().CheckConnections();
    Settle();
    while (m_server && !console.console->IsConnected()) {
        m_loop.WaitAndRun();
        Settle();
    }
}

void ConsolesTest::End(TestConsole& console) {
    console.Stop();
    console.network.Deliver();
    std::erase_if(m_consoles, [&console](const auto& one) { return one.get() == &console; });
    Settle();
}

void ConsolesTest::StopForConsoles() {
    for (const auto& console : m_consoles) console->network.RemoveServer("Kalvex");
    StopModule();
    Settle();
}

void ConsolesTest::StartForConsoles() {
    StartModule();
    for (const auto& console : m_consoles) {
        console->network.AddServer("Kalvex", *m_server);
        Reconnect(*console);
    }
}

void ConsolesTest::Publish(std::string_view variable, std::string_view text) {
    CVarRCCtrl& written = *m_console->Variables().FindControlVariable(variable);
    std::string bytes = text::FromUtf8(text);
    std::ranges::replace(bytes, '|', '\t');
    written.SetControlValue(value::CVal(bytes));
    m_server->AddCurrentValueChange(written);
    Settle();
}

void ConsolesTest::Take(TestConsole& console, std::string_view path) {
    console.console->AskForSession(*console.Find(path));
    Settle();
    EXPECT_TRUE(console.Find(path)->State().m_bControlAllowed);
}

std::string ConsolesTest::ModuleState(std::string_view path) {
    const engine::CKalvexDoc& document = *FindScript(path);
    return std::to_string(document.GetStateWord()) + "/" +
           std::to_string(document.State().m_nCurrentLine) + (document.IsReadOnly() ? " R" : " ") +
           (document.State().m_bControlAllowed ? "C" : "");
}

}  // namespace kalvex::console

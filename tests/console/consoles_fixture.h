// A module and consoles of it, each with a network of its own, so that each can break alone.
#pragma once

#include "console_fixture.h"
#include "test_console.h"

namespace kalvex::console {

class ConsolesTest : public ConsoleTest {
  protected:
    ~ConsolesTest() override;

    // A console that listens; it is connected while the module runs.
    TestConsole& AddConsole(const std::string& identity, const std::string& user = "JAN");
    // One whose folder is not that of the module.
    TestConsole& AddConsoleElsewhere(const std::string& identity, const std::string& consoleFolder);
    // Until nothing is under way and no question is left to be asked.
    void Settle();
    // The line of that console breaks; and it comes up again.
    void Break(TestConsole& console);
    void Reconnect(TestConsole& console);
    // The console ends in an orderly way.
    void End(TestConsole& console);
    // The module is gone, and comes back with no script.
    void StopForConsoles();
    void StartForConsoles();
    // A message as a module might send it.
    void Publish(std::string_view variable, std::string_view text);
    // A console asks for the session, and has it.
    void Take(TestConsole& console, std::string_view path = "a.kx");
    // "state word/line", R, C of the module's own document.
    std::string ModuleState(std::string_view path = "a.kx");

    std::vector<std::unique_ptr<TestConsole>> m_consoles;
};

}  // namespace kalvex::console

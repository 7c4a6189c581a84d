// The command line of kalvexctl. Texts that a module will see are engine texts, paths are the
// system's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "programs/CommandForm.h"
#include "programs/kalvexctl/Endings.h"

namespace kalvex::kalvexctl {

struct ControlOptions {
    std::vector<std::string> modules;  // engine texts; empty: the default
    std::string address;               // "host:port"; empty: found by the module's name
    std::string authority;
    std::string certificate;
    std::string key;
    std::string certificateName;
    bool plainText = false;
    std::optional<std::string> user;  // engine text; the password is asked for
    std::string loginFile;
    std::string dir = ".";
    int timeout = 5;  // seconds
    int wait = 2;     // seconds
};

// What is asked for, with the arguments and options of the command; lines count from 0.
struct OrderArguments {
    std::string script;
    std::string path;
    std::string variable;
    std::string text;
    std::optional<int> line;
    std::optional<int> level;
    bool json = false;
    bool force = false;
    bool follow = false;
    bool all = false;
    int context = 10;
    std::optional<int> watch;  // seconds
    int count = 100;
    int mostLevel = 3;
    std::string since;
    std::string auditScript;
};

class Call;

enum class Argument { Script, Path, Variable, Text, Line, MaybeLine, MaybeLevel };
enum class Needs { Login, Right, Session };

struct CommandRow {
    std::string_view name;
    std::span<const Argument> arguments;
    std::span<const std::string_view> options;  // of its own, by their long names
    Needs needs;
    const char* help;
    Ending (*run)(Call& call);
    bool isOrder = false;  // of a session that is kept
    bool takesModules = false;
};

struct Order {
    const CommandRow* command = nullptr;
    OrderArguments arguments = {};
};

struct ControlLine {
    ControlOptions options;
    Order order;
    // Set when there is nothing to do but to print: help, version, or what is wrong.
    std::optional<Ending> ending;
};

std::span<const CommandRow> CommandRows();

// `arguments` without the name of the program.
ControlLine ParseControlLine(const std::vector<std::string>& arguments);

// An order from the standard input of a session, without the script; a blank line has no command
// and no ending.
struct OrderLine {
    Order order;
    std::optional<Ending> ending;
};
OrderLine ParseOrder(std::string_view line, const std::string& script);

// For completion.
programs::CommandForm DescribeCommandLine();

}  // namespace kalvex::kalvexctl

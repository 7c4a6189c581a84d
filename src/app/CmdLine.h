// The command line of a module. Main thread.
//
// An option begins with "/" or "-"; its name counts in any case. Its value stands behind ":" or "="
// or, for an option that has one, in the next argument: "/D:5", "/d=5", "-D 5". Whatever is no
// known option is passed over.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Translator.h"

namespace kalvex::app {

struct CmdLineRow;

class CCmdLine {
  public:
    // `arguments` without the name of the program, in the system's encoding, as are all answers.
    explicit CCmdLine(const std::vector<std::string>& arguments);

    bool HasOption(std::string_view name) const { return Find(name) != nullptr; }
    // The value of the option, empty when it was given without one; nothing when it was not given.
    // Of an option that is given twice the last one counts.
    std::optional<std::string> GetStringOption(std::string_view name) const;
    // The whole number that the value is; nothing when it is none.
    std::optional<int> GetIntOption(std::string_view name) const;

    // Whether the argument ends in ".kx", in any case of its letters.
    static bool IsScript(std::string_view argument);
    // Arguments that are no option and end in ".kx", in any case of its letters.
    const std::vector<std::string>& GetScripts() const { return m_scripts; }
    // The program opens none.
    void PassOverScripts();

    // The first argument that is no option and has none's form: what is passed over with a line of
    // the log begins with "/" or is an option without its number.
    std::optional<std::string> FindStranger() const;

    // A line that names what was passed over, and one that names the options whose value is not the
    // number that it has to be: engine texts.
    std::vector<std::string> GetWarnings(const platform::Translator& translator) const;

    // For "/?": a line for each option, an engine text.
    static std::string GetHelp(const platform::Translator& translator);

  private:
    struct Option {
        const CmdLineRow* row;
        std::string value;
    };

    const Option* Find(std::string_view name) const;

    std::vector<Option> m_options;
    std::vector<std::string> m_unknown;
    std::vector<std::string> m_scripts;
    std::vector<std::string> m_withoutNumber;
};

}  // namespace kalvex::app

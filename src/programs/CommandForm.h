// What a shell has to know of a program's command line to complete it. Each program makes this of
// its own tables. UTF-8; the texts are English.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kalvex::programs {

enum class Offer {
    Nothing,  // any text will do
    Number,   // a whole number, and nothing is offered for it
    File,
    Folder,
    Words,
    Told,
};

struct ValueForm {
    std::string name = {};  // as the help has it, "FILE"; empty: there is no value
    Offer offer = Offer::Nothing;
    // Of Words: they, with blanks between them. Of File: the ending, such as ".kx" in any case, of
    // those that are offered before all others; empty: no file comes before another. Of Told: what
    // is told, "scripts", a function of the program's own part of each script of a shell.
    std::string detail = {};
    bool mayLack = false;
};

// The value of this name: what is offered for it is in the row of that name, of `rows` or of those
// that all programs have in common. "[NAME]" is one that may lack. Empty: no value.
ValueForm MakeValueForm(std::string_view name, std::span<const ValueForm> rows = {});

struct OptionForm {
    std::string name;       // "--to"; wherever it stands in a program it takes the same value
    std::string shortName;  // "-t", or empty
    ValueForm value;
    std::string help;
    bool repeats = false;
};

// A program, or a command of it.
struct CommandForm {
    std::string name;
    std::string help = {};
    std::vector<OptionForm> options = {};   // its commands take them too
    std::vector<ValueForm> arguments = {};  // in their order; none where there are commands
    bool lastRepeats = false;               // of the arguments
    std::vector<CommandForm> commands = {};
};

// ", did you mean --to?" of an option, with or without its value, or a command that the program
// does not have; empty when none of its own is near, or it is one of them in another place.
std::string Suggest(const CommandForm& program, std::string_view word);
std::string Suggest(std::span<const std::string_view> known, std::string_view word);

}  // namespace kalvex::programs

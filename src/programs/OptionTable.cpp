#include "programs/OptionTable.h"

#include "app/CmdLine.h"

namespace kalvex::programs {

std::string TellStranger(const ProgramTexts& program, std::span<const std::string_view> options,
                         const std::vector<std::string>& arguments) {
    app::CCmdLine module(arguments);
    if (!program.opensScripts) module.PassOverScripts();
    const std::optional<std::string> stranger = module.FindStranger();
    if (!stranger) return {};
    std::string told;
    if (stranger->starts_with('-')) {
        const std::string name = stranger->substr(0, stranger->find('='));
        told = "unknown option " + name + Suggest(options, name);
    } else {
        told = fmt::format("unknown word \"{}\": {}", *stranger, program.hint);
    }
    return fmt::format("{0}: {1} ({0} {2} lists the options)\n", program.name, told, kHelpOption);
}

void MakeAbsolute(ModuleOptions& options, const std::string& currentDir) {
    const auto absolute = [](const std::filesystem::path& base, const std::string& folder) {
        std::string path = (base / folder).lexically_normal().string();
        if (path.size() > 1 && path.ends_with('/')) path.pop_back();
        return path;
    };
    const std::filesystem::path current = currentDir;
    options.workingDir = absolute(current, options.workingDir);
    options.logDir =
        options.logDir.empty() ? options.workingDir : absolute(current, options.logDir);
}

}  // namespace kalvex::programs

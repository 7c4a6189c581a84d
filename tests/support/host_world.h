// A world for scripts that work on their machine: lines are run to their end or to one that fails,
// and files stand in the world's folder. Texts in and out are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "platform/posix/FileStore.h"
#include "support/script_world.h"

namespace kalvex::support {

class HostWorld : public ScriptWorld {
  protected:
    HostWorld() { services.files = &files; }

    // Runs the lines as a script of their own: "done", or line (from 1), code and text of the error
    // on which it stands, as in "2: 3 X".
    std::string Run(const std::vector<std::string>& lines);

    // Texts of the last script's variables; Typed as "type:text".
    std::string Text(std::string_view name);
    std::string Typed(std::string_view name) { return Value(*documents.back(), name); }

    // Files byte for byte.
    void Put(const std::string& name, std::string_view text);
    std::string Get(const std::string& name) const;
    bool Has(const std::string& name) const { return folder.Has(name); }
    std::string PathOf(const std::string& name) const { return folder.Path(name); }

    platform::PosixFileStore files;
};

}  // namespace kalvex::support

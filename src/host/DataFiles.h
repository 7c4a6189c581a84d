// Variables kept in data files: the operations behind READ_FILE, WRITE_FILE and SET_FILE. Main
// thread; an operation runs to its end within its line.
#pragma once

#include <string_view>

#include "operands/ScriptContext.h"
#include "platform/FileStore.h"

namespace kalvex::host {

enum class DataFileResult {
    Failed = 0,   // the reason is in the error slot
    Nothing = 1,  // done, and nothing to report
    Data = 2,     // done, with data
};

// `text` is what stands behind the keyword. Data: a line has named a variable of the script.
DataFileResult ReadDataFile(operands::ScriptContext& script, platform::FileStore& files,
                            std::string_view text);

// The file is replaced as a whole and what it was becomes the backup; a write that fails leaves
// both as they were, and so can be repeated. Data: the section is new, or a line of it was carried
// over.
DataFileResult WriteDataFile(operands::ScriptContext& script, platform::FileStore& files,
                             std::string_view text);
DataFileResult SetDataFile(operands::ScriptContext& script, platform::FileStore& files,
                           std::string_view text);

}  // namespace kalvex::host

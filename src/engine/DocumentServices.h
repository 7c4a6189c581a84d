// The world of a document. Nothing here is owned; everything outlives the documents.
#pragma once

#include "engine/ConsoleLink.h"
#include "engine/ScriptSources.h"
#include "engine/Statement.h"
#include "platform/Crypt.h"
#include "platform/NetworkProbes.h"
#include "platform/Processes.h"
#include "platform/Questions.h"
#include "values/ScriptContext.h"

namespace kalvex {

struct DocumentServices : ValueServices {
    const CStatementTable& statements;
    Questions& questions;
    CScriptSources* sources = nullptr;      // none in a process without data sources
    CConsoleLink* console = nullptr;        // none without a remote console
    bool consoleClient = false;             // this process mirrors a module and never interprets
    Processes* processes = &NoProcesses();  // never null
    const CCrypt* crypt = nullptr;          // none where no text is protected
    NetworkProbes* probes = &NoProbes();    // never null
};

}  // namespace kalvex

// What the evaluators see of a script: its variables, its error slot and the services it was made
// with. The script document implements it. Main thread.
#pragma once

#include <string_view>

#include "operands/ScriptErrors.h"
#include "operands/Variable.h"
#include "platform/Clock.h"
#include "platform/LogSink.h"
#include "platform/Paths.h"
#include "platform/Translator.h"
#include "platform/Users.h"

namespace kalvex {

class CFunctionTable;

// The world of a script, none of it owned; all of it outlives the document.
struct ValueServices {
    Clock& clock;
    LogSink& log;
    const Translator& translator;
    const Users& users;
    const Paths& paths;
    const CFunctionTable& functions;
};

class CScriptContext {
  public:
    explicit CScriptContext(const ValueServices& services) : m_services(services) {}
    virtual ~CScriptContext() = default;
    CScriptContext(const CScriptContext&) = delete;
    CScriptContext& operator=(const CScriptContext&) = delete;

    // Records an error. Without force the first specific error of a line stands, and ErrorOther
    // gives way to any other.
    virtual void SetError(int code, std::string_view text, bool force) = 0;

    CVariableTable& Variables() { return m_arrVariables; }
    const CVariableTable& Variables() const { return m_arrVariables; }
    const ValueServices& Services() const { return m_services; }

  private:
    const ValueServices& m_services;
    CVariableTable m_arrVariables;
};

}  // namespace kalvex

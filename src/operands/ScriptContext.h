// What evaluators and handlers see of a script: its variables, its error slot, its parts and the
// services it was made with. The script document is one. Main thread.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "operands/DocumentPart.h"
#include "operands/ScriptErrors.h"
#include "operands/Variable.h"
#include "platform/Clock.h"
#include "platform/Crypt.h"
#include "platform/FileStore.h"
#include "platform/ForeignText.h"
#include "platform/LogSink.h"
#include "platform/MainLoop.h"
#include "platform/NetworkProbes.h"
#include "platform/Paths.h"
#include "platform/Processes.h"
#include "platform/Translator.h"
#include "platform/Users.h"

namespace kalvex::operands {

class FunctionTable;

// The world of a script, none of it owned; all of it outlives the script.
struct ValueServices {
    platform::Clock& clock;
    platform::LogSink& log;
    const platform::Translator& translator;
    const platform::Users& users;
    const platform::Paths& paths;
    const FunctionTable& functions;
    platform::Processes* processes = &platform::NoProcesses();  // never null
    platform::FileStore* files = &platform::NoFiles();          // never null
    const platform::CCrypt* crypt = nullptr;                    // none where no text is protected
    platform::NetworkProbes* probes = &platform::NoProbes();    // never null
    platform::MainLoop* loop = &platform::NoLoop();             // never null
    platform::ToldFiles* toldFiles = nullptr;                   // none where each reading tells
    // What follows from a line's text alone is kept with the line. Without that each line is worked
    // out anew each time it runs, and each due step really tries its line: the same, only slower.
    bool keepForms = true;
};

// A text that is written far more often than read, in place, or seen where it stands as long as
// nobody else could read it.
class ErrorSubject {
  public:
    ErrorSubject() = default;
    ErrorSubject(const ErrorSubject& other) { *this = other; }
    ErrorSubject& operator=(const ErrorSubject& other) { return *this = other.m_text; }
    ErrorSubject& operator=(std::string_view text) {
        if (text.size() > m_room.size()) Grow(text.size());
        std::char_traits<char>::move(m_room.data(), text.data(), text.size());
        m_text = {m_room.data(), text.size()};
        return *this;
    }
    void Borrow(std::string_view text) { m_text = text; }
    // Before what was lent goes.
    void Keep() {
        if (m_text.data() != m_room.data()) *this = m_text;
    }
    operator std::string_view() const { return m_text; }

  private:
    [[gnu::noinline]] void Grow(std::size_t size) { m_room.resize(size); }

    std::string m_room;
    std::string_view m_text;
};

// The error of the line that runs, or of the last one that ran.
struct ErrorSlot {
    int m_nErrorCode = ErrorNone;
    ErrorSubject m_strErrorText;  // what it is about, usually the offending token

    // The line awaits current data, which is no fault.
    bool IsWaiting() const { return m_nErrorCode == ErrorWaiting; }
};

// What a failure answers. Returned, it becomes what says so there: false, a null pointer, or the
// Failed among other outcomes.
struct [[nodiscard]] Failure {
    operator bool() const { return false; }
    template <class Object>
    operator Object*() const {
        return nullptr;
    }
    template <class Outcome>
    requires requires { Outcome::Failed; }
    operator Outcome() const { return Outcome::Failed; }
};

class ScriptContext {
  public:
    explicit ScriptContext(const ValueServices& services) : m_services(services) {}
    virtual ~ScriptContext() = default;
    ScriptContext(const ScriptContext&) = delete;
    ScriptContext& operator=(const ScriptContext&) = delete;

    const ValueServices& Services() const { return m_services; }
    const std::string& GetPathName() const { return m_path; }  // full path, Windows-1250

    // Tells the log of a file that was read, when it is in another code page.
    void TellForeignText(const std::string& file, std::string_view content);

    const ErrorSlot& LastError() const { return m_error; }
    // Records an error. Without force the first specific error of a line stands, and ErrorOther
    // gives way to any other.
    void SetError(int code, std::string_view text, bool force) {
        const int standing = m_error.m_nErrorCode;
        if (!force && standing != ErrorNone && standing != ErrorOther) return;
        m_error.m_nErrorCode = code;
        m_error.m_strErrorText = text;
    }
    // The same without force, for a text that outlives the next KeepError.
    void LendError(int code, std::string_view text) {
        const int standing = m_error.m_nErrorCode;
        if (standing != ErrorNone && standing != ErrorOther) return;
        m_error.m_nErrorCode = code;
        m_error.m_strErrorText.Borrow(text);
    }
    void KeepError() { m_error.m_strErrorText.Keep(); }
    // No error stands, whatever stood before.
    void ClearError() {
        if (m_error.m_nErrorCode == ErrorNone) return;
        m_error.m_nErrorCode = ErrorNone;
        m_error.m_strErrorText = std::string_view();
    }
    // Records an error without force, for a handler to return.
    Failure Fail(int code, std::string_view text = {});
    // The same with force, for an error that is known to be the real cause.
    Failure FailForced(int code, std::string_view text);

    VariableTable& Variables() { return m_arrVariables; }
    const VariableTable& Variables() const { return m_arrVariables; }
    // The variable of that name or its list. Null records ErrorUndefinedVariable or, for another
    // kind of variable, ErrorWrongKind: forced, with the name as it is given.
    CVariable* FindNamed(std::string_view name);
    CVariableList* FindList(std::string_view name);

    // The part of a subsystem, made at first use.
    template <class Part, class... Arguments>
    Part& GetPart(PartId id, Arguments&&... arguments) {
        std::unique_ptr<DocumentPart>& slot = m_parts[static_cast<std::size_t>(id)];
        if (!slot) slot = std::make_unique<Part>(std::forward<Arguments>(arguments)...);
        return static_cast<Part&>(*slot);
    }
    // The same, null as long as nobody has made it.
    template <class Part>
    Part* FindPart(PartId id) {
        return static_cast<Part*>(m_parts[static_cast<std::size_t>(id)].get());
    }

  protected:
    void SetPathName(std::string path) { m_path = std::move(path); }
    // Tells the parts that the run state is cleared.
    void ClearParts();
    void DestroyParts();

  private:
    const ValueServices& m_services;
    std::string m_path;
    ErrorSlot m_error;
    VariableTable m_arrVariables;
    std::array<std::unique_ptr<DocumentPart>, static_cast<std::size_t>(PartId::Count)> m_parts;
};

}  // namespace kalvex::operands

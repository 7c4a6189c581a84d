// What the text of a line alone tells, worked out once for as long as the line stands. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/CallStack.h"
#include "engine/Statement.h"

namespace kalvex::engine {

struct LineForm {
    // The line is one that GetLine gives, or one rewritten by a call; it outlives the form.
    LineForm(std::string_view line, const StatementTable& statements);

    std::string Word() const;  // the first one, upper case
    bool IsEmpty() const;      // nothing to run: a blank line, a comment or a label

    std::string_view Rest() const {  // behind the word
        return {text.data() + restStart, text.size() - restStart};
    }

    // The line as its handler reads it, made from its rest unless other texts are given. A handler
    // has one form.
    template <class Form>
    Form* Made() const {  // null before that
        return static_cast<Form*>(statement.get());
    }
    template <class Form, class... Texts>
    Form& Read(Texts... texts) {
        if (statement == nullptr) Make<Form>(texts...);
        return static_cast<Form&>(*statement);
    }

    std::string_view text;
    const StatementRow* row;  // one of its own for a line without a statement
    std::unique_ptr<StatementForm> statement;
    std::uint32_t restStart = 0;

  private:
    // Apart from its callers, which then need no more room than what they do each time.
    template <class Form, class... Texts>
    [[gnu::noinline]] void Make(Texts... texts) {
        if constexpr (sizeof...(texts) == 0) {
            statement = std::make_unique<Form>(Rest());
        } else {
            statement = std::make_unique<Form>(texts...);
        }
    }
};

// The forms of lines that have run before. A line that runs once, as most declarations do, leaves
// none.
class LineForms {
  public:
    void Clear() { *this = {}; }
    // Null where none is kept.
    LineForm* Find(int number) const {
        const auto index = static_cast<std::size_t>(number);
        return index < m_forms.size() ? m_forms[index].get() : nullptr;
    }
    // Where the form is kept, or would be; null where none is.
    const std::unique_ptr<LineForm>* Slot(int number) const {
        const auto index = static_cast<std::size_t>(number);
        return index < m_forms.size() ? &m_forms[index] : nullptr;
    }
    // The line runs, and not for the first time.
    bool WantsForm(int number);
    LineForm& Keep(int number, std::string_view line, const StatementTable& statements);

  private:
    std::vector<std::unique_ptr<LineForm>> m_forms;
    std::vector<bool> m_haveRun;
};

// The lines as the arguments of a call rewrite them.
class RewrittenLines {
  public:
    struct Line {
        std::string text;
        std::unique_ptr<LineForm> form;
    };
    // Null when it is not kept.
    LineForm* Find(int number) const {
        const auto found = m_lines.find(number);
        return found == m_lines.end() ? nullptr : found->second.form.get();
    }
    LineForm& Keep(int number, std::string text, const StatementTable& statements);

  private:
    std::unordered_map<int, Line> m_lines;
};

// The rewritten lines of a script, by what its calls hand over. Their number is bounded, since a
// call may hand over other texts each time.
class RewrittenCalls {
  public:
    // Null when there are too many.
    RewrittenLines* Find(const std::vector<CCallArg>& arguments);
    // One more line may be kept.
    bool TakeLine() { return m_lines < kMostLines && ++m_lines > 0; }
    void Clear();

  private:
    static constexpr std::size_t kMostCalls = 1024;
    static constexpr std::size_t kMostLines = 32768;

    std::unordered_map<std::string, RewrittenLines> m_calls;
    std::size_t m_lines = 0;
};

}  // namespace kalvex::engine

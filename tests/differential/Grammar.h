// Lines of scripts, mostly valid, about a set of names. UTF-8.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "differential/Choice.h"

namespace kalvex::differential {

// The names of one script. None of the lists is empty.
struct Names {
    std::vector<std::string> numbers;
    std::vector<std::string> counters;
    std::vector<std::string> texts;
    std::vector<std::string> times;
    std::vector<std::string> lists;
    std::vector<std::string> pointers;
    std::vector<std::string> remotes;
    std::vector<std::string> labels;
    std::vector<std::string> procedures;
};

Names ChooseNames(Choice& choice, bool wild);

class Grammar {
  public:
    // `wild` lines are odd in whatever way they may be, others seldom.
    Grammar(Choice& choice, Names names, bool sources, bool wild)
        : m_choice(choice), m_names(std::move(names)), m_sources(sources), m_wild(wild) {}

    const Names& GetNames() const { return m_names; }
    // Within a procedure its parameters are names too.
    void AddNumbers(const std::vector<std::string>& names);
    void ForgetNumbers(std::size_t count);

    // The form with all that stands in it for something else made.
    std::string Expand(std::string_view form);
    // A statement as it is written in a line, at times broken, in other letters, with a remark.
    std::string Line();
    std::string Condition();
    // The same line, odd in what does not count and at times in what does.
    std::string Written(std::string line);

  private:
    // As often as this where lines are wild.
    bool Wild(int percent) { return m_wild && m_choice.Chance(percent); }
    // Of all rows where lines are wild, else of the first ones.
    std::string OneOf(std::span<const std::string_view> rows, std::size_t tame);
    // Null for a letter that stands for no name.
    const std::vector<std::string>* NamesOf(char letter) const;
    std::string Make(char letter);
    std::string Number();
    std::string Formula(int depth);
    std::string Term(int depth);
    std::string Expression();
    std::string Operand();
    std::string TextOperand();
    std::string AnyName();
    std::string Arguments();
    std::string Label();
    std::string Damage(const std::string& line);
    std::string OneOf(const std::vector<std::string>& names);

    Choice& m_choice;
    Names m_names;
    bool m_sources;
    bool m_wild;
};

}  // namespace kalvex::differential

#include "console/ConsoleMessages.h"

#include <climits>
#include <cstdlib>

#include <algorithm>

namespace kalvex::console {

namespace {

constexpr char kSeparator = '\t';
constexpr char kLineSeparator = ';';
constexpr MessageCode kLastCode = MessageCode::SessionHeld;

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        if (end > 0) parts.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

int ReadNumber(std::string_view text) {
    const long number = std::strtol(std::string(text).c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
}

// Of a state word, which the senders write without a sign.
std::string StateNumber(int stateWord) {
    return std::to_string(static_cast<unsigned int>(stateWord));
}

}  // namespace

MessageFields::MessageFields(std::string_view text) : m_fields(Split(text, kSeparator)) {}

MessageCode MessageFields::Code() const {
    const int code = NumberOr(0, static_cast<int>(MessageCode::None));
    const bool known = code >= 0 && code <= static_cast<int>(kLastCode);
    return known ? static_cast<MessageCode>(code) : MessageCode::None;
}

std::string_view MessageFields::Text(std::size_t index) const {
    return index < m_fields.size() ? m_fields[index] : std::string_view();
}

int MessageFields::Number(std::size_t index) const {
    return ReadNumber(Text(index));
}

int MessageFields::NumberOr(std::size_t index, int empty) const {
    return Text(index).empty() ? empty : Number(index);
}

std::string JoinFields(MessageCode code, std::initializer_list<std::string_view> fields) {
    std::string text = std::to_string(static_cast<int>(code));
    for (const std::string_view field : fields) (text += kSeparator).append(field);
    return text;
}

std::string CodeText(MessageCode code) {
    return JoinFields(code, {});
}

std::string LineText(MessageCode code, int line) {
    return JoinFields(code, {std::to_string(line)});
}

std::string StateText(MessageCode code, int stateWord, int line) {
    return JoinFields(code, {StateNumber(stateWord), std::to_string(line)});
}

std::string NamesText(MessageCode code, std::string_view first, std::string_view second) {
    return JoinFields(code, {first, second});
}

std::string AskSessionText(std::string_view identity, bool force) {
    return JoinFields(MessageCode::AskSession, {identity, force ? "1" : "0"});
}

std::string PassSessionText(std::string_view holder, std::string_view newHolder, int stateWord,
                            int line, const std::vector<int>& breakpoints) {
    return JoinFields(MessageCode::PassSession,
                      {holder, newHolder, StateNumber(stateWord), std::to_string(line),
                       BreakpointsText(breakpoints)});
}

std::string BreakpointsText(const std::vector<int>& lines) {
    std::string text;
    for (const int line : lines) text += std::to_string(line) + kLineSeparator;
    return text;
}

std::vector<int> ReadBreakpoints(std::string_view text) {
    std::vector<int> lines;
    for (const std::string_view part : Split(text, kLineSeparator)) {
        lines.push_back(ReadNumber(part));
    }
    return lines;
}

}  // namespace kalvex::console

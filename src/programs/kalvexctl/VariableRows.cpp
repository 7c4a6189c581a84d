#include "programs/kalvexctl/VariableRows.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <nlohmann/json.hpp>

#include "console/ConsoleMessages.h"
#include "text/Characters.h"
#include "text/CodePage.h"
#include "text/WholeNumber.h"

namespace kalvex::kalvexctl {

namespace {

constexpr const char* kSlots[] = {"CURDATA", "HREP", "DREP", "MREP", "SREP"};
constexpr char kSeparator = ';';
constexpr std::string_view kTimeForm = "dddd-dd-dd dd:dd:dd";
constexpr std::string_view kBeforeStatus = " ( ";
constexpr std::string_view kBehindStatus = " ) ";

bool HasForm(std::string_view text, std::string_view form) {
    return text.size() >= form.size() &&
           std::ranges::equal(text.substr(0, form.size()), form, [](char c, char wanted) {
               return wanted == 'd' ? text::IsDigit(c) : c == wanted;
           });
}

std::optional<VariableSlot> ReadSlot(std::string_view text) {
    if (!HasForm(text, kTimeForm)) return {};
    VariableSlot slot;
    slot.time = text.substr(0, kTimeForm.size());
    text.remove_prefix(kTimeForm.size());
    if (!text.starts_with(kBeforeStatus)) return {};
    text.remove_prefix(kBeforeStatus.size());
    const std::size_t end = text.find(kBehindStatus);
    if (end == std::string_view::npos) return {};
    const auto status = text::ReadWholeNumber<int>(text.substr(0, end));
    if (!status) return {};
    slot.status = *status;
    slot.text = text::ToUtf8(text.substr(end + kBehindStatus.size()));
    return slot;
}

// Where one slot may end: the next one is empty, or begins as a slot does.
std::vector<std::size_t> SlotEnds(std::string_view body) {
    std::vector<std::size_t> ends;
    for (std::size_t i = 0; i < body.size(); ++i) {
        if (body[i] != kSeparator) continue;
        const std::string_view rest = body.substr(i + 1);
        if (rest.empty() || rest.front() == kSeparator || ReadSlot(rest)) ends.push_back(i);
    }
    return ends;
}

}  // namespace

std::vector<std::string> SlotNames() {
    return {std::begin(kSlots), std::end(kSlots)};
}

std::optional<VariableRow> ReadVariableValues(std::string_view message) {
    const std::string prefix =
        fmt::format("{}\t", static_cast<int>(console::MessageCode::VariableValues));
    if (!message.starts_with(prefix)) return {};
    message.remove_prefix(prefix.size());
    const std::size_t nameEnd = message.find('\t');
    if (nameEnd == std::string_view::npos) return {};
    VariableRow row{text::ToUtf8(message.substr(0, nameEnd)), {}};
    std::string_view body = message.substr(nameEnd + 1);
    if (body.size() < 2 || body.front() != kSeparator || body.back() != kSeparator) return {};
    body = body.substr(1, body.size() - 2);
    const std::vector<std::size_t> ends = SlotEnds(body);
    const std::size_t further = std::size(kSlots) - 1;
    std::size_t begin = 0;
    if (ends.size() >= further) {
        for (std::size_t i = ends.size() - further; i < ends.size(); ++i) {
            row.slots.push_back(ReadSlot(body.substr(begin, ends[i] - begin)));
            begin = ends[i] + 1;
        }
    }
    row.slots.push_back(ReadSlot(body.substr(begin)));
    return row;
}

Row RowOf(const VariableRow& variable) {
    Row row{{Cell{variable.name}}};
    for (const std::optional<VariableSlot>& slot : variable.slots) {
        row.cells.push_back(
            {slot ? fmt::format("{} ( {} ) {}", slot->time, slot->status, slot->text) : ""});
    }
    return row;
}

std::string VariablesJson(const std::string& script, const std::vector<VariableRow>& variables) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const VariableRow& variable : variables) {
        nlohmann::ordered_json slots = nlohmann::ordered_json::object();
        for (std::size_t i = 0; i < variable.slots.size(); ++i) {
            nlohmann::ordered_json& slot = slots[kSlots[i]];
            const std::optional<VariableSlot>& value = variable.slots[i];
            if (!value) continue;
            slot = {{"time", value->time}, {"status", value->status}, {"text", value->text}};
        }
        list.push_back({{"name", variable.name}, {"slots", std::move(slots)}});
    }
    return nlohmann::ordered_json{{"script", script}, {"variables", std::move(list)}}.dump();
}

}  // namespace kalvex::kalvexctl

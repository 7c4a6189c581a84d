#include "support/heard_events.h"

#include <algorithm>

#include "support/value_dump.h"

namespace kalvex::support {

namespace {

std::string Text(std::int64_t number) {
    return std::to_string(number);
}

const char* More(bool last) {
    return last ? "" : " more";
}

struct Describer {
    std::string operator()(const vantrel::LoginResult& message) const {
        return "login result " + Text(message.code) + " " + message.text;
    }
    std::string operator()(const vantrel::VariableDefinitions& message) const {
        std::string text = "definitions";
        for (const vantrel::VariableDefinition& definition : message.definitions) {
            text += " " + definition.name + "{";
            for (const auto& [key, content] : definition.attributes) {
                text += key + "=" + content + ";";
            }
            text += "}";
        }
        return text + More(message.last);
    }
    std::string operator()(const vantrel::ValueUpdates& message) const {
        std::string text = "updates";
        for (const vantrel::ValueUpdates::Entry& entry : message.entries) {
            text += " " + Text(entry.handle) + "=" + DescribeWhole(entry.value);
        }
        return text + More(message.last);
    }
    std::string operator()(const vantrel::AccessErrors& message) const {
        std::string text = "access errors";
        for (const vantrel::AccessErrors::Entry& entry : message.entries) {
            text += " " + Text(entry.handle) + ":" + Text(entry.code);
        }
        return text;
    }
    std::string operator()(const vantrel::ReadAnswer& message) const {
        std::string text = "answer " + Text(message.id) + " " + Text(message.result);
        for (const value::CVal& value : message.values) text += " " + DescribeWhole(value);
        return text + More(message.last);
    }
    std::string operator()(const vantrel::ModifyResults& message) const {
        std::string text = "modify results";
        for (const vantrel::ModifyResults::Entry& entry : message.entries) {
            text += " " + Text(entry.id) + ":" + Text(entry.result);
        }
        return text;
    }
    std::string operator()(const vantrel::ReportChange& message) const {
        return "report change " + Text(message.kind) + " " + Text(message.time);
    }
    std::string operator()(const vantrel::LogMessage& message) const {
        return "log " + Text(message.level) + " " + Text(message.time) + " " + message.text;
    }
    std::string operator()(const vantrel::TermResult& message) const {
        return "term result " + Text(message.code) + " " + std::to_string(message.term);
    }
};

}  // namespace

std::string Describe(const vantrel::ServerMessage& message) {
    return std::visit(Describer(), message);
}

void HeardEvents::OnFault(vantrel::ConnectionFault fault, std::uint32_t reason) {
    heard.push_back("fault " + Text(static_cast<int>(fault)) + " " + Text(reason));
}

void HeardEvents::OnClosed(std::uint32_t reason) {
    heard.push_back("closed " + Text(reason));
}

bool HeardEvents::Has(const std::string& event) const {
    return std::find(heard.begin(), heard.end(), event) != heard.end();
}

}  // namespace kalvex::support

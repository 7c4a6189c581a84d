#include "vantrel/network_world.h"

#include <algorithm>

#include "text/CodePage.h"
#include "value/ValueText.h"

namespace kalvex {

namespace {

std::string Text(std::int64_t number) {
    return std::to_string(number);
}

const char* More(bool last) {
    return last ? "" : " more";
}

struct Describer {
    std::string operator()(const LoginResult& message) const {
        return "login result " + Text(message.code) + " " + message.text;
    }
    std::string operator()(const VariableDefinitions& message) const {
        std::string text = "definitions";
        for (const VariableDefinition& definition : message.definitions) {
            text += " " + definition.name + "{";
            for (const auto& [key, content] : definition.attributes) {
                text += key + "=" + content + ";";
            }
            text += "}";
        }
        return text + More(message.last);
    }
    std::string operator()(const ValueUpdates& message) const {
        std::string text = "updates";
        for (const ValueUpdates::Entry& entry : message.entries) {
            text += " " + Text(entry.handle) + "=" + DescribeWhole(entry.value);
        }
        return text + More(message.last);
    }
    std::string operator()(const AccessErrors& message) const {
        std::string text = "access errors";
        for (const AccessErrors::Entry& entry : message.entries) {
            text += " " + Text(entry.handle) + ":" + Text(entry.code);
        }
        return text;
    }
    std::string operator()(const ReadAnswer& message) const {
        std::string text = "answer " + Text(message.id) + " " + Text(message.result);
        for (const CVal& value : message.values) text += " " + DescribeWhole(value);
        return text + More(message.last);
    }
    std::string operator()(const ModifyResults& message) const {
        std::string text = "modify results";
        for (const ModifyResults::Entry& entry : message.entries) {
            text += " " + Text(entry.id) + ":" + Text(entry.result);
        }
        return text;
    }
    std::string operator()(const ReportChange& message) const {
        return "report change " + Text(message.kind) + " " + Text(message.time);
    }
    std::string operator()(const LogMessage& message) const {
        return "log " + Text(message.level) + " " + Text(message.time) + " " + message.text;
    }
};

}  // namespace

std::string DescribeWhole(const CVal& value) {
    return Text(value.GetType()) + ":" + ValueToText(value) + "/" + Text(value.GetStatus()) + "@" +
           Text(value.GetTime());
}

std::string Describe(const ServerMessage& message) {
    return std::visit(Describer(), message);
}

void HeardLog::Log(std::string_view text, int level) {
    lines.push_back(Text(level) + " " + ToUtf8(text));
}

void HeardEvents::OnFault(ConnectionFault fault, std::uint32_t reason) {
    heard.push_back("fault " + Text(static_cast<int>(fault)) + " " + Text(reason));
}

void HeardEvents::OnClosed(std::uint32_t reason) {
    heard.push_back("closed " + Text(reason));
}

bool HeardEvents::Has(const std::string& event) const {
    return std::find(heard.begin(), heard.end(), event) != heard.end();
}

NetworkServerSettings NetworkWorld::ServerSettings() const {
    NetworkServerSettings settings;
    settings.source = "srv";
    settings.runtimeFolder = folder.Path();
    settings.clock = [this] { return now; };
    return settings;
}

NetworkClientSettings NetworkWorld::ClientSettings() const {
    NetworkClientSettings settings;
    settings.runtimeFolder = folder.Path();
    settings.clock = [this] { return now; };
    return settings;
}

std::unique_ptr<NetworkServer> NetworkWorld::Listen(const NetworkServerSettings& settings,
                                                    SessionAcceptor& acceptor) {
    std::string reason;
    auto server = ListenOnNetwork(settings, acceptor, loop, log, translator, reason);
    error = ToUtf8(reason);
    return server;
}

void NetworkWorld::RunUntil(const std::function<bool()>& done) {
    while (!done()) loop.WaitAndRun();
}

void NetworkWorld::RunUntil(const HandServer& server, const std::string& event) {
    RunUntil([&] {
        return std::find(server.heard.begin(), server.heard.end(), event) != server.heard.end();
    });
}

}  // namespace kalvex

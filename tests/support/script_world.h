// A world for scripts in tests: a virtual clock, a log that keeps its lines, a folder of its own
// for script files, and sources whose variables are set by hand. Texts in and out are UTF-8.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/ScriptDocument.h"
#include "engine/Tick.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "platform/Files.h"
#include "support/fixed_user.h"
#include "support/hand_remote.h"
#include "support/log_recorder.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"
#include "value/ValueText.h"

namespace kalvex::support {

class AnsweredQuestions final : public platform::Questions {
  public:
    bool AskYesNo(std::string_view text) override {
        asked.push_back(text::ToUtf8(text));
        return answer;
    }

    std::vector<std::string> asked;
    bool answer = true;
};

// Its variables have no value as yet; a report of the hour has come.
class HandSources final : public engine::ScriptSources {
  public:
    std::unique_ptr<operands::CVariable> CreateRemote(engine::CKalvexDoc&, std::string_view name,
                                                      std::string_view source,
                                                      std::string_view variable) override {
        calls.push_back("create " + text::ToUtf8(source) + "@" + text::ToUtf8(variable));
        auto remote = std::make_unique<HandRemote>(name);
        remote->answer = operands::ReadNothing;
        remote->readyKind = value::KindHour;
        return remote;
    }
    void ReleaseRemote(operands::CVariable& variable) override {
        calls.push_back("release " + text::ToUtf8(variable.GetName()));
    }
    engine::DataCondition GetCondition(operands::CVariable& remote,
                                       value::ValueKind kind) override {
        engine::DataCondition condition = conditions[text::ToUtf8(remote.GetName())];
        condition.variable += '.';
        condition.variable += value::WordOfKind(kind);
        return condition;
    }
    // A test sets its variables without telling.
    std::uint64_t GetChangeCount() const override { return ++changes; }
    void BlockSubscribe() override { calls.push_back("block"); }
    void UnblockSubscribe(bool reset) override {
        calls.push_back(reset ? "unblock all" : "unblock");
    }
    bool AddNotifyDoc(value::ValueKind kind, std::string_view source,
                      engine::CKalvexDoc&) override {
        calls.push_back("notify " + std::to_string(kind) + " " + text::ToUtf8(source));
        return true;
    }
    void RemoveNotifyDoc(value::ValueKind kind, std::string_view source,
                         engine::CKalvexDoc&) override {
        calls.push_back("stop notifying " + std::to_string(kind) + " " + text::ToUtf8(source));
    }
    std::optional<std::vector<std::string>> GetVariableNames(std::string_view source) override {
        const auto found = servers.find(text::ToUtf8(source));
        if (found == servers.end()) return std::nullopt;
        return found->second;
    }

    std::vector<std::string> calls;
    mutable std::uint64_t changes = 0;
    std::map<std::string, std::vector<std::string>> servers;
    std::map<std::string, engine::DataCondition> conditions;  // of remote variables by their names
};

class ScriptWorld : public testing::Test {
  protected:
    static constexpr std::int64_t kStart = 1710050400;  // 2024-03-10 06:00:00 GMT

    ScriptWorld();
    ~ScriptWorld() override;

    // Writes a file of this text (LF becomes CR LF) into the world's folder.
    void WriteFile(const std::string& name, std::string_view text);
    // A document of the text in main.kx, part of the ticks, not started.
    engine::CKalvexDoc& Open(std::string_view text, const std::string& name = "main.kx");
    // The same, started, at PRIORITY 1 so that a tick runs up to ten lines, and ticked.
    engine::CKalvexDoc& Run(std::string_view text, int ticks = 50);
    void Tick(int count);

    // The error slot as "code text", or "0" where there is none.
    static std::string Error(const engine::CKalvexDoc& document);
    // A variable's current value as "type:text", a list as its texts in brackets.
    static std::string Value(engine::CKalvexDoc& document, std::string_view name,
                             value::ValueKind kind = value::KindCurrent);
    // Log lines at or below the level, the world's folder left out.
    std::vector<std::string> Log(int level = platform::LogErrors) const;

    ScratchFolder folder;
    platform::VirtualClock clock{kStart};
    LogRecorder log;
    platform::Translator translator;
    FixedUser users;
    platform::Paths paths;
    AnsweredQuestions questions;
    HandSources sources;
    engine::DocumentServices services;
    engine::TickRunner ticks;
    std::vector<std::unique_ptr<engine::CKalvexDoc>> documents;
};

}  // namespace kalvex::support

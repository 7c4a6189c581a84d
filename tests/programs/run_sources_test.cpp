#include "programs/kalvex-run/RunSources.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "programs/kalvex-run/JsonResult.h"
#include "support/scratch_file.h"
#include "support/script_world.h"

namespace kalvex::programs {
namespace {

using Json = nlohmann::ordered_json;

class RunSourcesTest : public support::ScriptWorld {
  protected:
    ~RunSourcesTest() override { documents.clear(); }

    // What the options get with a plant file of this content, ' standing for "; none without.
    std::unique_ptr<run::RunSources> Make(std::optional<std::string> content = {}) {
        run::RunOptions options;
        options.json = true;
        std::optional<support::ScratchFile> file;
        if (content) {
            std::replace(content->begin(), content->end(), '\'', '"');
            options.plant = file.emplace(*content).Path();
        }
        std::string reason;
        auto made = run::MakeRunSources(options, profile, clock, log, translator, users, reason);
        fault = file ? file->WithoutPath(reason) : reason;
        return made;
    }

    engine::CKalvexDoc& RunWith(run::RunSources& run, std::string_view text, int count) {
        services.sources = &run.ForScripts();
        engine::CKalvexDoc& document = Open(text);
        document.Start();
        document.SetPriority(1);
        for (int tick = 1; tick <= count; ++tick) {
            run.BeginTick(tick);
            Tick(1);
        }
        return document;
    }

    run::RunProfile profile;
    std::string fault;
    std::unique_ptr<run::RunSources> run;
};

TEST_F(RunSourcesTest, WithoutAPlantNoSourceConnects) {
    run = Make();
    ASSERT_TRUE(run);
    EXPECT_EQ(run->Result().dump(), "{}");
    RunWith(*run, "REMOTE a srv@V", 5);
    EXPECT_EQ(
        run->Result().dump(),
        R"({"srv":{"connected":false,"requests":[)"
        R"({"tick":1,"op":"RegisterVariable","variable":"V"},{"tick":1,"op":"Subscribe"}]}})");
}

TEST_F(RunSourcesTest, SourcesOfThePlantComeFirst) {
    run = Make("{'sources': {'srv': {}, 'cichy': {}}}");
    RunWith(*run, "REMOTE a inny@V\nREMOTE b srv@V", 5);
    const Json result = run->Result();
    std::vector<std::string> names;
    for (const auto& [name, source] : result.items()) {
        names.push_back(name + (source["connected"].get<bool>() ? " connected" : ""));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"srv connected", "cichy", "inny"}));
    EXPECT_EQ(result["cichy"]["requests"].dump(), "[]");
}

TEST_F(RunSourcesTest, RequestsHaveTheFieldsOfTheirOperation) {
    run = Make(
        "{'sources': {'srv': {'latencyTicks': 50, 'variables': {'V': {'current': "
        "[{'value': 1}]}}}}}");
    RunWith(*run,
            "REMOTE a srv@V\nLOCAL x = a\nLIST L\nADD L 7\nGET a HREP 1970 1 2 0\n"
            "GET a HREP 1970 1 3 0\nSET a = 5\nMPUT a ARCH L\nINIT a DREP 1970 1 2",
            3);
    const Json requests = run->Result()["srv"]["requests"];
    const auto text = [&requests](std::size_t n) {
        Json record = requests.at(n);
        record.erase("from");
        record.erase("to");
        record.erase("time");
        return record.dump();
    };
    EXPECT_EQ(text(2),
              R"({"tick":2,"op":"AddHourReportRequest","variable":"V","id":1,"list":false})");
    EXPECT_TRUE(requests[2].contains("from") && requests[2].contains("to"));
    EXPECT_EQ(requests[3].dump(), R"({"tick":2,"op":"MakeHourReportRequest"})");
    EXPECT_EQ(requests[4].dump(), R"({"tick":2,"op":"CancelHourReportRequest","id":1})");
    EXPECT_EQ(requests[7].dump(),
              R"({"tick":2,"op":"AddCurrentDataModifyRequest","variable":"V","value":)"
              R"({"type":150,"status":32768,"time":0,"value":5,"text":"5"}})");
    EXPECT_EQ(text(9), R"({"tick":2,"op":"AddArchiveModifyRequest","variable":"V","values":)"
                       R"([{"type":171,"status":0,"time":0,"value":7.0,"text":"7.00"}]})");
    EXPECT_EQ(requests[9]["from"], 0);
    EXPECT_EQ(text(11), R"({"tick":2,"op":"MakeDayReportInitRequest","variable":"V"})");
    EXPECT_TRUE(requests[11].contains("time"));
}

TEST_F(RunSourcesTest, RecordOfARemoteVariable) {
    run = Make(
        "{'sources': {'srv': {'variables': {'Z1.P': {'current': [{'value': 3, 'status': 1}], "
        "'archive': [{'time': 50, 'value': 'x'}]}}}}}");
    engine::CKalvexDoc& document =
        RunWith(*run,
                "REMOTE a srv@Z1.P\nLOCAL x = 1\nSET a.HREP = 4\n"
                "MGET a ARCH FROM 4000 TO 5000\nGET a DREP 2024 3 9\nLOCK\n"
                "IGNORE_UNKNOWN_ON\nLOCAL y = a",
                5);
    document.Variables().Find("a")->RequestRange(value::KindArchive, 0, 100);
    run->BeginTick(6);
    document.Variables().Find("a")->RequestRange(value::KindMonth, 1, 1);
    document.Variables().Find("a")->SetLocked(true);
    const Json record = run::VariableJson(*document.Variables().Find("a"));
    EXPECT_EQ(record["source"], "srv");
    EXPECT_EQ(record["variable"], "Z1.P");
    EXPECT_EQ(record["kind"], "REMOTE");
    EXPECT_EQ(record["slots"]["HREP"]["value"], 4);
    EXPECT_EQ(record["requests"].dump(),
              R"({"HREP":"ready","DREP":"failed","MREP":"waiting","SREP":"none","ARCH":"ready"})");
    EXPECT_EQ(record["archive"].dump(), "[]");
    EXPECT_EQ(record["locked"], true);
    EXPECT_EQ(record["ignoreUnknown"], true);
}

TEST_F(RunSourcesTest, ArchiveOfARemoteVariable) {
    run = Make(
        "{'sources': {'srv': {'variables': {'V': {'archive': [{'time': 50, 'value': "
        "'x'}]}}}}}");
    engine::CKalvexDoc& document = RunWith(*run, "REMOTE a srv@V", 3);
    document.Variables().Find("a")->RequestRange(value::KindArchive, 0, 100);
    run->BeginTick(4);
    EXPECT_EQ(run::VariableJson(*document.Variables().Find("a"))["archive"].dump(),
              R"([{"type":190,"status":0,"time":50,"value":"x","text":"x"}])");
}

TEST_F(RunSourcesTest, FaultyPlantIsToldWithItsLine) {
    EXPECT_EQ(Make("{'sources': {\n'srv': 5}}"), nullptr);
    EXPECT_EQ(fault, "FILE:2: \"srv\" must be an object");
}

}  // namespace
}  // namespace kalvex::programs

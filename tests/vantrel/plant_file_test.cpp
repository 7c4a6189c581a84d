#include <gmock/gmock.h>

#include "platform/CodePage.h"
#include "values/ValueText.h"
#include "vantrel/plant/PlantFile.h"

namespace kalvex {
namespace {

using testing::ElementsAre;
using testing::Pair;

class PlantFile : public testing::Test {
  protected:
    PlantFile() {
        setenv("TZ", "Europe/Warsaw", 1);
        tzset();
    }

    // The plant with this as the content of the source "srv".
    PlantSource Source(std::string_view content) {
        PlantDefinition plant;
        std::string error;
        EXPECT_TRUE(ParsePlant(Whole(content), plant, error)) << error;
        return plant.sources.empty() ? PlantSource() : plant.sources.front();
    }

    std::string Error(std::string_view content) {
        PlantDefinition plant;
        std::string error;
        EXPECT_FALSE(ParsePlant(Whole(content), plant, error));
        return error;
    }

    static std::string Whole(std::string_view content) {
        return "{\"sources\": {\"srv\": {" + std::string(content) + "}}}";
    }

    static std::string Describe(const CVal& value) {
        return std::to_string(value.GetType()) + ":" + ValueToText(value) + "/" +
               std::to_string(value.GetStatus()) + "@" + std::to_string(value.GetTime());
    }
};

TEST_F(PlantFile, EmptySourceHasTheDefaults) {
    const PlantSource source = Source("");
    EXPECT_EQ(source.name, "srv");
    EXPECT_EQ(source.connectAtTick, 0);
    EXPECT_EQ(source.dataAtTick, 0);
    EXPECT_EQ(source.latencyTicks, 1);
    EXPECT_TRUE(source.outages.empty());
    EXPECT_TRUE(source.variables.empty());
    EXPECT_TRUE(source.reportChanges.empty());
}

TEST_F(PlantFile, DataComeWithTheConnectionUnlessTold) {
    EXPECT_EQ(Source("\"connectAtTick\": 400").dataAtTick, 400);
    EXPECT_EQ(Source("\"dataAtTick\": 500, \"connectAtTick\": 400").dataAtTick, 500);
    EXPECT_EQ(Source("\"connectAtTick\": null").connectAtTick, std::nullopt);
}

TEST_F(PlantFile, OutagesAndReportChanges) {
    const PlantSource source = Source(
        "\"latencyTicks\": 10, \"outages\": [{\"fromTick\": 500, \"toTick\": 800, "
        "\"reason\": 4101}, {\"fromTick\": 900}], \"reportChanges\": [{\"atTick\": 100, "
        "\"kind\": \"MREP\", \"time\": \"2024-03-10 06:00:00\"}]");
    EXPECT_EQ(source.latencyTicks, 10);
    ASSERT_EQ(source.outages.size(), 2u);
    EXPECT_EQ(source.outages[0].from, 500);
    EXPECT_EQ(source.outages[0].to, 800);
    EXPECT_EQ(source.outages[0].reason, 4101u);
    EXPECT_EQ(source.outages[1].reason, 4104u);
    ASSERT_EQ(source.reportChanges.size(), 1u);
    EXPECT_EQ(source.reportChanges[0].atTick, 100);
    EXPECT_EQ(source.reportChanges[0].kind, KindMonth);
    EXPECT_EQ(source.reportChanges[0].time, 1710046800);
}

TEST_F(PlantFile, VariablesKeepTheOrderOfTheFile) {
    const PlantSource source = Source("\"variables\": {\"Z\": {}, \"A\": {}, \"Ł1\": {}}");
    ASSERT_EQ(source.variables.size(), 3u);
    EXPECT_EQ(source.variables[0].name, "Z");
    EXPECT_EQ(source.variables[1].name, "A");
    EXPECT_EQ(source.variables[2].name, FromUtf8("Ł1"));
}

TEST_F(PlantFile, Attributes) {
    const PlantSource source =
        Source("\"variables\": {\"V\": {\"attributes\": {\"de\": \"Przepływ\", \"at\": 2}}}");
    EXPECT_THAT(source.variables[0].attributes,
                ElementsAre(Pair("de", FromUtf8("Przepływ")), Pair("at", "2")));
}

TEST_F(PlantFile, TypeOfAValueFollowsItsForm) {
    const PlantSource source = Source(
        "\"variables\": {\"V\": {\"current\": [{\"value\": 13.0}, {\"value\": 1e2}, "
        "{\"value\": -7}, {\"value\": \"praca\"}, {\"value\": 1, \"type\": 160}, "
        "{\"value\": 2, \"type\": 171}, {\"value\": null}]}}");
    std::vector<std::string> values;
    for (const PlantCurrent& current : source.variables[0].current) {
        values.push_back(Describe(current.value));
        EXPECT_FALSE(current.stamped);
        EXPECT_EQ(current.atTick, 0);
    }
    EXPECT_THAT(values, ElementsAre("171:13.00/0@0", "171:100.00/0@0", "150:-7/0@0",
                                    "190:praca/0@0", "160:1/0@0", "171:2.00/0@0", "255:/0@0"));
}

TEST_F(PlantFile, StatusTimeAndTickOfAValue) {
    const PlantSource source = Source(
        "\"variables\": {\"V\": {\"current\": [{\"atTick\": 300, \"value\": 1, \"status\": 16, "
        "\"time\": \"2024-03-10 07:00:00\"}]}}");
    const PlantCurrent& current = source.variables[0].current[0];
    EXPECT_EQ(current.atTick, 300);
    EXPECT_TRUE(current.stamped);
    EXPECT_EQ(Describe(current.value), "150:1/16@1710050400");
}

TEST_F(PlantFile, StoredValuesByKindAndTime) {
    PlantSource source = Source(
        "\"variables\": {\"V\": {\"hour\": [{\"time\": 7200, \"value\": 2.5}, "
        "{\"time\": 3600, \"value\": 1.5, \"status\": 128}], \"day\": [{\"time\": 1, "
        "\"value\": 3}], \"month\": [{\"time\": 2, \"value\": 4}], \"span\": [{\"time\": 3, "
        "\"value\": 5}], \"archive\": [{\"time\": 4, \"value\": 6}]}}");
    auto& stored = source.variables[0].stored;
    ASSERT_EQ(stored[KindHour].size(), 2u);
    EXPECT_EQ(Describe(stored[KindHour].begin()->second), "171:1.50/128@3600");
    EXPECT_EQ(Describe(stored[KindDay][1]), "150:3/0@1");
    EXPECT_EQ(Describe(stored[KindMonth][2]), "150:4/0@2");
    EXPECT_EQ(Describe(stored[KindSpan][3]), "150:5/0@3");
    EXPECT_EQ(Describe(stored[KindArchive][4]), "150:6/0@4");
}

TEST_F(PlantFile, ErrorCodes) {
    const PlantSource source = Source(
        "\"variables\": {\"V\": {\"accessError\": 7, \"readError\": null, \"writeError\": 9}}");
    EXPECT_EQ(source.variables[0].accessError, 7);
    EXPECT_EQ(source.variables[0].readError, std::nullopt);
    EXPECT_EQ(source.variables[0].writeError, 9);
}

TEST_F(PlantFile, TextThatIsNoJson) {
    PlantDefinition plant;
    std::string error;
    EXPECT_FALSE(ParsePlant("{\n  \"sources\": {,}\n}", plant, error));
    EXPECT_EQ(error,
              "parse error at line 2, column 15: syntax error while parsing object key - "
              "unexpected ','; expected string literal");
}

TEST_F(PlantFile, FaultsAreNamedWithTheirPlace) {
    EXPECT_EQ(Error("\n\"latencyTick\": 5"),
              "line 2: /sources/srv/latencyTick: there is no such field");
    EXPECT_EQ(Error("\n\"latencyTicks\":\n -5\n"),
              "line 3: /sources/srv/latencyTicks: a whole number of at least 0 is expected");
    EXPECT_EQ(Error("\"latencyTicks\": 1.5"),
              "line 1: /sources/srv/latencyTicks: a whole number of at least 0 is expected");
    EXPECT_EQ(Error("\"latencyTicks\": 18446744073709551615"),
              "line 1: /sources/srv/latencyTicks: a whole number of at least 0 is expected");
    EXPECT_EQ(Error("\"outages\": {}"), "line 1: /sources/srv/outages: a list is expected");
    EXPECT_EQ(Error("\"outages\": [{\"fromTick\": 5, \"toTick\": 5}]"),
              "line 1: /sources/srv/outages/0: \"toTick\" must be greater than \"fromTick\"");
    EXPECT_EQ(Error("\"variables\": []"), "line 1: /sources/srv/variables: an object is expected");
    EXPECT_EQ(Error("\"reportChanges\": [{\"kind\": \"ARCH\"}]"),
              "line 1: /sources/srv/reportChanges/0/kind: HREP, DREP, MREP or SREP is expected");
    EXPECT_EQ(Error("\"reportChanges\": [{\"atTick\": 1}]"),
              "line 1: /sources/srv/reportChanges/0: \"kind\" is missing");
}

TEST_F(PlantFile, FaultyValuesAreNamedWithTheirPlace) {
    const auto error = [this](std::string_view value) {
        return Error("\"variables\": {\"Z1.P\": {\"current\": [{\"value\": 1},\n{" +
                     std::string(value) + "}]}}");
    };
    const std::string place = "line 2: /sources/srv/variables/Z1.P/current/1";
    EXPECT_EQ(error("\"value\": true"), place + "/value: a number, a text or null is expected");
    EXPECT_EQ(error("\"status\": 1"), place + ": \"value\" is missing");
    EXPECT_EQ(error("\"value\": 1, \"status\": 65536"),
              place + "/status: a whole number from 0 to 65535 is expected");
    EXPECT_EQ(error("\"value\": 5000000000"), place + ": the value is none of type 150");
    EXPECT_EQ(error("\"value\": \"abc\", \"type\": 171"),
              place + ": the value is none of type 171");
    EXPECT_EQ(error("\"value\": 1, \"type\": 254"), place + ": the value is none of type 254");
    EXPECT_EQ(error("\"value\": 1, \"time\": \"2024-03-10\""),
              place + "/time: a time (\"YYYY-MM-DD HH:MM:SS\" or seconds) is expected");
    EXPECT_EQ(error("\"value\": 1, \"time\": \"2024-13-10 00:00:00\""),
              place + "/time: a time (\"YYYY-MM-DD HH:MM:SS\" or seconds) is expected");
    EXPECT_EQ(Error("\"variables\": {\"V\": {\"hour\": [{\"value\": 1}]}}"),
              "line 1: /sources/srv/variables/V/hour/0: \"time\" is missing");
}

}  // namespace
}  // namespace kalvex

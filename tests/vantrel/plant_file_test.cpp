#include <gmock/gmock.h>

#include "support/scratch_file.h"
#include "support/value_dump.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"
#include "vantrel/plant/PlantFile.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::Pair;

class PlantFileTest : public testing::Test {
  protected:
    // The plant with this as the content of the source "srv".
    PlantSource Source(std::string_view content) {
        const support::ScratchFile file(Whole(content));
        PlantDefinition plant;
        std::string fault;
        EXPECT_TRUE(ReadPlant(file.Path(), plant, fault)) << fault;
        return plant.sources.empty() ? PlantSource() : plant.sources.front();
    }

    std::string Error(std::string_view content) { return WholeError(Whole(content)); }

    std::string WholeError(std::string_view text) {
        const support::ScratchFile file(text);
        PlantDefinition plant;
        std::string fault;
        EXPECT_FALSE(ReadPlant(file.Path(), plant, fault));
        return file.WithoutPath(fault);
    }

    static std::string Whole(std::string_view content) {
        return "{\"sources\": {\"srv\": {" + std::string(content) + "}}}";
    }

    support::ZoneScope zone{"Europe/Warsaw"};
};

TEST_F(PlantFileTest, EmptySourceHasTheDefaults) {
    const PlantSource source = Source("");
    EXPECT_EQ(source.name, "srv");
    EXPECT_EQ(source.connectAtTick, 0);
    EXPECT_EQ(source.dataAtTick, 0);
    EXPECT_EQ(source.latencyTicks, 1);
    EXPECT_TRUE(source.outages.empty());
    EXPECT_TRUE(source.variables.empty());
    EXPECT_TRUE(source.reportChanges.empty());
}

TEST_F(PlantFileTest, DataComeWithTheConnectionUnlessTold) {
    EXPECT_EQ(Source("\"connectAtTick\": 400").dataAtTick, 400);
    EXPECT_EQ(Source("\"dataAtTick\": 500, \"connectAtTick\": 400").dataAtTick, 500);
    EXPECT_EQ(Source("\"connectAtTick\": null").connectAtTick, std::nullopt);
}

TEST_F(PlantFileTest, OutagesAndReportChanges) {
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
    EXPECT_EQ(source.reportChanges[0].kind, value::KindMonth);
    EXPECT_EQ(source.reportChanges[0].time, 1710046800);
}

TEST_F(PlantFileTest, VariablesKeepTheOrderOfTheFile) {
    const PlantSource source = Source("\"variables\": {\"Z\": {}, \"A\": {}, \"Ł1\": {}}");
    ASSERT_EQ(source.variables.size(), 3u);
    EXPECT_EQ(source.variables[0].name, "Z");
    EXPECT_EQ(source.variables[1].name, "A");
    EXPECT_EQ(source.variables[2].name, text::FromUtf8("Ł1"));
}

TEST_F(PlantFileTest, Attributes) {
    const PlantSource source =
        Source("\"variables\": {\"V\": {\"attributes\": {\"de\": \"Przepływ\", \"at\": 2}}}");
    EXPECT_THAT(source.variables[0].attributes,
                ElementsAre(Pair("de", text::FromUtf8("Przepływ")), Pair("at", "2")));
}

TEST_F(PlantFileTest, TypeOfAValueFollowsItsForm) {
    const PlantSource source = Source(
        "\"variables\": {\"V\": {\"current\": [{\"value\": 13.0}, {\"value\": 1e2}, "
        "{\"value\": -7}, {\"value\": \"praca\"}, {\"value\": 1, \"type\": 160}, "
        "{\"value\": 2, \"type\": 171}, {\"value\": null}]}}");
    std::vector<std::string> values;
    for (const PlantCurrent& current : source.variables[0].current) {
        values.push_back(support::DescribeWhole(current.value));
        EXPECT_FALSE(current.stamped);
        EXPECT_EQ(current.atTick, 0);
    }
    EXPECT_THAT(values, ElementsAre("171:13.00/0@0", "171:100.00/0@0", "150:-7/0@0",
                                    "190:praca/0@0", "160:1/0@0", "171:2.00/0@0", "255:/0@0"));
}

TEST_F(PlantFileTest, StatusTimeAndTickOfAValue) {
    const PlantSource source = Source(
        "\"variables\": {\"V\": {\"current\": [{\"atTick\": 300, \"value\": 1, \"status\": 16, "
        "\"time\": \"2024-03-10 07:00:00\"}]}}");
    const PlantCurrent& current = source.variables[0].current[0];
    EXPECT_EQ(current.atTick, 300);
    EXPECT_TRUE(current.stamped);
    EXPECT_EQ(support::DescribeWhole(current.value), "150:1/16@1710050400");
}

TEST_F(PlantFileTest, StoredValuesByKindAndTime) {
    PlantSource source = Source(
        "\"variables\": {\"V\": {\"hour\": [{\"time\": 7200, \"value\": 2.5}, "
        "{\"time\": 3600, \"value\": 1.5, \"status\": 128}], \"day\": [{\"time\": 1, "
        "\"value\": 3}], \"month\": [{\"time\": 2, \"value\": 4}], \"span\": [{\"time\": 3, "
        "\"value\": 5}], \"archive\": [{\"time\": 4, \"value\": 6}]}}");
    auto& stored = source.variables[0].stored;
    ASSERT_EQ(stored[value::KindHour].size(), 2u);
    EXPECT_EQ(support::DescribeWhole(stored[value::KindHour].begin()->second), "171:1.50/128@3600");
    EXPECT_EQ(support::DescribeWhole(stored[value::KindDay][1]), "150:3/0@1");
    EXPECT_EQ(support::DescribeWhole(stored[value::KindMonth][2]), "150:4/0@2");
    EXPECT_EQ(support::DescribeWhole(stored[value::KindSpan][3]), "150:5/0@3");
    EXPECT_EQ(support::DescribeWhole(stored[value::KindArchive][4]), "150:6/0@4");
}

TEST_F(PlantFileTest, ErrorCodes) {
    const PlantSource source = Source(
        "\"variables\": {\"V\": {\"accessError\": 7, \"readError\": null, \"writeError\": 9}}");
    EXPECT_EQ(source.variables[0].accessError, 7);
    EXPECT_EQ(source.variables[0].readError, std::nullopt);
    EXPECT_EQ(source.variables[0].writeError, 9);
}

TEST_F(PlantFileTest, TextThatIsNoJson) {
    EXPECT_EQ(WholeError("{\n  \"sources\": {,}\n}"),
              "FILE:2: syntax error while parsing object key - unexpected ','; expected string "
              "literal");
}

TEST_F(PlantFileTest, FileThatIsNotThere) {
    PlantDefinition plant;
    std::string fault;
    EXPECT_FALSE(ReadPlant("/nie/ma/takiego.json", plant, fault));
    EXPECT_EQ(fault, "/nie/ma/takiego.json: No such file or directory");
}

TEST_F(PlantFileTest, FaultsAreNamedWithTheirLine) {
    EXPECT_EQ(WholeError("[]"), "FILE:1: \"plant\" must be an object");
    EXPECT_EQ(WholeError("{\"sources\":\n5}"), "FILE:2: \"sources\" must be an object");
    EXPECT_EQ(Error("\n\"latencyTick\": 5"), "FILE:2: \"latencyTick\" is no field of \"srv\"");
    EXPECT_EQ(Error("\n\"latencyTicks\":\n -5\n"),
              "FILE:3: \"latencyTicks\" must be a whole number of at least 0");
    EXPECT_EQ(Error("\"latencyTicks\": 1.5"),
              "FILE:1: \"latencyTicks\" must be a whole number of at least 0");
    EXPECT_EQ(Error("\"outages\": {}"), "FILE:1: \"outages\" must be an array");
    EXPECT_EQ(Error("\"outages\": [{\"fromTick\": 5, \"toTick\": 5}]"),
              "FILE:1: \"outages\" has an entry whose \"toTick\" is not greater than its "
              "\"fromTick\"");
    EXPECT_EQ(Error("\"variables\": []"), "FILE:1: \"variables\" must be an object");
    EXPECT_EQ(Error("\"reportChanges\": [{\"kind\": \"ARCH\"}]"),
              "FILE:1: \"kind\" must be HREP, DREP, MREP or SREP");
    EXPECT_EQ(Error("\"reportChanges\": [{\"atTick\": 1}]"),
              "FILE:1: \"reportChanges\" has an entry without \"kind\"");
}

TEST_F(PlantFileTest, FaultyValuesAreNamedWithTheirLine) {
    const auto error = [this](std::string_view value) {
        return Error("\"variables\": {\"Z1.P\": {\"current\": [{\"value\": 1},\n{" +
                     std::string(value) + "}]}}");
    };
    EXPECT_EQ(error("\"value\": true"), "FILE:2: \"value\" must be a number, a text or null");
    EXPECT_EQ(error("\"status\": 1"), "FILE:2: \"current\" has an entry without \"value\"");
    EXPECT_EQ(error("\"value\": 1, \"status\": 65536"),
              "FILE:2: \"status\" must be a whole number from 0 to 65535");
    EXPECT_EQ(error("\"value\": 5000000000"),
              "FILE:2: \"current\" has a value that is none of type 150");
    EXPECT_EQ(error("\"value\": \"abc\", \"type\": 171"),
              "FILE:2: \"current\" has a value that is none of type 171");
    EXPECT_EQ(error("\"value\": 1, \"type\": 254"),
              "FILE:2: \"current\" has a value that is none of type 254");
    EXPECT_EQ(error("\"value\": 1, \"time\": \"2024-03-10\""),
              "FILE:2: \"time\" must be a time (\"YYYY-MM-DD HH:MM:SS\" or seconds)");
    EXPECT_EQ(error("\"value\": 1, \"time\": 1.5"),
              "FILE:2: \"time\" must be a time (\"YYYY-MM-DD HH:MM:SS\" or seconds)");
    EXPECT_EQ(Error("\"variables\": {\"V\": {\"hour\": [{\"value\": 1}]}}"),
              "FILE:1: \"hour\" has an entry without \"time\"");
    EXPECT_EQ(Error("\"variables\": {\"V\": {\"attributes\": {\"de\": null}}}"),
              "FILE:1: \"de\" must be a text");
}

}  // namespace
}  // namespace kalvex::vantrel

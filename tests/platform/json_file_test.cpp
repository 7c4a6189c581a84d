#include "platform/JsonFile.h"

#include <gtest/gtest.h>

#include "support/scratch_file.h"

namespace kalvex::platform {
namespace {

using Type = JsonNode::Type;

JsonNode Read(std::string_view content) {
    const support::ScratchFile scratch(content);
    JsonFile file(scratch.Path());
    JsonNode root;
    EXPECT_TRUE(file.Read(root)) << file.GetFault();
    return root;
}

std::string Fault(std::string_view content) {
    const support::ScratchFile scratch(content);
    JsonFile file(scratch.Path());
    JsonNode root;
    EXPECT_FALSE(file.Read(root));
    return scratch.WithoutPath(file.GetFault());
}

TEST(JsonFileTest, KeepsTheFormOfEachValue) {
    const JsonNode root = Read(R"([null, true, false, 12, -3, 1.5, 2.0, 1e3, "tekst", [], {}])");
    ASSERT_EQ(root.type, Type::Array);
    ASSERT_EQ(root.items.size(), 11u);
    EXPECT_EQ(root.items[0].type, Type::Null);
    EXPECT_EQ(root.items[1].type, Type::Boolean);
    EXPECT_TRUE(root.items[1].boolean);
    EXPECT_FALSE(root.items[2].boolean);
    EXPECT_EQ(root.items[3].type, Type::Integer);
    EXPECT_EQ(root.items[3].integer, 12);
    EXPECT_EQ(root.items[3].real, 12.0);
    EXPECT_EQ(root.items[4].integer, -3);
    EXPECT_EQ(root.items[5].type, Type::Real);
    EXPECT_EQ(root.items[5].real, 1.5);
    EXPECT_EQ(root.items[6].type, Type::Real);
    EXPECT_EQ(root.items[7].type, Type::Real);
    EXPECT_EQ(root.items[7].real, 1000.0);
    EXPECT_EQ(root.items[8].text, "tekst");
    EXPECT_EQ(root.items[9].type, Type::Array);
    EXPECT_EQ(root.items[10].type, Type::Object);
}

TEST(JsonFileTest, IntegerBeyond64BitsIsReal) {
    const JsonNode root = Read("[9223372036854775807, 9223372036854775808]");
    EXPECT_EQ(root.items[0].type, Type::Integer);
    EXPECT_EQ(root.items[0].integer, INT64_MAX);
    EXPECT_EQ(root.items[1].type, Type::Real);
    EXPECT_EQ(root.items[1].real, 9223372036854775808.0);
}

TEST(JsonFileTest, EachValueKnowsItsLine) {
    const JsonNode root = Read("\n{\"a\":\n 12\n,\r\n\"b\": [\n\"x\",\n[\n]], \"c\"\n: null}\n");
    EXPECT_EQ(root.line, 2);
    EXPECT_EQ(root.Find("a")->line, 3);
    EXPECT_EQ(root.Find("b")->line, 5);
    EXPECT_EQ(root.Find("b")->items[0].line, 6);
    EXPECT_EQ(root.Find("b")->items[1].line, 7);
    EXPECT_EQ(root.Find("c")->line, 9);
}

TEST(JsonFileTest, MembersAreFoundByNameAndTheLastOfLikeNamesCounts) {
    const JsonNode root = Read(R"({"a": 1, "b": 2, "a": 3})");
    EXPECT_EQ(root.Find("a")->integer, 3);
    EXPECT_EQ(root.Find("b")->integer, 2);
    EXPECT_EQ(root.Find("c"), nullptr);
}

TEST(JsonFileTest, MissingFileIsTold) {
    JsonFile file("/nie/ma/takiego.json");
    JsonNode root;
    EXPECT_FALSE(file.Read(root));
    EXPECT_EQ(file.GetFault(), "/nie/ma/takiego.json: No such file or directory");
}

TEST(JsonFileTest, FaultOfFormHasItsLine) {
    EXPECT_EQ(Fault(""),
              "FILE:1: syntax error while parsing value - unexpected end of input; expected '[', "
              "'{', or a literal");
    EXPECT_EQ(Fault("[\n1,\n]\n"),
              "FILE:3: syntax error while parsing value - unexpected ']'; expected '[', '{', or a "
              "literal");
    EXPECT_EQ(Fault("{\n\"a\" 1}"),
              "FILE:2: syntax error while parsing object separator - unexpected number literal; "
              "expected ':'");
    EXPECT_EQ(Fault("[1\n,2"),
              "FILE:2: syntax error while parsing array - unexpected end of input; expected ']'");
    EXPECT_EQ(Fault("[]\n\n[]"),
              "FILE:3: syntax error while parsing value - unexpected '['; expected end of input");
    EXPECT_EQ(Fault("[\n1e999]"), "FILE:2: number overflow parsing '1e999'");
}

TEST(JsonFileTest, FileInAnotherEncodingIsToldAsSuch) {
    const support::ScratchFile scratch("[1,\n\"\xB9\"]");
    JsonFile file(scratch.Path());
    JsonNode root;
    EXPECT_FALSE(file.Read(root));
    EXPECT_EQ(file.GetFault(),
              scratch.Path() +
                  ":2: the file is not in UTF-8; this converts it: kalvex-convert --to utf-8 " +
                  scratch.Path());
}

TEST(JsonFileTest, DeepBracketsAreRefused) {
    EXPECT_EQ(Read(std::string(64, '[') + std::string(64, ']')).items.size(), 1u);
    EXPECT_EQ(Fault("\n" + std::string(65, '[') + std::string(65, ']')),
              "FILE:2: brackets are more than 64 deep");
}

TEST(JsonFileTest, FieldsAreTakenByTypeAndRange) {
    const support::ScratchFile scratch("{\n\"n\": 5,\n\"t\": \"x\",\n\"r\": 1.0\n}");
    const auto integer = [&scratch](std::string_view name, IntegerRange range) {
        JsonFile file(scratch.Path());
        JsonNode root;
        std::int64_t out = -1;
        file.Read(root);
        return file.GetInteger(root, name, range, out) ? std::to_string(out)
                                                       : scratch.WithoutPath(file.GetFault());
    };
    const auto text = [&scratch](std::string_view name) {
        JsonFile file(scratch.Path());
        JsonNode root;
        std::string out;
        file.Read(root);
        return file.GetText(root, name, out) ? out : scratch.WithoutPath(file.GetFault());
    };
    EXPECT_EQ(integer("n", {0, 5}), "5");
    EXPECT_EQ(integer("n", {0, 4}), "FILE:2: \"n\" must be a whole number from 0 to 4");
    EXPECT_EQ(integer("n", {.least = 6}), "FILE:2: \"n\" must be a whole number of at least 6");
    EXPECT_EQ(integer("r", {0, 5}), "FILE:4: \"r\" must be a whole number from 0 to 5");
    EXPECT_EQ(integer("t", {0, 5}), "FILE:3: \"t\" must be a whole number from 0 to 5");
    EXPECT_EQ(integer("m", {0, 5}), "FILE:1: \"m\" is missing");
    EXPECT_EQ(text("t"), "x");
    EXPECT_EQ(text("n"), "FILE:2: \"n\" must be a text");
    EXPECT_EQ(text("m"), "FILE:1: \"m\" is missing");
}

}  // namespace
}  // namespace kalvex::platform

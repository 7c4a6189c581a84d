#include "platform/JsonDocument.h"

#include <gtest/gtest.h>

namespace kalvex {
namespace {

using Pointer = nlohmann::ordered_json::json_pointer;

class JsonDocumentTest : public testing::Test {
  protected:
    int LineOf(const std::string& text, const std::string& place) {
        JsonDocument document;
        std::string error;
        EXPECT_TRUE(document.Parse(text, error)) << error;
        return document.LineOf(Pointer(place));
    }
};

TEST_F(JsonDocumentTest, LinesOfValues) {
    const std::string text = "{\n\"a\": 12\n,\"b\": [1,\n2\n,\n\"c\"],\r\n\"d\": {\"a/b\":\nnull}}";
    EXPECT_EQ(LineOf(text, ""), 1);
    EXPECT_EQ(LineOf(text, "/a"), 2);
    EXPECT_EQ(LineOf(text, "/b"), 3);
    EXPECT_EQ(LineOf(text, "/b/0"), 3);
    EXPECT_EQ(LineOf(text, "/b/1"), 4);
    EXPECT_EQ(LineOf(text, "/b/2"), 6);
    EXPECT_EQ(LineOf(text, "/d"), 7);
    EXPECT_EQ(LineOf(text, "/d/a~1b"), 8);
}

TEST_F(JsonDocumentTest, IndexAfterANestedList) {
    EXPECT_EQ(LineOf("[[1,2],\n{\"a\": 1},\n[\n3]]", "/2/0"), 4);
}

TEST_F(JsonDocumentTest, MembersKeepTheirOrder) {
    JsonDocument document;
    std::string error;
    ASSERT_TRUE(document.Parse("{\"z\": 1, \"a\": 2}", error));
    EXPECT_EQ(document.Root().begin().key(), "z");
}

TEST_F(JsonDocumentTest, FaultWithItsLine) {
    JsonDocument document;
    std::string error;
    EXPECT_FALSE(document.Parse("{\n\"a\" 1}", error));
    EXPECT_EQ(error,
              "parse error at line 2, column 5: syntax error while parsing object separator - "
              "unexpected number literal; expected ':'");
}

}  // namespace
}  // namespace kalvex

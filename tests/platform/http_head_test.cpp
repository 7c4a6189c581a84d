#include "platform/HttpHead.h"

#include <gtest/gtest.h>

namespace kalvex::platform {
namespace {

constexpr const char* kRequest = "GET /metrics HTTP/1.1\r\n";

std::string WithHeaders(std::size_t count) {
    std::string head = kRequest;
    for (std::size_t i = 0; i < count; ++i) head += "A: b\r\n";
    return head + "\r\n";
}

TEST(HttpHeadTest, ContentBeginsBehindTheEmptyLine) {
    EXPECT_EQ(FindHttpContent(""), std::string::npos);
    EXPECT_EQ(FindHttpContent("GET / HTTP/1.1\r\nA: b\r\n"), std::string::npos);
    EXPECT_EQ(FindHttpContent("GET / HTTP/1.1\r\n\r\nab"), 18U);
}

TEST(HttpHeadTest, OnlyTheLengthOfTheContentCounts) {
    const HttpHead head = BoundHttpHead(
        "POST /metrics?a=b HTTP/1.1\r\nHost: x\r\nRange: bytes=0-1\r\nCONTENT-length: 2\r\n"
        "Content-Lengths: 3\r\nTransfer-Encoding: chunked\r\nExpect: 100-continue\r\n\r\n");
    EXPECT_EQ(head.refusal, 0);
    EXPECT_EQ(head.text, "POST /metrics?a=b HTTP/1.1\r\nCONTENT-length: 2\r\n\r\n");
    EXPECT_EQ(BoundHttpHead("\r\n\r\n").text, "\r\n\r\n");
}

TEST(HttpHeadTest, LineOfTheRequestIsBounded) {
    const std::string end = " HTTP/1.1\r\n\r\n";
    const std::string begin = "GET /";
    const std::string longest(kLongestRequestLine - begin.size() - end.size() + 2, 'a');
    EXPECT_EQ(BoundHttpHead(begin + longest + end).refusal, 0);
    EXPECT_EQ(BoundHttpHead(begin + longest + 'a' + end).refusal, 414);
    EXPECT_EQ(BoundHttpHead(std::string(20000, 'a')).refusal, 414);
}

TEST(HttpHeadTest, HeadersAreBoundedInNumberAndSize) {
    EXPECT_EQ(BoundHttpHead(WithHeaders(kMostHttpHeaders)).refusal, 0);
    EXPECT_EQ(BoundHttpHead(WithHeaders(kMostHttpHeaders + 1)).refusal, 431);
    const std::string begin = std::string(kRequest) + "Range: ";
    const std::string longest(kLongestHttpHead - begin.size() - 4, '1');
    EXPECT_EQ(BoundHttpHead(begin + longest + "\r\n\r\n").refusal, 0);
    EXPECT_EQ(BoundHttpHead(begin + longest + "1\r\n\r\n").refusal, 431);
    EXPECT_EQ(BoundHttpHead(begin + longest).refusal, 431);
}

TEST(HttpHeadTest, WhatIsNoHeaderIsRefused) {
    for (const char* lines : {"A\r\n\r\n", "A: b\nRange: c\r\n\r\n", "A: b\rc\r\n\r\n",
                              "Content-Length: 1\nRange: c\r\n\r\n", " \r\n\r\n"}) {
        EXPECT_EQ(BoundHttpHead(kRequest + std::string(lines)).refusal, 400) << lines;
    }
    EXPECT_EQ(BoundHttpHead("GET /metrics HTTP/1.1\nRange: c\r\n\r\n").refusal, 400);
    EXPECT_EQ(BoundHttpHead(std::string("GET /\0 HTTP/1.1\r\n\r\n", 19)).refusal, 400);
    EXPECT_EQ(BoundHttpHead(std::string(kRequest) + "A:\tb\r\n\r\n").refusal, 0);
}

}  // namespace
}  // namespace kalvex::platform

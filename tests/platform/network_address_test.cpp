#include "platform/NetworkAddress.h"

#include <gtest/gtest.h>

namespace kalvex::platform {
namespace {

struct AddressRow {
    const char* text;
    bool good;
    const char* host;
    int port;
};

TEST(NetworkAddressTest, HostAndPortAreTold) {
    constexpr AddressRow kRows[] = {
        {"plant.example:4300", true, "plant.example", 4300},
        {"10.1.2.3:0", true, "10.1.2.3", 0},
        {"[::1]:65535", true, "::1", 65535},
        {"localhost", false, "", 0},
        {":4300", false, "", 0},
        {"host:", false, "", 0},
        {"host:x", false, "", 0},
        {"host:1x", false, "", 0},
        {"host:65536", false, "", 0},
        {"::1:4300", false, "", 0},
        {"[]:4300", false, "", 0},
        {"", false, "", 0},
    };
    for (const AddressRow& row : kRows) {
        std::string host;
        std::uint16_t port = 0;
        ASSERT_EQ(ReadAddress(row.text, host, port), row.good) << row.text;
        if (!row.good) continue;
        EXPECT_EQ(host, row.host);
        EXPECT_EQ(port, row.port);
    }
}

TEST(NetworkAddressTest, OnlyLoopbackIsThisMachine) {
    for (const char* host : {"localhost", "127.0.0.1", "127.1.2.3", "::1", "::ffff:127.0.0.1"}) {
        EXPECT_TRUE(IsLoopback(host)) << host;
    }
    for (const char* host : {"0.0.0.0", "::", "10.0.0.1", "localhost.example", "128.0.0.1", ""}) {
        EXPECT_FALSE(IsLoopback(host)) << host;
    }
}

}  // namespace
}  // namespace kalvex::platform

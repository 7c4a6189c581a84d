// How much may wait to be written.
#include "server/StoreQueue.h"

#include <gtest/gtest.h>

namespace kalvex::server {
namespace {

TEST(StoreQueueTest, LongTokensTakeRoom) {
    StoreQueue queue({.clients = 20000, .urgent = 40000, .background = 1});
    const std::string token(1000, 't');
    for (int serial = 1; serial <= 5; ++serial) {
        EXPECT_TRUE(queue.HasRoomForClients()) << serial;
        queue.Push({SaveAnswer{token, 1, serial, 0}}, StoreUrgency::Now, {});
    }
    for (int count = 0; count < 3; ++count) {
        queue.Push({DropAnswers{token, 0}}, StoreUrgency::Now, {});
    }
    EXPECT_FALSE(queue.HasRoomForClients());
}

}  // namespace
}  // namespace kalvex::server

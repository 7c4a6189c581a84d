#include "vantrel/ConversationSlots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace kalvex::vantrel {
namespace {

using Standing = ConversationSlots::Standing;

class ConversationSlotsTest : public testing::Test {
  protected:
    // "+", with the number of the one that goes for it; "-" when there is no room.
    std::string Enter(const std::string& address, bool isKnown = false) {
        const ConversationSlots::Entry entry = m_slots.Enter(++m_number, address, isKnown, 8);
        return entry.isTaken ? "+" + (entry.leaves == 0 ? "" : std::to_string(entry.leaves)) : "-";
    }

    ConversationSlots m_slots;
    std::uint64_t m_number = 0;
};

TEST_F(ConversationSlotsTest, QuarterMayBeOfOneAddress) {
    EXPECT_EQ(Enter("a"), "+");
    EXPECT_EQ(Enter("a"), "+");
    EXPECT_EQ(Enter("b"), "+");
    EXPECT_EQ(Enter("a"), "+1");
    EXPECT_EQ(Enter("a"), "+2");
    m_slots.OnLogin(4);
    EXPECT_EQ(Enter("a"), "+");
    EXPECT_EQ(Enter("a", true), "+5");
}

TEST_F(ConversationSlotsTest, StrangersLeaveAQuarterToThoseWhoAreKnown) {
    for (const char* address : {"a", "b", "c", "d", "e", "f"}) EXPECT_EQ(Enter(address), "+");
    EXPECT_EQ(Enter("g"), "+1");
    EXPECT_EQ(Enter("h", true), "+");
    EXPECT_EQ(Enter("i", true), "+");
    EXPECT_EQ(Enter("j", true), "+2");
    EXPECT_EQ(Enter("k"), "+3");
}

TEST_F(ConversationSlotsTest, WhoHasLoggedInStays) {
    for (int number = 1; number <= 8; ++number) {
        EXPECT_EQ(Enter("a"), "+");
        m_slots.OnLogin(static_cast<std::uint64_t>(number));
    }
    EXPECT_EQ(Enter("b", true), "-");
    m_slots.Leave(5);
    EXPECT_EQ(Enter("b", true), "+");
    EXPECT_EQ(Enter("c", true), "+10");
    m_slots.Leave(11);
    EXPECT_EQ(Enter("d"), "+");
}

TEST_F(ConversationSlotsTest, WhosePasswordIsCheckedGoesLast) {
    Enter("a");
    Enter("a");
    m_slots.SetStanding(1, Standing::Checked);
    EXPECT_EQ(Enter("a"), "+2");
    m_slots.SetStanding(3, Standing::Checked);
    EXPECT_EQ(Enter("a"), "+1");
    m_slots.SetStanding(4, Standing::Checked);
    m_slots.SetStanding(3, Standing::Silent);
    EXPECT_EQ(Enter("a"), "+3");
}

TEST_F(ConversationSlotsTest, WhoHasAKnownTokenDoesNotGo) {
    Enter("a");
    Enter("a");
    m_slots.SetStanding(1, Standing::Known);
    EXPECT_EQ(Enter("a"), "+2");
    m_slots.SetStanding(3, Standing::Known);
    EXPECT_EQ(Enter("a"), "+");
    for (std::uint64_t number = 5; number <= 8; ++number) {
        Enter("b");
        m_slots.OnLogin(number);
    }
    EXPECT_EQ(Enter("c"), "+");
    m_slots.SetStanding(4, Standing::Known);
    m_slots.SetStanding(9, Standing::Known);
    EXPECT_EQ(Enter("d"), "-");
}

}  // namespace
}  // namespace kalvex::vantrel

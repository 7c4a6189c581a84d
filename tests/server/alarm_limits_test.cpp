// The keys of alarms in a configuration.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "server/Definitions.h"
#include "support/scratch_folder.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;

class AlarmLimitsTest : public testing::Test {
  protected:
    bool Load(std::string_view toml) {
        const bool loaded = LoadDefinitions(m_folder.Put("plant.toml", toml),
                                            platform::Translator(), m_definitions, m_errors);
        for (std::string& error : m_errors) error.erase(0, m_folder.Path("").size());
        return loaded;
    }

    support::ScratchFolder m_folder;
    Definitions m_definitions;
    std::vector<std::string> m_errors;
};

TEST_F(AlarmLimitsTest, AreKeysOfAVariable) {
    m_folder.Put("a.csv",
                 "name;type;ll;l;h;hh;hysteresis;alarm-delay;rate;stale\n"
                 "A;int;-2;-1;1;1;2;86400;0.5;31536000\nB;;;;;;;;;\n");
    ASSERT_TRUE(
        Load("[[access]]\nacknowledge = \"zmiana\"\n[[access]]\n[[variables]]\nfile = "
             "\"a.csv\"\n"));
    const AlarmLimits& limits = *m_definitions.variables[0].alarms;
    EXPECT_THAT((std::vector{limits.lowLow, limits.low, limits.high, limits.highHigh, limits.rate}),
                ElementsAre(-2, -1, 1, 1, 0.5));
    EXPECT_EQ(limits.hysteresis, 2);
    EXPECT_EQ(limits.delay, 86400);
    EXPECT_EQ(limits.stale, 31536000);
    EXPECT_EQ(m_definitions.variables[1].alarms, nullptr);
    EXPECT_EQ(m_definitions.access[0].acknowledge, "zmiana");
    EXPECT_EQ(m_definitions.access[1].acknowledge, "50");
}

TEST_F(AlarmLimitsTest, WrongOnesAreToldByTheirKeys) {
    m_folder.Put("a.csv",
                 "name;type;ll;l;h;hh;hysteresis;alarm-delay;rate;stale;signal\n"
                 "A;;x;;;;;;;;\nA;;;;;;-1;;;;\nA;;;;;;;86401;;;\nA;;;;;;;-1;;;\nA;;;;;;;;0;;\n"
                 "A;;;;;;;;;0;\nA;;;;;;;;;31536001;\nA;;2;1;;;;;;;\nA;;;1;1;;;;;;\n"
                 "A;;;;2;1;;;;;\nA;;1;;;0;;;;;\nA;;;0;2;;2.1;;;;\nA;text;;;;1;;;;;\n"
                 "A;text;;;;;;5;;;\nA;;;;;;;;;5;counter rate=1\nA;;;;inf;;;;;;\n");
    EXPECT_FALSE(Load("[[variables]]\nfile = \"a.csv\"\n"));
    const std::string ascend = "granice muszą rosnąć: ll <= l < h <= hh";
    EXPECT_THAT(
        m_errors,
        ElementsAre("a.csv:2: ll: oczekiwano liczby",
                    "a.csv:3: hysteresis: oczekiwano liczby nie mniejszej od 0",
                    "a.csv:4: alarm-delay: oczekiwano liczby całkowitej od 0 do 86400",
                    "a.csv:5: alarm-delay: oczekiwano liczby całkowitej od 0 do 86400",
                    "a.csv:6: rate: oczekiwano liczby większej od 0",
                    "a.csv:7: stale: oczekiwano liczby całkowitej od 1 do 31536000",
                    "a.csv:8: stale: oczekiwano liczby całkowitej od 1 do 31536000",
                    "a.csv:9: l: " + ascend, "a.csv:10: h: " + ascend, "a.csv:11: hh: " + ascend,
                    "a.csv:12: hh: " + ascend,
                    "a.csv:13: hysteresis: hysteresis nie może być większa od odstępu granicy "
                    "górnej od dolnej",
                    "a.csv:14: hh: zmienna tekstowa nie może mieć alarmów",
                    "a.csv:15: alarm-delay: zmienna tekstowa nie może mieć alarmów",
                    "a.csv:16: stale: wartość, którą wyznacza sygnał, jest zawsze aktualna",
                    "a.csv:17: h: oczekiwano liczby"));
}

}  // namespace
}  // namespace kalvex::server

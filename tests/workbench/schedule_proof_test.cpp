// The next times of a line, as the script will really pass it.
#include "workbench/model/ScheduleProof.h"

#include <gmock/gmock.h>

#include "support/script_world.h"
#include "support/zone_scope.h"
#include "value/LocalTimeText.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ScheduleProofTest : public support::ScriptWorld {
  protected:
    static std::int64_t At(std::string_view time) { return *value::ParseLocalTime(time); }

    ScheduleProof Prove(const std::string& line, std::string_view start) {
        return ProveSchedule(Open(line), 0, At(start));
    }

    // Date and zone, with the day and the note of those on which the clocks change, or the remarks
    // where there is no time.
    static std::vector<std::string> Told(const ScheduleProof& proof, std::size_t most) {
        std::vector<std::string> told;
        for (const ScheduleFiring& firing : proof.firings) {
            if (told.size() == most) break;
            std::string text = (firing.fires ? "" : "- ") + firing.date + " " + firing.zone;
            if (!firing.note.empty()) {
                text += " " + text::ToUtf8(firing.day) + " | " + text::ToUtf8(firing.note);
            }
            told.push_back(text);
        }
        return told;
    }
    static std::vector<std::string> Remarks(const ScheduleProof& proof) {
        std::vector<std::string> remarks;
        for (const std::string& remark : proof.remarks) remarks.push_back(text::ToUtf8(remark));
        return remarks;
    }

    support::ZoneScope zone{"Europe/Warsaw"};
};

TEST_F(ScheduleProofTest, LinesThatHaveASchedule) {
    engine::CKalvexDoc& document = Open(
        "waitfor 12\n\tSLEEP 5\nIF CHECK_EVENT_TIME @daily GOTO a\nSET A = CHECK_EVENT_TIME B\n"
        "SET A = 1 ; CHECK_EVENT_TIME B\n; CHECK_EVENT_TIME B\n:SLEEP\nSET A = check_event_time "
        "B\n");
    std::vector<bool> has;
    for (int line = 0; line < document.Text().GetLineCount(); ++line)
        has.push_back(HasSchedule(document, line));
    EXPECT_THAT(has, ElementsAre(true, true, true, true, false, false, false, false, false));
    EXPECT_THAT(ProveSchedule(document, 4, 0).firings, IsEmpty());
}

TEST_F(ScheduleProofTest, NightOfSpringLeavesAnHourOut) {
    const ScheduleProof proof =
        Prove("IF CHECK_EVENT_TIME \"0 30 2 * * *\" GOTO a", "2024-03-30 00:00:00");
    EXPECT_THAT(Told(proof, 3),
                ElementsAre("2024-03-30 02:30:00 CET",
                            "- 2024-03-31 03:00:00 CEST niedziela | zmiana czasu tej doby: zegar "
                            "przechodzi z 02:00 na 03:00; tej doby nie ma żadnego terminu",
                            "2024-04-01 02:30:00 CEST"));
    EXPECT_EQ(proof.firings.size(), kFiringsShown + 1);
    EXPECT_THAT(proof.remarks, IsEmpty());
    EXPECT_FALSE(proof.never);
}

TEST_F(ScheduleProofTest, NightOfAutumnHasAnHourTwice) {
    const ScheduleProof proof =
        Prove("IF CHECK_EVENT_TIME \"0 30 2 * * *\" GOTO a", "2024-10-26 03:00:00");
    const std::string note = "niedziela | zmiana czasu tej doby: zegar przechodzi z 03:00 na 02:00";
    EXPECT_THAT(Told(proof, 3),
                ElementsAre("2024-10-27 02:30:00 CEST " + note, "2024-10-27 02:30:00 CET " + note,
                            "2024-10-28 02:30:00 CET"));
    EXPECT_EQ(text::ToUtf8(proof.firings[2].day), "poniedziałek");
    EXPECT_FALSE(proof.firings[2].clocksChange);
    EXPECT_TRUE(proof.firings[1].clocksChange);
}

TEST_F(ScheduleProofTest, EntryThatNeverFitsSaysWhy) {
    const auto why = [this](const std::string& entry) {
        const ScheduleProof proof =
            Prove("IF CHECK_EVENT_TIME \"" + entry + "\" GOTO a", "2024-03-30 00:00:00");
        EXPECT_TRUE(proof.never);
        EXPECT_THAT(proof.firings, IsEmpty());
        return Remarks(proof).at(0);
    };
    EXPECT_EQ(why("0 0 0 30 2 *"),
              "Wpis \"0 0 0 30 2 *\" nie wystąpi ani razu do końca roku 2064.");
    EXPECT_EQ(why("5-3 * * * * *"),
              "Wpis \"5-3 * * * * *\" nie wystąpi ani razu do końca roku 2064.");
    EXPECT_EQ(why("0 0 12 * *"),
              "Wpis \"0 0 12 * *\" nie pasuje do żadnej chwili: ma pól: 5, a musi mieć 6 (sekunda, "
              "minuta, godzina, dzień miesiąca, miesiąc, dzień tygodnia). Warunek nigdy nie będzie "
              "spełniony.");
    EXPECT_EQ(why("0 61 12 * * *"),
              "Wpis \"0 61 12 * * *\" nie pasuje do żadnej chwili: pole \"61\" (minuta) jest "
              "niezrozumiałe albo wychodzi poza zakres. Warunek nigdy nie będzie spełniony.");
    EXPECT_EQ(
        why("@Daily"),
        "Wpis \"@Daily\" nie pasuje do żadnej chwili: takiego słowa z @ nie ma (wielkość liter "
        "ma znaczenie). Warunek nigdy nie będzie spełniony.");
}

TEST_F(ScheduleProofTest, RareTimesAreFound) {
    const ScheduleProof proof =
        Prove("IF CHECK_EVENT_TIME \"0 0 0 29 2 *\" GOTO a", "2024-03-30 00:00:00");
    EXPECT_EQ(proof.firings.size(), 10u);
    EXPECT_THAT(Told(proof, 2), ElementsAre("2028-02-29 00:00:00 CET", "2032-02-29 00:00:00 CET"));
    EXPECT_THAT(
        Told(Prove("IF CHECK_EVENT_TIME \"0 0 0 29 Feb */4\" GOTO a", "2024-03-30 00:00:00"), 1),
        ElementsAre("2032-02-29 00:00:00 CET"));
}

TEST_F(ScheduleProofTest, FormsOfTheQuestion) {
    ScheduleProof proof = Prove("SET X = CHECK_EVENT_TIME @hourly 60", "2024-03-30 00:00:01");
    EXPECT_THAT(Remarks(proof),
                ElementsAre("Warunek jest spełniony już na 59 s przed każdą z tych chwil."));
    EXPECT_THAT(Told(proof, 1), ElementsAre("2024-03-30 01:00:00 CET"));

    proof = Prove("SET X = CHECK_EVENT_TIME @daily 1711839600", "2024-03-30 00:00:01");
    EXPECT_THAT(Remarks(proof),
                ElementsAre("Linia pyta o stałą chwilę 2024-03-31 00:00:00: warunek "
                            "jest spełniony, o każdej porze."));
    EXPECT_FALSE(proof.never);
    proof = Prove("SET X = CHECK_EVENT_TIME @daily 1711839601 5", "2024-03-30 00:00:01");
    EXPECT_THAT(Remarks(proof),
                ElementsAre("Linia pyta o stałą chwilę 2024-03-31 00:00:01: warunek "
                            "nie jest spełniony, o żadnej porze."));
    EXPECT_TRUE(proof.never);

    proof = Prove("SET X = CHECK_EVENT_TIME @hourly 1711839600 1711843200", "2024-03-30 00:00:01");
    EXPECT_THAT(Remarks(proof), ElementsAre("Warunek może być spełniony tylko od 2024-03-31 "
                                            "00:00:00 do 2024-03-31 01:00:00."));
    EXPECT_THAT(Told(proof, 3).size(), 2u);
    proof = Prove("SET X = CHECK_EVENT_TIME @hourly 1711839600 1711843200", "2024-04-30 00:00:01");
    EXPECT_EQ(Remarks(proof).back(), "W tym przedziale wpis \"@hourly\" już nie wystąpi.");
    EXPECT_TRUE(proof.never);
}

TEST_F(ScheduleProofTest, VariablesAreReadAsTheyStand) {
    const std::string script =
        "LOCAL HARM = \"0 0 6 * * *\"\nPOINTER P\nSETPTR P = \"HARM\"\nREMOTE PUSTA srv@V\n"
        "IF CHECK_EVENT_TIME P GOTO a\nIF CHECK_EVENT_TIME PUSTA GOTO a\n:a\n";
    engine::CKalvexDoc& idle = Open(script);
    EXPECT_THAT(Remarks(ProveSchedule(idle, 4, At("2024-03-30 00:00:00"))),
                ElementsAre("Zmienna P nie ma teraz wartości, więc terminy nie są znane."));
    engine::CKalvexDoc& document = Run(script + "SLEEP 60\n");
    const std::string error = Error(document);
    EXPECT_THAT(Told(ProveSchedule(document, 4, At("2024-03-30 00:00:00")), 1),
                ElementsAre("2024-03-30 06:00:00 CET"));
    EXPECT_THAT(Remarks(ProveSchedule(document, 5, At("2024-03-30 00:00:00"))),
                ElementsAre("Zmienna PUSTA nie ma teraz wartości, więc terminy nie są znane."));
    EXPECT_EQ(Error(document), error);
}

TEST_F(ScheduleProofTest, SeveralConditionsShowTheFirst) {
    const ScheduleProof proof =
        Prove("IF CHECK_EVENT_TIME @daily THEN CHECK_EVENT_TIME @hourly", "2024-03-30 00:00:01");
    EXPECT_THAT(Remarks(proof), ElementsAre("Linia ma kilka warunków CHECK_EVENT_TIME; to są "
                                            "terminy pierwszego."));
    EXPECT_THAT(Told(proof, 1), ElementsAre("2024-03-31 00:00:00 CET niedziela | zmiana czasu tej "
                                            "doby: zegar przechodzi z 02:00 na 03:00"));
}

TEST_F(ScheduleProofTest, ConditionThatCannotBeEvaluated) {
    const ScheduleProof proof = Prove("IF CHECK_EVENT_TIME GOTO a", "2024-03-30 00:00:00");
    EXPECT_THAT(Remarks(proof), ElementsAre("Linia zgłasza błąd: wyrażenia CHECK_EVENT_TIME nie "
                                            "można obliczyć."));
    EXPECT_TRUE(proof.never);
}

// The script itself, second by second.
std::vector<std::int64_t> Passed(engine::CKalvexDoc& document, engine::TickRunner& ticks,
                                 platform::VirtualClock& clock, std::size_t count) {
    std::vector<std::int64_t> times;
    operands::CVariable& counter = *document.Variables().Find("N");
    int last = 0;
    for (int second = 0; second < 40 * 86400 && times.size() < count; ++second) {
        ticks.RunTick();
        value::CVal value;
        counter.GetValue(value, value::KindCurrent, 1);
        if (value::ValueToInt(value) != last) times.push_back(clock.Now());
        last = value::ValueToInt(value);
        clock.Advance(1000);
    }
    return times;
}

TEST_F(ScheduleProofTest, WaitForPassesAsTheScriptDoes) {
    for (const char* const times : {"2:30.00", "23:59.59, 1:00.00", "30:00.00", "59.59", "17"}) {
        for (const char* const start : {"2024-03-30 23:59:58", "2024-10-26 22:00:00"}) {
            engine::CKalvexDoc& document = Open(std::string("LOCAL N = 0\nWAITFOR ") + times +
                                                "\nSET N = N + 1\nGOTO d\n:d\n");
            clock = platform::VirtualClock(At(start));
            document.Start();
            document.SetPriority(1);
            ticks.RunTick();
            const ScheduleProof proof = ProveSchedule(document, 1, clock.Now());
            std::vector<std::int64_t> proved;
            for (const ScheduleFiring& firing : proof.firings) {
                if (firing.fires && proved.size() < 2) proved.push_back(firing.time);
            }
            EXPECT_EQ(Passed(document, ticks, clock, proved.size()), proved) << times << start;
            EXPECT_EQ(proved.size(), 2u);
            ticks.Remove(document);
            documents.clear();
        }
    }
}

TEST_F(ScheduleProofTest, WaitForSaysHowItReadsItsTimes) {
    ScheduleProof proof = Prove("WAITFOR 6:05.00, 1:30 , 30.15", "2024-05-30 00:00:00");
    EXPECT_THAT(
        Remarks(proof),
        ElementsAre("\"6:05.00\" znaczy: raz na dobę o 06:05:00.",
                    "\"1:30\" znaczy: co minutę, w sekundzie 01.",
                    "\"30.15\" znaczy: co godzinę, w minucie 30 i sekundzie 15.",
                    "Skrypt rusza w sekundzie po zapisanej porze. Jeśli w niej nie dotrze do "
                    "tej linii, czeka na następną porę."));
    EXPECT_THAT(Told(proof, 1), ElementsAre("2024-05-30 00:00:02 CEST"));
}

TEST_F(ScheduleProofTest, WaitForDriftsAfterTheNightOfSpring) {
    const ScheduleProof proof = Prove("WAITFOR 2:30.00", "2024-03-30 00:00:00");
    EXPECT_THAT(Told(proof, 3),
                ElementsAre("2024-03-30 02:30:01 CET",
                            "2024-03-31 03:30:01 CEST niedziela | zmiana czasu tej doby: zegar "
                            "przechodzi z 02:00 na 03:00; poza zapisaną porą",
                            "2024-04-01 03:30:01 CEST poniedziałek | poza zapisaną porą"));
}

TEST_F(ScheduleProofTest, WaitForThatFails) {
    EXPECT_THAT(Remarks(Prove("WAITFOR", "2024-03-30 00:00:00")),
                ElementsAre("Linia zgłasza błąd: nie podano pory."));
    EXPECT_THAT(Remarks(Prove("WAITFOR noc", "2024-03-30 00:00:00")),
                ElementsAre("Linia zgłasza błąd: \"noc\" nie jest porą."));
    const ScheduleProof commas = Prove("WAITFOR , ,", "2024-03-30 00:00:00");
    EXPECT_THAT(Remarks(commas),
                ElementsAre("Linia nie podaje żadnej pory: skrypt czeka na niej bez końca."));
    EXPECT_TRUE(commas.never);
}

TEST_F(ScheduleProofTest, SleepFromTheStartAndUnderWay) {
    EXPECT_THAT(Told(Prove("SLEEP 1:00.00", "2024-03-31 01:30:00"), 2),
                ElementsAre("2024-03-31 03:30:00 CEST niedziela | zmiana czasu tej doby: zegar "
                            "przechodzi z 02:00 na 03:00",
                            "2024-03-31 04:30:00 CEST niedziela | zmiana czasu tej doby: zegar "
                            "przechodzi z 02:00 na 03:00"));
    engine::CKalvexDoc& document = Run("SLEEP 1:30.05\n");
    clock.Advance(60'000);
    const ScheduleProof proof = ProveSchedule(document, 0, clock.Now());
    EXPECT_THAT(Told(proof, 1), ElementsAre("2024-03-10 08:30:05 CET"));
    EXPECT_THAT(Remarks(proof),
                ElementsAre("Skrypt już czeka na tej linii.",
                            "Linia zatrzymuje skrypt na 1:30:05. Kolejne chwile są takie, gdyby od "
                            "razu do niej wracał."));
    EXPECT_EQ(proof.firings.size(), kFiringsShown);
}

TEST_F(ScheduleProofTest, SleepThatDoesNotWait) {
    const ScheduleProof proof = Prove("SLEEP 0", "2024-03-30 00:00:00");
    EXPECT_THAT(Remarks(proof), ElementsAre("Linia przepuszcza skrypt od razu."));
    EXPECT_THAT(proof.firings, IsEmpty());
    EXPECT_FALSE(proof.never);
    EXPECT_THAT(Remarks(Prove("SLEEP x", "2024-03-30 00:00:00")),
                ElementsAre("Linia zgłasza błąd: \"x\" nie jest porą."));
}

}  // namespace
}  // namespace kalvex::workbench

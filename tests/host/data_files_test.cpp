#include "host/DataFiles.h"

#include "support/host_world.h"

namespace kalvex::host {
namespace {

using DataFilesTest = support::HostWorld;

TEST_F(DataFilesTest, WriteMakesAMissingFileWithOneSection) {
    EXPECT_EQ(
        Run({"LOCAL PLIK = \"recepta.txt\"", "LOCAL NR = \"R1\"", "LOCAL A = 5", "LOCAL B = 2.5",
             "LOCAL T = \"gaz ziemny\"", "LOCAL W = WRITE_FILE PLIK NR -A A B T"}),
        "done");
    EXPECT_EQ(Get("recepta.txt"), "[R1]\r\nA:5.00\r\nB:2.50\r\nT:gaz ziemny\r\n");
    EXPECT_EQ(Typed("W"), "150:1");
    EXPECT_FALSE(Has("recepta.bak"));
}

TEST_F(DataFilesTest, WriteKeepsTheOldFileAsBackupByteForByte) {
    Put("dane.txt", "; ciśnienie\nA:1\n[R1]\nA:10\nC:3\n[R2]\nA:20");
    Put("dane.bak", "stary");
    EXPECT_EQ(Run({"LOCAL PLIK = \"dane.txt\"", "LOCAL NR = \"R1\"", "LOCAL A = 11.5",
                   "LOCAL B = 12.25", "WRITE_FILE PLIK NR -A A B"}),
              "done");
    EXPECT_EQ(Get("dane.txt"),
              "; ciśnienie\r\nA:1\r\n[R1]\r\nA:11.50\r\nC:3\r\nB:12.25\r\n[R2]\r\nA:20\r\n");
    EXPECT_EQ(Get("dane.bak"), "; ciśnienie\nA:1\n[R1]\nA:10\nC:3\n[R2]\nA:20");
}

TEST_F(DataFilesTest, WriteOfExactlyTheSelectedVariablesIsASuccessThatTheFunctionReportsAsNothing) {
    Put("dane.txt", "[12]\nA:9\nB:8\n");
    EXPECT_EQ(Run({"LOCAL PLIK = \"dane.txt\"", "LOCAL NR = 12", "LOCAL A = 1.5", "LOCAL B = 2.5",
                   "LOCAL W = WRITE_FILE PLIK NR -A A B", "WRITE_FILE PLIK NR -A A B"}),
              "done");
    EXPECT_EQ(Text("W"), "0");
    EXPECT_EQ(Get("dane.txt"), "[12]\r\nA:1.50\r\nB:2.50\r\n");
}

TEST_F(DataFilesTest, WriteWithoutSectionGrowsAJournal) {
    EXPECT_EQ(Run({"LOCAL PLIK = \"dziennik.txt\"", "LOCAL A = 1.5", "WRITE_FILE PLIK -A A",
                   "SET A = 2.5", "WRITE_FILE PLIK -A A", "SET A = 3.5",
                   "LOCAL W = WRITE_FILE PLIK -A A"}),
              "done");
    EXPECT_EQ(Get("dziennik.txt"), "[1]\r\nA:1.50\r\n[2]\r\nA:2.50\r\n[3]\r\nA:3.50\r\n");
    EXPECT_EQ(Get("dziennik.bak"), "[1]\r\nA:1.50\r\n[2]\r\nA:2.50\r\n");
    EXPECT_EQ(Text("W"), "1");
}

TEST_F(DataFilesTest, WriteWithoutOptionTakesAllVariablesInOrderOfDeclaration) {
    EXPECT_EQ(Run({"LOCAL B = 2", "LOCAL A = 1", "WRITE_FILE \"d.txt\" \"S\""}), "done");
    EXPECT_EQ(Get("d.txt"), "[S]\r\nB:2.00\r\nA:1.00\r\n");
}

TEST_F(DataFilesTest, OptionsNameWhatIsTreatedOrWhatIsNot) {
    EXPECT_EQ(Run({"LOCAL A = 1", "LOCAL B = 2", "LOCAL C = 3", "WRITE_FILE \"a.txt\" S -a C A X",
                   "WRITE_FILE \"r.txt\" S -r C X", "WRITE_FILE \"m.txt\" S - R A"}),
              "done");
    EXPECT_EQ(Get("a.txt"), "[S]\r\nA:1.00\r\nC:3.00\r\n");
    EXPECT_EQ(Get("r.txt"), "[S]\r\nA:1.00\r\nB:2.00\r\n");
    EXPECT_EQ(Get("m.txt"), "[S]\r\nB:2.00\r\nC:3.00\r\n");
}

TEST_F(DataFilesTest, LoneMinusTakesTheNextTokenForASection) {
    EXPECT_EQ(Run({"LOCAL A = 1", "WRITE_FILE \"d.txt\" - 5 -A A"}), "done");
    EXPECT_EQ(Get("d.txt"), "[-5]\r\nA:1.00\r\n");
}

TEST_F(DataFilesTest, VariableWithoutAReadableValueKeepsItsOldLine) {
    Put("d.txt", "[S]\nL:7\nZ:8\n");
    EXPECT_EQ(Run({"LIST L", "REMOTE Z srv@Z", "WRITE_FILE \"d.txt\" S -A L Z"}), "done");
    EXPECT_EQ(Get("d.txt"), "[S]\r\nL:7\r\nZ:8\r\n");
}

TEST_F(DataFilesTest, PointerWritesItsTarget) {
    EXPECT_EQ(Run({"LOCAL A = 1", "POINTER P", "SETPTR P = \"A\"", "WRITE_FILE \"d.txt\" S -A P"}),
              "done");
    EXPECT_EQ(Get("d.txt"), "[S]\r\nA:1.00\r\n");
}

TEST_F(DataFilesTest, SetWritesOneValueForEachVariable) {
    EXPECT_EQ(
        Run({"LOCAL NR = \"POMPY\"", "LOCAL WART = \"zamknięta\"", "LOCAL A = 1", "LOCAL B = 2",
             "LOCAL F", "SET_FILE \"stan.txt\" NR WART -A A B",
             "SET_FILE \"stan.txt\" NR 7.25 -A B", "SET F = SET_FILE \"stan.txt\" NR - 3.00 -A A"}),
        "done");
    EXPECT_EQ(Get("stan.txt"), "[POMPY]\r\nA:-3\r\nB:7.25\r\n");
    EXPECT_EQ(Get("stan.bak"), "[POMPY]\r\nA:zamknięta\r\nB:7.25\r\n");
    EXPECT_EQ(Text("A"), "1.00");
    EXPECT_EQ(Text("F"), "1");
}

TEST_F(DataFilesTest, SetWithoutAValueWritesZeros) {
    EXPECT_EQ(Run({"LOCAL A = 1", "LOCAL B = \"x\"", "SET_FILE \"a.txt\" S",
                   "SET_FILE \"b.txt\" -A B", "SET_FILE \"c.txt\" S \"\" -A A"}),
              "done");
    EXPECT_EQ(Get("a.txt"), "[S]\r\nA:0\r\nB:0\r\n");
    EXPECT_EQ(Get("b.txt"), "[1]\r\nB:0\r\n");
    EXPECT_EQ(Get("c.txt"), "[S]\r\nA:0\r\n");
}

TEST_F(DataFilesTest, ReadTakesOneSection) {
    Put("recepta.txt",
        "A:100\n[4]\nA:40\n[5]\nA:50.5\n B  : 7\nT:12:30:00\nOBCA:1\nbez znaku\n"
        "[6]\nA:60\nC:60\n");
    EXPECT_EQ(Run({"LOCAL A = 1", "LOCAL B", "LOCAL T = \"x\"", "LOCAL C = 4", "LOCAL NR = 5",
                   "LOCAL W = READ_FILE \"recepta.txt\" NR"}),
              "done");
    EXPECT_EQ(Text("W"), "1");
    EXPECT_EQ(Text("A"), "50.50");
    EXPECT_EQ(Text("B"), "7.00");
    EXPECT_EQ(Text("T"), "12:30:00");
    EXPECT_EQ(Text("C"), "4.00");
}

TEST_F(DataFilesTest, ReadWithoutSectionLetsTheLastValueStandAndWithAListTheFirst) {
    Put("dane.txt", "A:1\n[1]\nA:2\n[2]\nA:3\n");
    EXPECT_EQ(Run({"LOCAL A = 0", "LOCAL B", "LOCAL C", "READ_FILE \"dane.txt\"", "SET B = A",
                   "READ_FILE \"dane.txt\" -A A", "SET C = A", "READ_FILE \"dane.txt\" -A A A"}),
              "done");
    EXPECT_EQ(Text("B"), "3.00");
    EXPECT_EQ(Text("C"), "1.00");
    EXPECT_EQ(Text("A"), "1.00");
}

TEST_F(DataFilesTest, ReadOfAllButPassesOverTheNameOnce) {
    Put("dane.txt", "A:1\nB:1\nA:2\n");
    EXPECT_EQ(Run({"LOCAL A = 0", "LOCAL B = 0", "READ_FILE \"dane.txt\" -R A"}), "done");
    EXPECT_EQ(Text("A"), "2.00");
    EXPECT_EQ(Text("B"), "1.00");
}

TEST_F(DataFilesTest, ReadReportsDataForANameThatTheOptionPassedOver) {
    Put("dane.txt", "A:1\n");
    EXPECT_EQ(Run({"LOCAL A = 0", "LOCAL B = 5", "LOCAL W = READ_FILE \"dane.txt\" -A B"}), "done");
    EXPECT_EQ(Text("W"), "1");
    EXPECT_EQ(Text("A"), "0.00");
    EXPECT_EQ(Text("B"), "5.00");
}

TEST_F(DataFilesTest, ReadOfAMissingSectionOrOfStrangersHasNothing) {
    Put("dane.txt", "X:1\n[1]\nA:1\n");
    EXPECT_EQ(Run({"LOCAL A = 0", "LOCAL V = READ_FILE \"dane.txt\" 2", "LOCAL W = 7",
                   "SET W = READ_FILE \"dane.txt\" 2", "READ_FILE \"dane.txt\" 2"}),
              "done");
    EXPECT_EQ(Text("W"), "0");
    EXPECT_EQ(Text("A"), "0.00");
}

TEST_F(DataFilesTest, ReadBuildsIntegersFromTheTextAndTheRestFromTheNumber) {
    Put("dane.txt", "N:9007199254740993\nI:12.7\nT:007\nD: 1e3 \nZ:007\n");
    EXPECT_EQ(Run({"LIST L", "LOCAL N = TIME", "LOCAL I = L.COUNT", "LOCAL T = \"x\"",
                   "LOCAL D = 1.5", "LOCAL Z", "READ_FILE \"dane.txt\""}),
              "done");
    EXPECT_EQ(Typed("N"), "160:9007199254740993");
    EXPECT_EQ(Typed("I"), "150:12");
    EXPECT_EQ(Typed("T"), "190:7.00");
    EXPECT_EQ(Typed("D"), "171:1000.00");
    EXPECT_EQ(Typed("Z"), "171:7.00");
}

TEST_F(DataFilesTest, ReadOfATextOrOfNothingMakesAnyVariableAText) {
    Put("dane.txt", "A:otwarty zawór\nB:\n");
    EXPECT_EQ(Run({"LOCAL A = 1", "LOCAL B = 2", "READ_FILE \"dane.txt\""}), "done");
    EXPECT_EQ(Text("A"), "otwarty zawór");
    EXPECT_EQ(Typed("B"), "190:");
}

TEST_F(DataFilesTest, ReadLeavesWhatTheFileDoesNotHold) {
    Put("dane.txt", "A:1\n");
    EXPECT_EQ(Run({"LOCAL A = 0", "LOCAL B = 5", "READ_FILE \"dane.txt\" -A A B"}), "done");
    EXPECT_EQ(Text("A"), "1.00");
    EXPECT_EQ(Text("B"), "5.00");
}

TEST_F(DataFilesTest, WhatWasWrittenReadsBack) {
    EXPECT_EQ(Run({"LOCAL A = 12.125", "LOCAL B = \"opis: zawór 3\"", "LOCAL S = \"ŻÓŁĆ\"",
                   "WRITE_FILE \"kopia.txt\" S -A A B", "SET A = 0", "SET B = \"nic\"",
                   "READ_FILE \"kopia.txt\" S -A A B"}),
              "done");
    EXPECT_EQ(Get("kopia.txt"), "[ŻÓŁĆ]\r\nA:12.125\r\nB:opis: zawór 3\r\n");
    EXPECT_EQ(Text("A"), "12.125");
    EXPECT_EQ(Text("B"), "opis: zawór 3");
}

TEST_F(DataFilesTest, PathIsRelativeToTheRootOrAbsoluteAndABackslashCountsAsASlash) {
    folder.MakeFolder("dane/dział");
    paths = platform::Paths(folder.Path(), folder.Path("dane"));
    EXPECT_EQ(Run({"LOCAL A = 1", "WRITE_FILE \"dział\\b.txt\" S -A A",
                   "WRITE_FILE \"" + PathOf("c.txt") + "\" S -A A"}),
              "done");
    EXPECT_EQ(Get("dane/dział/b.txt"), "[S]\r\nA:1.00\r\n");
    EXPECT_EQ(Get("c.txt"), "[S]\r\nA:1.00\r\n");
}

TEST_F(DataFilesTest, MissingPathIsNamedSo) {
    EXPECT_EQ(Run({"READ_FILE"}), "1: 8");
    EXPECT_EQ(Run({"WRITE_FILE \"\""}), "1: 8");
    EXPECT_EQ(Run({"SET_FILE \"\" -A A"}), "1: 8");
}

TEST_F(DataFilesTest, FileThatDoesNotOpenHoldsTheStatementAndNotTheFunction) {
    const std::string path = PathOf("niema.txt");
    EXPECT_EQ(Run({"LOCAL PLIK = \"niema.txt\"", "LOCAL W = READ_FILE PLIK", "READ_FILE PLIK"}),
              "3: 9 " + path);
    EXPECT_EQ(Text("W"), "0");
    EXPECT_EQ(Run({"READ_FILE \"niema.txt\" -A A"}), "1: 9 " + path);
    EXPECT_EQ(Run({"WRITE_FILE \"nie/ma/x.txt\" \"S\""}), "1: 9 " + PathOf("nie/ma/x.txt"));
}

TEST_F(DataFilesTest, PathOrSectionThatIsNoVariableShowsThatErrorFirst) {
    EXPECT_EQ(Run({"READ_FILE niema.txt"}), "1: 3 niema.txt");
    EXPECT_EQ(Run({"LOCAL PLIK = \"niema.txt\"", "READ_FILE PLIK 5"}), "2: 3 5");
    EXPECT_EQ(Run({"READ_FILE \"\" 5"}), "1: 3 5");
}

TEST_F(DataFilesTest, NameThatIsNoVariableDoesNoHarmToASuccess) {
    EXPECT_EQ(Run({"LOCAL A = 1", "WRITE_FILE d.txt 5 -A A"}), "done");
    EXPECT_EQ(Get("d.txt"), "[5]\r\nA:1.00\r\n");
}

TEST_F(DataFilesTest, OptionMustBeOneOfTwoWords) {
    const std::string path = "LOCAL PLIK = \"dane.txt\"";
    const std::string section = "LOCAL NR = \"R1\"";
    EXPECT_EQ(Run({path, section, "WRITE_FILE PLIK NR -X PLIK"}), "3: 3 -X");
    EXPECT_EQ(Run({path, section, "READ_FILE PLIK NR PLIK"}), "3: 3 PLIK");
    EXPECT_EQ(Run({path, section, "SET_FILE PLIK NR NR PLIK"}), "3: 3 PLIK");
    EXPECT_EQ(Run({path, section, "READ_FILE PLIK NR -A NR -R"}), "3: 3 -R");
    EXPECT_EQ(Run({path, section, "READ_FILE PLIK -r NR -a"}), "3: 3 -a");
    EXPECT_FALSE(Has("dane.txt"));
}

TEST_F(DataFilesTest, PathInAVariableWithoutValueIsWaitedFor) {
    EXPECT_EQ(Run({"LIST L", "WRITE_FILE L S"}), "2: 27 L");
}

TEST_F(DataFilesTest, SuffixReadsAnotherValueOfTheVariable) {
    EXPECT_EQ(Run({"LOCAL P", "SET P.DREP = \"d.txt\"", "LOCAL A = 1", "WRITE_FILE P.DREP S -A A"}),
              "done");
    EXPECT_EQ(Get("d.txt"), "[S]\r\nA:1.00\r\n");
}

TEST_F(DataFilesTest, FilesAreThoseOfTheScriptsWorld) {
    services.files = &platform::NoFiles();
    Put("d.txt", "A:2\r\n");
    EXPECT_EQ(Run({"LOCAL A = 1", "READ_FILE \"d.txt\""}), "2: 9 " + PathOf("d.txt"));
    EXPECT_EQ(Run({"LOCAL A = 1", "WRITE_FILE \"d.txt\" \"S\""}), "2: 9 " + PathOf("d.txt"));
    EXPECT_EQ(Get("d.txt"), "A:2\r\n");
}

TEST_F(DataFilesTest, BigFileAndLongLineAreRead) {
    const std::string longText(1 << 20, 'x');
    std::string content;
    content.reserve(52 << 20);
    while (content.size() < (50 << 20)) content += "[7]\r\nA:1\r\nOBCA:123456789012345\r\n";
    content += "T:" + longText + "\r\nA:2\r\n";
    Put("wielki.txt", content);
    EXPECT_EQ(Run({"LOCAL A = 0", "LOCAL T = \"-\"", "READ_FILE \"wielki.txt\""}), "done");
    EXPECT_EQ(Text("A"), "2.00");
    EXPECT_EQ(Text("T").size(), longText.size());
}

}  // namespace
}  // namespace kalvex::host

#include "platform/Files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/FileEdit.h"
#include "support/marking_translator.h"
#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

using namespace std::string_literals;

class FilesTest : public testing::Test {
  protected:
    // Why the file cannot be changed.
    static std::string EditFault(const std::string& path) {
        Notice fault;
        EXPECT_FALSE(EditWholeFile(
            path, [](std::string&) { return true; }, fault));
        return InWords(fault, support::MarkingTranslator(false));
    }

    support::ScratchFolder folder;
    std::string content = "old";
    std::string error;
};

TEST_F(FilesTest, BytesComeBackAsTheyWereWritten) {
    std::string bytes;
    for (int c = 0; c < 256; ++c) bytes += static_cast<char>(c);
    for (int i = 0; i < 10; ++i) bytes += bytes.substr(0, 20000);
    EXPECT_TRUE(WriteWholeFile(folder.Path("a"), bytes, error));
    EXPECT_EQ(ReadFile(folder.Path("a"), content, error), FileRead::Complete);
    EXPECT_EQ(content, bytes);
    EXPECT_TRUE(ReadWholeFile(folder.Path("a"), content, error));
}

TEST_F(FilesTest, WritingReplacesTheContent) {
    EXPECT_TRUE(WriteWholeFile(folder.Path("a"), "dłuższy", error));
    EXPECT_TRUE(WriteWholeFile(folder.Path("a"), "", error));
    EXPECT_TRUE(ReadWholeFile(folder.Path("a"), content, error));
    EXPECT_EQ(content, "");
}

TEST_F(FilesTest, PrivateFileIsItsOwnersAlone) {
    EXPECT_TRUE(WritePrivateFile(folder.Path("a"), "nowy", error));
    EXPECT_EQ(folder.Get("a"), "nowy");
    struct stat status {};
    ASSERT_EQ(stat(folder.Path("a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    ASSERT_EQ(chmod(folder.Path("a").c_str(), 0640), 0);
    EXPECT_TRUE(WritePrivateFile(folder.Path("a"), "zmieniony", error));
    EXPECT_EQ(folder.Get("a"), "zmieniony");
    ASSERT_EQ(stat(folder.Path("a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

class FilesRightsTest : public FilesTest {
  protected:
    mode_t Mode(const std::string& name) const {
        struct stat status {};
        EXPECT_EQ(stat(folder.Path(name).c_str(), &status), 0);
        return status.st_mode & 07777;
    }
    void Put(const std::string& name, mode_t mode) const {
        folder.Put(name, "x");
        ASSERT_EQ(chmod(folder.Path(name).c_str(), mode), 0);
    }
    std::string OpenSecret(const std::string& name) const {
        const Notice notice = DescribeOpenSecret(folder.Path(name));
        return notice ? InWords(notice, support::MarkingTranslator(false)) : "";
    }
    // Somebody who is not the administrator.
    void GiveAway(const std::string& name) const {
        const bool may = geteuid() == 0;
        EXPECT_EQ(may ? chown(folder.Path(name).c_str(), 1, 1) : 0, 0);
    }

    bool taken = false;
};

TEST_F(FilesRightsTest, PrivateFolderIsItsOwnersAlone) {
    const mode_t mask = umask(0);
    EXPECT_TRUE(MakePrivateFolder(folder.Path("a/b"), error));
    umask(mask);
    EXPECT_EQ(Mode("a/b"), 0700u);
    ASSERT_EQ(chmod(folder.Path("a").c_str(), 0755), 0);
    EXPECT_TRUE(MakePrivateFolder(folder.Path("a"), error));
    EXPECT_EQ(Mode("a"), 0755u);
    folder.Put("plik", "");
    EXPECT_FALSE(MakePrivateFolder(folder.Path("plik/a"), error));
    EXPECT_EQ(error, "Not a directory");
}

TEST_F(FilesRightsTest, OthersLoseWhatTheyMayDo) {
    Put("a", 0644);
    EXPECT_TRUE(CloseToOthers(folder.Path("a"), taken, error));
    EXPECT_TRUE(taken);
    EXPECT_EQ(Mode("a"), 0600u);
    EXPECT_TRUE(CloseToOthers(folder.Path("a"), taken, error));
    EXPECT_FALSE(taken);
    Put("b", 0420);
    EXPECT_TRUE(CloseToOthers(folder.Path("b"), taken, error));
    EXPECT_TRUE(taken);
    EXPECT_EQ(Mode("b"), 0400u);
    EXPECT_TRUE(CloseToOthers(folder.Path("brak"), taken, error));
    EXPECT_FALSE(taken);
    EXPECT_FALSE(CloseToOthers(folder.Path("a/b"), taken, error));
    EXPECT_FALSE(taken);
    EXPECT_EQ(error, "Not a directory");
    EXPECT_FALSE(CloseToOthers("/proc/self/status", taken, error));
    EXPECT_FALSE(taken);
    EXPECT_EQ(error, "Operation not permitted");
}

TEST_F(FilesRightsTest, SecretThatOthersMayReadIsTold) {
    const auto told = [this](const std::string& rights) {
        return "Do pliku " + folder.Path("a") + ", który ma być tajny, mają dostęp inni (prawa " +
               rights + ", a mają być 600)";
    };
    EXPECT_EQ(OpenSecret("a"), "");
    folder.MakeFolder("b");
    ASSERT_EQ(chmod(folder.Path("b").c_str(), 0755), 0);
    EXPECT_EQ(OpenSecret("b"), "");
    Put("a", 0600);
    GiveAway("a");
    EXPECT_EQ(OpenSecret("a"), "");
    Put("a", 0640);
    EXPECT_EQ(OpenSecret("a"), told("640"));
    Put("a", 0604);
    EXPECT_EQ(OpenSecret("a"), told("604"));
    Put("a", 0602);
    EXPECT_EQ(OpenSecret("a"), told("602"));
    if (geteuid() != 0) return;
    ASSERT_EQ(chown(folder.Path("a").c_str(), 0, 1), 0);
    Put("a", 0640);
    EXPECT_EQ(OpenSecret("a"), "");
    Put("a", 0660);
    EXPECT_EQ(OpenSecret("a"), told("660"));
    Put("a", 0644);
    EXPECT_EQ(OpenSecret("a"), told("644"));
}

TEST_F(FilesTest, MissingFileDoesNotOpen) {
    EXPECT_EQ(ReadFile(folder.Path("a"), content, error), FileRead::NotOpened);
    EXPECT_EQ(content, "");
    EXPECT_EQ(error, "No such file or directory");
    EXPECT_FALSE(ReadWholeFile(folder.Path("a"), content, error));
}

TEST_F(FilesTest, FolderDoesNotOpen) {
    EXPECT_EQ(ReadFile(folder.Path(), content, error), FileRead::NotOpened);
    EXPECT_EQ(error, "Is a directory");
}

TEST_F(FilesTest, WhatIsNoRegularFileDoesNotOpenAndIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(folder.Path("rura").c_str(), 0600), 0);
    for (const std::string& path : {folder.Path("rura"), "/dev/zero"s}) {
        error.clear();
        EXPECT_EQ(ReadFile(path, content, error), FileRead::NotOpened);
        EXPECT_EQ(error, "Not a regular file") << path;
        error.clear();
        EXPECT_FALSE(WriteWholeFile(path, "x", error));
        EXPECT_EQ(error, "Not a regular file") << path;
        EXPECT_EQ(EditFault(path), "Not a regular file");
        EXPECT_FALSE(MakePrivateFile(path, error));
    }
    folder.Put("a", "stary");
    ASSERT_EQ(mkfifo(folder.Path("a.tmp").c_str(), 0600), 0);
    EXPECT_EQ(EditFault(folder.Path("a")), "Not a regular file");
    EXPECT_EQ(folder.Get("a"), "stary");
}

TEST_F(FilesTest, ReadThatFailsIsBroken) {
    EXPECT_EQ(ReadFile("/proc/self/mem", content, error), FileRead::Broken);
    EXPECT_EQ(error, "Input/output error");
    EXPECT_FALSE(ReadWholeFile("/proc/self/mem", content, error));
}

TEST_F(FilesTest, FileOfUnknownLengthIsReadToItsEnd) {
    EXPECT_EQ(ReadFile("/proc/self/cmdline", content, error), FileRead::Complete);
    EXPECT_NE(content, "");
}

TEST_F(FilesTest, FolderThatIsMissingTakesNoFile) {
    EXPECT_FALSE(WriteWholeFile(folder.Path("brak/a"), "x", error));
    EXPECT_EQ(error, "No such file or directory");
}

TEST_F(FilesTest, FileIsReplacedAsAWhole) {
    folder.Put("a", "stary");
    std::ifstream reader(folder.Path("a"));
    EXPECT_TRUE(WriteWholeFile(folder.Path("a"), "nowy", error));
    std::string read;
    std::getline(reader, read);
    EXPECT_EQ(read, "stary");
    EXPECT_EQ(folder.Get("a"), "nowy");
    EXPECT_FALSE(std::filesystem::exists(folder.Path(".a.kalvex-new")));
}

}  // namespace
}  // namespace kalvex::platform

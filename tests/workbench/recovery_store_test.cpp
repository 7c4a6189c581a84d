// Copies of texts that were not saved.
#include "workbench/model/RecoveryStore.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "platform/Files.h"
#include "support/scratch_folder.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RecoveryStoreTest : public testing::Test {
  protected:
    static constexpr const char* kKey = "/skrypty/main.kx";

    // What another process finds.
    RecoveryOffer Find(std::optional<std::string_view> content, const std::string& key = kKey) {
        return RecoveryStore(m_path).Find(key, content);
    }
    std::vector<std::string> Files() const {
        std::vector<std::string> files;
        std::error_code fault;
        for (const auto& file : std::filesystem::directory_iterator(m_path, fault))
            files.push_back(file.path());
        return files;
    }
    void Spoil(const std::string& path, std::size_t at) {
        std::string content;
        std::string error;
        ASSERT_TRUE(platform::ReadWholeFile(path, content, error));
        content[at] ^= 1;
        ASSERT_TRUE(platform::WriteWholeFile(path, content, error));
    }

    support::ScratchFolder m_folder;
    std::string m_path = m_folder.Path("stan/kopie");
    RecoveryStore m_store{m_path};
};

TEST_F(RecoveryStoreTest, CopyIsFoundByTheNextProcess) {
    EXPECT_FALSE(Find("plik").copy);
    EXPECT_FALSE(m_store.Keep(kKey, "zmieniony\r\ntekst\n", "plik", 1234, 0));
    const RecoveryOffer offer = Find("plik");
    ASSERT_TRUE(offer.copy);
    EXPECT_FALSE(offer.fault);
    EXPECT_EQ(offer.copy->text, "zmieniony\r\ntekst\n");
    EXPECT_EQ(offer.copy->time, 1234);
    EXPECT_EQ(offer.copy->key, kKey);
    EXPECT_FALSE(offer.copy->fileChanged);
    EXPECT_TRUE(Find("inny plik").copy->fileChanged);
    EXPECT_TRUE(Find(std::nullopt).copy->fileChanged);
    EXPECT_FALSE(Find("plik", "/skrypty/inny.kx").copy);
}

TEST_F(RecoveryStoreTest, CopyThatSaysWhatTheFileSaysGoes) {
    m_store.Keep(kKey, "tekst", "plik", 1234, 0);
    EXPECT_FALSE(Find("tekst").copy);
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(RecoveryStoreTest, SavedOrClosedTextNeedsNone) {
    m_store.Keep(kKey, "tekst", "plik", 1234, 0);
    m_store.Drop(kKey);
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_TRUE(m_store.IsDue(kKey, 1));
}

TEST_F(RecoveryStoreTest, TextIsWrittenAtMostEveryFewSeconds) {
    EXPECT_TRUE(m_store.IsDue(kKey, 10));
    m_store.Keep(kKey, "a", "plik", 1, 10);
    EXPECT_FALSE(m_store.IsDue(kKey, 10 + RecoveryStore::kPause - 1));
    EXPECT_TRUE(m_store.IsDue(kKey, 10 + RecoveryStore::kPause));
    EXPECT_TRUE(m_store.IsDue("/skrypty/inny.kx", 11));
    m_store.Keep(kKey, "b", "plik", 2, 11);
    EXPECT_EQ(Find("plik").copy->text, "a");
    m_store.Keep(kKey, "b", "plik", 3, 10 + RecoveryStore::kPause);
    EXPECT_EQ(Find("plik").copy->text, "b");
    m_store.Keep(kKey, "b", "plik", 4, 10 + 2 * RecoveryStore::kPause);
    EXPECT_EQ(Find("plik").copy->time, 3);
}

TEST_F(RecoveryStoreTest, DamagedCopyIsToldAndLeftOut) {
    m_store.Keep(kKey, "tekst", "plik", 1234, 0);
    const std::string file = Files().at(0);
    const std::string told =
        "Kopia bezpieczeństwa " + file + " jest uszkodzona i została pominięta";
    std::string content;
    std::string error;
    ASSERT_TRUE(platform::ReadWholeFile(file, content, error));
    for (const std::size_t at : {std::size_t{0}, content.find("sum ") + 6, content.size() - 1}) {
        Spoil(file, at);
        const RecoveryOffer offer = Find("plik");
        EXPECT_FALSE(offer.copy) << at;
        EXPECT_EQ(platform::InWords(offer.fault, {}), told) << at;
        Spoil(file, at);
    }
    for (std::size_t size = 0; size < content.size(); ++size) {
        ASSERT_TRUE(platform::WriteWholeFile(file, content.substr(0, size), error));
        EXPECT_FALSE(Find("plik").copy) << size;
    }
    ASSERT_TRUE(platform::WriteWholeFile(file, content, error));
    EXPECT_TRUE(Find("plik").copy);
}

TEST_F(RecoveryStoreTest, ScriptsNeverSavedAreFoundByThemselves) {
    const std::string second = RecoveryStore::KeyOfNew("Skrypt2", 1000);
    const std::string first = RecoveryStore::KeyOfNew("Skrypt1", 1000);
    m_store.Keep(second, "drugi", std::nullopt, 7, 0);
    m_store.Keep(first, "pierwszy", std::nullopt, 5, 0);
    m_store.Keep(kKey, "tekst", "plik", 6, 0);
    std::vector<platform::Notice> faults;
    const std::vector<RecoveryCopy> copies = RecoveryStore(m_path).FindNew(faults);
    ASSERT_EQ(copies.size(), 2u);
    EXPECT_EQ(copies[0].text, "pierwszy");
    EXPECT_EQ(RecoveryStore::TitleOfNew(copies[0].key), "Skrypt1");
    EXPECT_EQ(copies[1].text, "drugi");
    EXPECT_THAT(faults, IsEmpty());
    EXPECT_TRUE(RecoveryStore::IsKeyOfNew(copies[0].key));
    EXPECT_FALSE(RecoveryStore::IsKeyOfNew(kKey));
}

TEST_F(RecoveryStoreTest, FaultIsToldOnce) {
    m_folder.Put("stan", "zajęte");
    const platform::Notice fault = m_store.Keep(kKey, "a", "plik", 1, 0);
    EXPECT_EQ(platform::InWords(fault, {}),
              "Nie można zapisać kopii bezpieczeństwa skryptu /skrypty/main.kx (Not a directory)");
    EXPECT_FALSE(m_store.Keep(kKey, "a", "plik", 2, RecoveryStore::kPause));
    std::filesystem::remove(m_folder.Path("stan"));
    EXPECT_FALSE(m_store.Keep(kKey, "a", "plik", 3, 2 * RecoveryStore::kPause));
    EXPECT_EQ(Find("plik").copy->text, "a");
}

}  // namespace
}  // namespace kalvex::workbench

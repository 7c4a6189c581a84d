#include "platform/Crypt.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

class CryptTest : public testing::Test {
  protected:
    std::string KeyPath() const { return m_folder.Path("Kalvex.key"); }

    support::ScratchFolder m_folder;
    CCrypt m_crypt{m_folder.Path("Kalvex.key"), KeyFile::MadeAtFirstUse};
};

TEST_F(CryptTest, TextComesBack) {
    for (const std::string& text :
         {std::string(), std::string("haslo"), std::string("a,\0\xFF", 4)}) {
        const std::string sealed = m_crypt.EncryptText(text);
        EXPECT_TRUE(CCrypt::GetCryptHeader(sealed));
        EXPECT_TRUE(m_crypt.CanDecryptText(sealed));
        EXPECT_EQ(m_crypt.DecryptText(sealed), text);
        EXPECT_EQ(sealed.find("haslo"), std::string::npos);
    }
}

TEST_F(CryptTest, EqualTextsDoNotLookEqual) {
    EXPECT_NE(m_crypt.EncryptText("haslo"), m_crypt.EncryptText("haslo"));
}

TEST_F(CryptTest, TextIsReadUnderItsLabelAlone) {
    const auto sealed = m_crypt.EncryptTextWithLabel("Kalvex", "haslo");
    ASSERT_TRUE(sealed.has_value());
    EXPECT_EQ(m_crypt.DecryptTextWithLabel("Kalvex", *sealed), "haslo");
    EXPECT_EQ(m_crypt.DecryptTextWithLabel("Inny", *sealed), std::nullopt);
    EXPECT_FALSE(m_crypt.CanDecryptText(*sealed));
    EXPECT_EQ(m_crypt.DecryptText(*sealed), "");
}

TEST_F(CryptTest, OrdinaryTextIsNotDecrypted) {
    const std::string sealed = m_crypt.EncryptText("haslo");
    for (const std::string& text :
         {std::string(), std::string("haslo"), std::string("{kx1}"), std::string("{kx1}!!!"),
          sealed.substr(0, sealed.size() - 2), sealed.substr(1), sealed + "A"}) {
        EXPECT_FALSE(m_crypt.CanDecryptText(text)) << text;
        EXPECT_EQ(m_crypt.DecryptText(text), "") << text;
    }
}

TEST_F(CryptTest, ChangedTextIsNotDecrypted) {
    std::string sealed = m_crypt.EncryptText("haslo");
    sealed[10] = sealed[10] == 'A' ? 'B' : 'A';
    EXPECT_FALSE(m_crypt.CanDecryptText(sealed));
}

TEST_F(CryptTest, KeyFileIsMadeAtFirstUseForItsOwnerAlone) {
    EXPECT_FALSE(m_crypt.CanDecryptText("haslo"));
    EXPECT_FALSE(m_folder.Has("Kalvex.key"));
    m_crypt.EncryptText("haslo");
    struct stat info {};
    ASSERT_EQ(::stat(KeyPath().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600u);
    EXPECT_EQ(info.st_size, 32);
}

TEST_F(CryptTest, KeyThatOthersCanReadIsNotUsed) {
    const auto sealed = m_crypt.EncryptTextWithLabel("Kalvex", "haslo");
    ASSERT_TRUE(sealed.has_value());
    const std::string key = m_folder.Get("Kalvex.key");
    ASSERT_EQ(::chmod(KeyPath().c_str(), 0644), 0);
    const CCrypt open(KeyPath(), KeyFile::MadeAtFirstUse);
    EXPECT_EQ(open.DecryptTextWithLabel("Kalvex", *sealed), std::nullopt);
    EXPECT_EQ(open.EncryptTextWithLabel("Kalvex", "nowe"), std::nullopt);
    EXPECT_EQ(m_folder.Get("Kalvex.key"), key);
    ASSERT_EQ(::chmod(KeyPath().c_str(), 0600), 0);
    const CCrypt closed(KeyPath(), KeyFile::ReadOnly);
    EXPECT_EQ(closed.DecryptTextWithLabel("Kalvex", *sealed), "haslo");
}

TEST_F(CryptTest, KeyThatIsMissingWhereATextIsToBeOpenedIsNotMade) {
    const CCrypt other(m_folder.Path("inny.key"), KeyFile::MadeAtFirstUse);
    EXPECT_FALSE(m_crypt.CanDecryptText(other.EncryptText("haslo")));
    EXPECT_EQ(m_crypt.DecryptText(m_crypt.EncryptText("haslo")), "haslo");
    EXPECT_EQ(m_crypt.EncryptTextWithLabel("Kalvex", "haslo"), std::nullopt);
    EXPECT_FALSE(m_folder.Has("Kalvex.key"));
}

TEST_F(CryptTest, NextProcessReadsWithTheSameFile) {
    const auto sealed = m_crypt.EncryptTextWithLabel("Kalvex", "haslo");
    ASSERT_TRUE(sealed.has_value());
    const CCrypt next(KeyPath(), KeyFile::ReadOnly);
    EXPECT_EQ(next.DecryptTextWithLabel("Kalvex", *sealed), "haslo");
}

TEST_F(CryptTest, AnotherKeyReadsNothing) {
    const auto sealed = m_crypt.EncryptTextWithLabel("Kalvex", "haslo");
    ASSERT_TRUE(sealed.has_value());
    const CCrypt other(m_folder.Path("inny.key"), KeyFile::MadeAtFirstUse);
    EXPECT_EQ(other.DecryptTextWithLabel("Kalvex", *sealed), std::nullopt);
}

TEST_F(CryptTest, KeyThatDoesNotLastProtectsWithinTheProcessOnly) {
    const CCrypt crypt(m_folder.Path("nie/ma.key"), KeyFile::MadeAtFirstUse);
    EXPECT_EQ(crypt.DecryptText(crypt.EncryptText("haslo")), "haslo");
    EXPECT_EQ(crypt.EncryptTextWithLabel("Kalvex", "haslo"), std::nullopt);
}

TEST_F(CryptTest, ReaderMakesNoKeyFile) {
    const CCrypt crypt(KeyPath(), KeyFile::ReadOnly);
    EXPECT_EQ(crypt.DecryptText(crypt.EncryptText("haslo")), "haslo");
    EXPECT_EQ(crypt.EncryptTextWithLabel("Kalvex", "haslo"), std::nullopt);
    EXPECT_FALSE(m_folder.Has("Kalvex.key"));
}

TEST_F(CryptTest, FileThatIsNoKeyIsLeftAlone) {
    m_folder.PutSecret("Kalvex.key", "krotki");
    EXPECT_EQ(m_crypt.EncryptTextWithLabel("Kalvex", "haslo"), std::nullopt);
    EXPECT_EQ(m_folder.Get("Kalvex.key"), "krotki");
}

TEST_F(CryptTest, EmptiedTextIsOverwritten) {
    std::string text = "haslo, ktore jest dluzsze niz kilka bajtow";
    const char* bytes = text.data();
    CCrypt::SecureEmptyString(text);
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(bytes[6], '\0');
}

}  // namespace
}  // namespace kalvex::platform

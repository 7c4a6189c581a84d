#include "platform/UserStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "platform/UserSession.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"

namespace kalvex::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UserStoreTest : public testing::Test {
  protected:
    UserStoreTest() { EXPECT_TRUE(m_store.Open(m_path, m_error)) << text::ToUtf8(m_error); }

    bool Add(const UserRecord& user, std::string_view password = "haslo") {
        return m_store.Add(user, password, m_error);
    }

    std::string Error() const { return text::ToUtf8(m_error); }

    support::ScratchFolder m_folder;
    std::string m_path = m_folder.Path("users.sqlite");
    std::string m_error;
    UserStore m_store{PasswordCost::Least};
};

UserRecord Named(const char* name, int level = 0) {
    UserRecord user;
    user.name = text::FromUtf8(name);
    user.level = level;
    return user;
}

TEST_F(UserStoreTest, KeepsWhatWasAdded) {
    ASSERT_TRUE(Add({text::FromUtf8("Żaneta"),
                     text::FromUtf8("Dyspozytor główny"),
                     50,
                     {"gaz", "zmiana A"},
                     {"10.1.0.0/16", "fd00::/8"}}));
    UserStore other(PasswordCost::Least);
    ASSERT_TRUE(other.Open(m_path, m_error));
    const std::optional<UserRecord> user = other.Find(text::FromUtf8("Żaneta"));
    ASSERT_TRUE(user);
    EXPECT_EQ(text::ToUtf8(user->name), "Żaneta");
    EXPECT_EQ(text::ToUtf8(user->description), "Dyspozytor główny");
    EXPECT_EQ(user->level, 50);
    EXPECT_THAT(user->groups, ElementsAre("gaz", "zmiana A"));
    EXPECT_THAT(user->addresses, ElementsAre("10.1.0.0/16", "fd00::/8"));
}

TEST_F(UserStoreTest, FileIsForItsOwnerAlone) {
    struct stat info {};
    ASSERT_EQ(::stat(m_path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST_F(UserStoreTest, HasNobodyWhileNoFileIsOpen) {
    const UserStore none;
    const UserFinding finding = none.FindAside("adam");
    EXPECT_FALSE(finding.record);
    EXPECT_EQ(finding.fault, "");
    EXPECT_FALSE(none.Find("adam"));
    EXPECT_FALSE(none.CheckUserRight("adam", "0", ""));
    EXPECT_EQ(none.GetUserRightLevel("adam", ""), 0);
}

TEST_F(UserStoreTest, NamesDifferByMoreThanCase) {
    ASSERT_TRUE(Add(Named("żółw")));
    EXPECT_FALSE(Add(Named("ŻÓŁW")));
    EXPECT_EQ(Error(), "Użytkownik o tej nazwie już istnieje");
    EXPECT_TRUE(m_store.Find(text::FromUtf8("ŻÓŁw")));
}

TEST_F(UserStoreTest, RefusesNamesThatCannotBe) {
    const char* reason =
        "Nazwa użytkownika musi mieć od 1 do 64 znaków, bez znaku \":\" i znaków sterujących, i "
        "być "
        "różna od NOBODY";
    for (const std::string& name : {std::string(), std::string(65, 'a'), std::string("a:b"),
                                    std::string("a\nb"), std::string("nobody")}) {
        UserRecord user;
        user.name = name;
        EXPECT_FALSE(Add(user)) << name;
        EXPECT_EQ(Error(), reason) << name;
    }
    UserRecord longest;
    longest.name = std::string(64, 'a');
    EXPECT_TRUE(Add(longest)) << Error();
}

TEST_F(UserStoreTest, RefusesOtherFaults) {
    EXPECT_FALSE(Add(Named("a", 101)));
    EXPECT_EQ(Error(), "Poziom użytkownika musi być liczbą od 0 do 100");
    EXPECT_FALSE(Add(Named("a", -1)));
    EXPECT_EQ(Error(), "Poziom użytkownika musi być liczbą od 0 do 100");
    UserRecord user = Named("a");
    user.groups = {"50"};
    EXPECT_FALSE(Add(user));
    EXPECT_EQ(Error(), "Nazwa grupy musi mieć od 1 do 64 znaków i nie może być liczbą");
    user = Named("a");
    user.addresses = {"10.1.0.0/33"};
    EXPECT_FALSE(Add(user));
    EXPECT_EQ(Error(), "Niepoprawny adres lub zakres adresów");
    user = Named("a");
    user.description = std::string(256, 'x');
    EXPECT_FALSE(Add(user));
    EXPECT_EQ(Error(), "Opis użytkownika może mieć do 255 znaków");
    EXPECT_FALSE(Add(Named("a"), ""));
    EXPECT_EQ(Error(), "Hasło musi mieć od 1 do 256 znaków");
    EXPECT_FALSE(Add(Named("a"), std::string(257, 'x')));
    EXPECT_EQ(Error(), "Hasło musi mieć od 1 do 256 znaków");
    std::vector<UserRecord> users;
    ASSERT_TRUE(m_store.List(users, m_error));
    EXPECT_THAT(users, IsEmpty());
}

TEST_F(UserStoreTest, ListsByNameAndRemoves) {
    ASSERT_TRUE(Add(Named("Zenon")));
    ASSERT_TRUE(Add(Named("adam")));
    std::vector<UserRecord> users;
    ASSERT_TRUE(m_store.List(users, m_error));
    ASSERT_EQ(users.size(), 2u);
    EXPECT_EQ(users[0].name, "adam");
    EXPECT_EQ(users[1].name, "Zenon");

    EXPECT_TRUE(m_store.Remove("ADAM", m_error));
    EXPECT_FALSE(m_store.Find("adam"));
    EXPECT_FALSE(m_store.Remove("adam", m_error));
    EXPECT_EQ(Error(), "Brak użytkownika o tej nazwie");
}

TEST_F(UserStoreTest, RemovedUserLeavesNoGroups) {
    UserRecord user = Named("adam");
    user.groups = {"gaz"};
    ASSERT_TRUE(Add(user));
    EXPECT_THAT(m_store.GetGroups(), ElementsAre("gaz"));
    ASSERT_TRUE(m_store.Remove("adam", m_error));
    EXPECT_THAT(m_store.GetGroups(), IsEmpty());
    ASSERT_TRUE(Add(Named("ewa")));
    EXPECT_THAT(m_store.Find("ewa")->groups, IsEmpty());
}

TEST_F(UserStoreTest, PasswordIsCheckedAndChanged) {
    ASSERT_TRUE(Add(Named("adam"), "pierwsze"));
    std::string hash = m_store.FindAside("adam").hash;
    EXPECT_EQ(hash.rfind("$argon2id$", 0), 0u) << hash;
    EXPECT_TRUE(CheckPassword(hash, "pierwsze"));
    EXPECT_FALSE(CheckPassword(hash, "Pierwsze"));

    ASSERT_TRUE(m_store.SetPassword("ADAM", "drugie", m_error));
    hash = m_store.FindAside("adam").hash;
    EXPECT_FALSE(CheckPassword(hash, "pierwsze"));
    EXPECT_TRUE(CheckPassword(hash, "drugie"));

    EXPECT_FALSE(m_store.SetPassword("ewa", "trzecie", m_error));
    EXPECT_EQ(Error(), "Brak użytkownika o tej nazwie");
}

TEST_F(UserStoreTest, RightIsALevelOrAGroup) {
    UserRecord user = Named("adam", 50);
    user.groups = {"gaz"};
    ASSERT_TRUE(Add(user));
    EXPECT_TRUE(m_store.CheckUserRight("adam", "50", ""));
    EXPECT_FALSE(m_store.CheckUserRight("adam", "51", ""));
    EXPECT_TRUE(m_store.CheckUserRight("adam", "gaz", ""));
    EXPECT_FALSE(m_store.CheckUserRight("adam", "woda", ""));
    EXPECT_FALSE(m_store.CheckUserRight("ewa", "0", ""));
    EXPECT_EQ(m_store.GetUserRightLevel("adam", ""), 50);
    EXPECT_EQ(m_store.GetUserRightLevel("ewa", ""), 0);
    EXPECT_FALSE(m_store.IsUserADAccount("adam"));
}

TEST_F(UserStoreTest, AdministratorIsNoMemberOfGroups) {
    ASSERT_TRUE(Add(Named("adam", 100)));
    EXPECT_TRUE(m_store.CheckUserRight("adam", "100", ""));
    EXPECT_FALSE(m_store.CheckUserRight("adam", "gaz", ""));
}

TEST_F(UserStoreTest, RightsHoldFromTheUsersAddressesOnly) {
    UserRecord user = Named("adam", 50);
    user.addresses = {"10.1.0.0/16", "192.168.7.9", "fd00::/8"};
    ASSERT_TRUE(Add(user));
    for (const char* address :
         {"", "10.1.2.3", "10.1.255.255", "192.168.7.9", "fd12::1", "::ffff:10.1.2.3"}) {
        EXPECT_TRUE(m_store.CheckUserRight("adam", "10", address)) << address;
        EXPECT_EQ(m_store.GetUserRightLevel("adam", address), 50) << address;
    }
    for (const char* address : {"10.2.0.0", "192.168.7.8", "fe00::1", "gdzies"}) {
        EXPECT_FALSE(m_store.CheckUserRight("adam", "10", address)) << address;
        EXPECT_EQ(m_store.GetUserRightLevel("adam", address), 0) << address;
    }
}

TEST_F(UserStoreTest, WhoIsLookedUpAsideIsFoundOrNot) {
    UserRecord adam = Named("adam");
    adam.groups = {"operatorzy"};
    ASSERT_TRUE(Add(adam, "haslo"));
    const UserFinding found = m_store.FindAside("ADAM");
    ASSERT_TRUE(found.record);
    EXPECT_EQ(found.record->name, "adam");
    EXPECT_EQ(found.record->groups, adam.groups);
    EXPECT_EQ(found.fault, "");
    const UserFinding missing = m_store.FindAside("ewa");
    EXPECT_FALSE(missing.record);
    EXPECT_EQ(missing.fault, "");
    std::filesystem::remove(m_path);
    EXPECT_EQ(m_store.FindAside("adam").fault, m_path + ": unable to open database file");
}

TEST_F(UserStoreTest, LockedFileIsAFaultAside) {
    ASSERT_TRUE(Add(Named("adam"), "haslo"));
    SqliteDatabase other;
    ASSERT_TRUE(other.Open(m_path));
    ASSERT_TRUE(other.Execute("BEGIN EXCLUSIVE"));
    const UserFinding finding = m_store.FindAside("adam");
    EXPECT_FALSE(finding.record);
    EXPECT_EQ(finding.hash, "");
    EXPECT_EQ(finding.fault, m_path + ": database is locked");
}

TEST_F(UserStoreTest, WhileTheFileIsLockedRightsAreAsTheyWereSeenLast) {
    UserRecord adam = Named("adam");
    adam.level = 50;
    ASSERT_TRUE(Add(adam, "haslo"));
    ASSERT_TRUE(Add(Named("ewa"), "haslo"));
    EXPECT_EQ(m_store.GetUserRightLevel("adam", ""), 50);
    EXPECT_TRUE(m_store.CheckUserRight("ewa", "0", ""));
    ASSERT_TRUE(m_store.Remove("ewa", m_error));
    EXPECT_FALSE(m_store.CheckUserRight("ewa", "0", ""));
    SqliteDatabase other;
    ASSERT_TRUE(other.Open(m_path));
    ASSERT_TRUE(other.Execute("BEGIN EXCLUSIVE"));
    EXPECT_EQ(m_store.GetUserRightLevel("Adam", ""), 50);
    EXPECT_FALSE(m_store.CheckUserRight("ewa", "0", ""));
    EXPECT_EQ(m_store.GetUserRightLevel("jan", ""), 0);
}

TEST_F(UserStoreTest, NewerFileIsRefused) {
    {
        SqliteDatabase database;
        ASSERT_TRUE(database.Open(m_path));
        ASSERT_TRUE(database.Execute("PRAGMA user_version = 2"));
    }
    UserStore other(PasswordCost::Least);
    EXPECT_FALSE(other.Open(m_path, m_error));
    EXPECT_EQ(Error(), "Plik użytkowników jest z nowszej wersji programu");
}

TEST_F(UserStoreTest, SessionHoldsTheUserWhoLoggedIn) {
    UserRecord user = Named("Adam", 50);
    user.description = "Dyspozytor";
    user.groups = {"gaz"};
    ASSERT_TRUE(Add(user, "TAJNE"));
    UserSession session(m_store, "sorvane");
    EXPECT_EQ(session.GetAccountName(), "sorvane");
    EXPECT_EQ(session.GetActiveUserName(), "");
    EXPECT_TRUE(session.CheckRight(0));
    EXPECT_FALSE(session.CheckRight(1));
    EXPECT_FALSE(session.CheckActiveUserRight("0", ""));
    std::string name = "x";
    std::string password = "x";
    EXPECT_FALSE(session.ActiveUserInfo(name, password));
    EXPECT_EQ(name + password, "");

    EXPECT_FALSE(session.RegisterUser("ADAM", "INNE"));
    ASSERT_TRUE(session.RegisterUser("ADAM", "TAJNE"));
    EXPECT_FALSE(session.RegisterUser("EWA", "TAJNE"));
    EXPECT_EQ(session.GetActiveUserName(), "Adam");
    EXPECT_EQ(session.GetActiveUserDescription(), "Dyspozytor");
    EXPECT_TRUE(session.CheckRight(50));
    EXPECT_FALSE(session.CheckRight(51));
    EXPECT_TRUE(session.CheckActiveUserRight("gaz", ""));
    ASSERT_TRUE(session.ActiveUserInfo(name, password));
    EXPECT_EQ(name, "Adam");
    EXPECT_EQ(password, "TAJNE");

    session.Logout();
    EXPECT_EQ(session.GetActiveUserName(), "");
    EXPECT_FALSE(session.CheckRight(1));
}

TEST_F(UserStoreTest, AnAccountThatIsTrustedCountsWhileNobodyIsLoggedIn) {
    ASSERT_TRUE(Add(Named("Adam", 50), "TAJNE"));
    UserSession session(m_store, text::FromUtf8("łucja"));
    const Translator translator;
    EXPECT_EQ(text::ToUtf8(session.TrustAccount(translator)),
              "Brak pliku użytkowników: konto łucja ma w tym oknie poziom 100");
    EXPECT_EQ(text::ToUtf8(session.GetActiveUserName()), "łucja");
    EXPECT_EQ(session.GetActiveUserDescription(), "");
    EXPECT_TRUE(session.CheckRight(100));
    EXPECT_TRUE(session.CheckActiveUserRight("100", ""));
    EXPECT_FALSE(session.CheckActiveUserRight("gaz", ""));

    ASSERT_TRUE(session.RegisterUser("ADAM", "TAJNE"));
    EXPECT_EQ(session.GetActiveUserName(), "Adam");
    EXPECT_FALSE(session.CheckRight(51));
    EXPECT_FALSE(session.CheckActiveUserRight("100", ""));
    session.Logout();
    EXPECT_EQ(text::ToUtf8(session.GetActiveUserName()), "łucja");
    EXPECT_TRUE(session.CheckRight(100));
}

TEST_F(UserStoreTest, NoServerHearsOfAnAccountThatIsTrusted) {
    UserSession session(m_store, "sorvane");
    session.TrustAccount(Translator());
    std::string name = "x";
    std::string password = "x";
    EXPECT_FALSE(session.ActiveUserInfo(name, password));
    EXPECT_EQ(name + password, "");
    EXPECT_FALSE(m_store.Find("sorvane"));
    EXPECT_FALSE(m_store.CheckUserRight("sorvane", "0", ""));
    EXPECT_FALSE(session.RegisterUser("sorvane", ""));
}

TEST(UserStoreRightTextTest, IsALevelOrNoNumber) {
    for (const char* right : {"0", "100", "007", "gaz", "gaz 2", "-1"}) {
        EXPECT_TRUE(IsRightText(right)) << right;
    }
    for (const char* right : {"", "101", "99999999999999999999"}) {
        EXPECT_FALSE(IsRightText(right)) << right;
    }
}

}  // namespace
}  // namespace kalvex::platform

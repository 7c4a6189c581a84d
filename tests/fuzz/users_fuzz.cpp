// The users' file, which somebody else may have written: whatever it holds, nobody has a right by
// it whom it does not name, and it can be refused.
#include <filesystem>

#include "fuzz/fuzz.h"
#include "platform/UserStore.h"
#include "support/scratch_folder.h"

namespace kalvex::fuzz {

namespace {

constexpr const char* kFile = "users.sqlite";
constexpr const char* kBeside[] = {"users.sqlite-wal", "users.sqlite-shm", "users.sqlite-journal"};

std::string FileWith(const std::vector<platform::UserRecord>& users) {
    const support::ScratchFolder folder;
    std::string error;
    {
        platform::UserStore store(platform::PasswordCost::Least);
        Demand(store.Open(folder.Path(kFile), error), "the users' file must open");
        for (const platform::UserRecord& user : users)
            Demand(store.Add(user, "haslo", error), "a user must be added");
    }
    return folder.Get(kFile);
}

}  // namespace

std::vector<std::string> FuzzCorpus() {
    return {"", FileWith({}), FileWith({{"adam", "opis", 50, {"gaz"}, {"10.1.0.0/16"}}}),
            FileWith({{"adam", "", 100, {}, {}}, {"ewa", "", 0, {"gaz", "prad"}, {"fd00::/8"}}})};
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kalvex::support::ScratchFolder folder;
    for (const char* name : kalvex::fuzz::kBeside) std::filesystem::remove(folder.Path(name));
    const std::string path = folder.Put(kalvex::fuzz::kFile, kalvex::fuzz::Bytes(data, size));
    kalvex::platform::UserStore store(kalvex::platform::PasswordCost::Least);
    std::string error;
    if (!store.Open(path, error)) {
        kalvex::fuzz::Demand(!error.empty(), "what is refused has a reason");
        return 0;
    }
    std::vector<kalvex::platform::UserRecord> users;
    store.List(users, error);
    store.Find("adam");
    store.FindAside("adam");
    store.GetGroups();
    kalvex::fuzz::Demand(store.GetUserRightLevel("nikt", "10.1.2.3") <= 0, "nobody has a level");
    kalvex::fuzz::Demand(!store.CheckUserRight("nikt", "gaz", "10.1.2.3"), "nobody has a right");
    store.CheckUserRight("adam", "gaz", "10.1.2.3");
    store.SetPassword("adam", "inne", error);
    store.Remove("ewa", error);
    return 0;
}

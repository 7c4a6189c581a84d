#include "platform/PasswordHash.h"

#include <sodium.h>

#include <cstddef>

namespace kalvex::platform {

namespace {

struct CostRow {
    unsigned long long operations;
    std::size_t memory;
};

constexpr CostRow kCosts[] = {
    {crypto_pwhash_argon2id_OPSLIMIT_MIN, crypto_pwhash_argon2id_MEMLIMIT_MIN},
    {crypto_pwhash_argon2id_OPSLIMIT_INTERACTIVE, crypto_pwhash_argon2id_MEMLIMIT_INTERACTIVE},
};

}  // namespace

std::string HashPassword(std::string_view password, PasswordCost cost) {
    const CostRow& row = kCosts[static_cast<std::size_t>(cost)];
    char hash[crypto_pwhash_argon2id_STRBYTES];
    if (sodium_init() < 0 || crypto_pwhash_argon2id_str(hash, password.data(), password.size(),
                                                        row.operations, row.memory) != 0) {
        return {};
    }
    return hash;
}

bool CheckPassword(const std::string& hash, std::string_view password) {
    return sodium_init() >= 0 &&
           crypto_pwhash_argon2id_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

void WipePassword(std::string& password) {
    sodium_memzero(password.data(), password.size());
    password.clear();
}

}  // namespace kalvex::platform

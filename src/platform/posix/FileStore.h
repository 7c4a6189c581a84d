#pragma once

#include <cstdint>

#include "platform/FileStore.h"

namespace kalvex::platform {

class PosixFileStore final : public FileStore {
  public:
    // A longer file is neither read, which fails, nor replaced, nor made.
    static constexpr std::int64_t kMostBytes = std::int64_t{64} << 20;

    FileOutcome Read(const std::string& path, std::string& content) override;
    bool Replace(const std::string& path, const std::string& backup,
                 const Rewriting& rewrite) override;
};

}  // namespace kalvex::platform

#pragma once

#include "platform/FileStore.h"

namespace kalvex::platform {

class PosixFileStore final : public FileStore {
  public:
    FileOutcome Read(const std::string& path, std::string& content) override;
    bool Replace(const std::string& path, const std::string& backup,
                 const Rewriting& rewrite) override;
};

}  // namespace kalvex::platform

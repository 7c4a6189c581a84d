#pragma once

#include "platform/FileStore.h"

namespace kalvex::platform {

class PosixFileStore final : public FileStore {
  public:
    FileOutcome Read(const std::string& path, std::string& content) override;
    FileOutcome MoveAside(const std::string& path, const std::string& backup) override;
    bool Create(const std::string& path, std::string_view content) override;
};

}  // namespace kalvex::platform

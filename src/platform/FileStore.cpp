#include "platform/FileStore.h"

namespace kalvex::platform {

namespace {

class EmptyFileStore final : public FileStore {
  public:
    FileOutcome Read(const std::string&, std::string&) override { return FileOutcome::Missing; }
    bool Replace(const std::string&, const std::string&, const Rewriting&) override {
        return false;
    }
};

}  // namespace

FileStore& NoFiles() {
    static EmptyFileStore files;
    return files;
}

}  // namespace kalvex::platform

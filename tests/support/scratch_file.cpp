#include "support/scratch_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "platform/Files.h"

namespace kalvex {

ScratchFile::ScratchFile(std::string_view content) : m_path(testing::TempDir() + "kalvexXXXXXX") {
    close(mkstemp(m_path.data()));
    std::string error;
    EXPECT_TRUE(WriteWholeFile(m_path, content, error)) << error;
}

ScratchFile::~ScratchFile() {
    std::remove(m_path.c_str());
}

std::string ScratchFile::WithoutPath(const std::string& fault) const {
    return fault.starts_with(m_path) ? "FILE" + fault.substr(m_path.size()) : fault;
}

}  // namespace kalvex

#include "platform/LineWriter.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <semaphore>
#include <string>
#include <vector>

#include "platform/posix/Descriptor.h"
#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

using testing::ElementsAre;

constexpr std::chrono::minutes kAsLongAsItTakes{10};

std::string Gap(std::uint64_t lost) {
    return "brak " + std::to_string(lost);
}

// A pipe of the least size, whose reader is the test.
class LineWriterTest : public testing::Test {
  protected:
    LineWriterTest() {
        int ends[2] = {-1, -1};
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        m_reader = Descriptor(ends[0]);
        m_writer = Descriptor(ends[1]);
        m_room = ::fcntl(m_writer.Get(), F_SETPIPE_SZ, 4096);
        EXPECT_GT(m_room, 0);
    }

    void FillPipe() { EXPECT_EQ(::write(m_writer.Get(), Filling().data(), Room()), m_room); }
    std::string Filling() const { return std::string(Room() - 1, 'x') + '\n'; }
    std::size_t Room() const { return static_cast<std::size_t>(m_room); }

    // So many lines; an empty list when the writer has gone before.
    std::vector<std::string> Read(std::size_t count) {
        for (auto ends = std::ranges::count(m_text, '\n');
             static_cast<std::size_t>(ends) < count;) {
            char buffer[65536];
            const ssize_t read = ::read(m_reader.Get(), buffer, sizeof buffer);
            if (read <= 0) return {};
            m_text.append(buffer, static_cast<std::size_t>(read));
            ends += std::count(buffer, buffer + read, '\n');
        }
        std::vector<std::string> lines;
        while (lines.size() < count) {
            lines.push_back(m_text.substr(0, m_text.find('\n')));
            m_text.erase(0, lines.back().size() + 1);
        }
        return lines;
    }

    Descriptor m_reader{-1};
    Descriptor m_writer{-1};
    int m_room = 0;
    std::string m_text;
};

TEST_F(LineWriterTest, LinesComeInTheirOrder) {
    LineWriter writer(m_writer.Get(), Gap);
    writer.Write("a");
    writer.Write("");
    writer.Write("b");
    EXPECT_THAT(Read(3), ElementsAre("a", "", "b"));
}

TEST_F(LineWriterTest, LineMayBeLongerThanThePipe) {
    LineWriter writer(m_writer.Get(), Gap);
    const std::string line(3 * Room(), 'y');
    writer.Write(line);
    EXPECT_THAT(Read(1), ElementsAre(line));
}

TEST_F(LineWriterTest, PipeThatStandsStillHoldsUpNobodyAndTheGapIsToldInItsPlace) {
    FillPipe();
    LineWriter writer(m_writer.Get(), Gap);
    const std::size_t written = LineWriter::kLines + 8;
    for (std::size_t i = 0; i < written; ++i) writer.Write(std::to_string(i));
    ASSERT_EQ(Read(1)[0].size(), Room() - 1);
    // The writer may have taken the first line at any time, so the gap may have two parts.
    std::size_t next = 0;
    std::size_t lost = 0;
    while (next < written) {
        const std::string line = Read(1).at(0);
        if (line == std::to_string(next)) {
            ++next;
            continue;
        }
        ASSERT_TRUE(line.starts_with("brak ")) << line;
        const std::size_t missing = std::stoul(line.substr(5));
        EXPECT_EQ(line, Gap(missing));
        next += missing;
        lost += missing;
    }
    EXPECT_EQ(next, written);
    EXPECT_GE(lost, 7u);
    EXPECT_LE(lost, 8u);
    writer.Write("po przerwie");
    EXPECT_THAT(Read(1), ElementsAre("po przerwie"));
}

TEST_F(LineWriterTest, LongLinesThatWaitAreBoundedByTheirLength) {
    FillPipe();
    LineWriter writer(m_writer.Get(), Gap);
    constexpr std::size_t kWritten = 4;
    const std::string half(LineWriter::kBytes / 2, 'z');
    for (std::size_t i = 0; i < kWritten; ++i) writer.Write(half);
    // Lines of this length would take long through a small pipe.
    ASSERT_GT(::fcntl(m_writer.Get(), F_SETPIPE_SZ, 1 << 20), 0);
    ASSERT_EQ(Read(1)[0].size(), Room() - 1);
    // The writer may have taken a line by then, so one or two have no place.
    std::size_t kept = 0;
    std::size_t lost = 0;
    while (kept + lost < kWritten) {
        const std::string line = Read(1).at(0);
        if (line == half) {
            ++kept;
            continue;
        }
        ASSERT_TRUE(line == Gap(1) || line == Gap(2)) << line.substr(0, 10);
        lost += line == Gap(1) ? 1 : 2;
    }
    EXPECT_EQ(kept + lost, kWritten);
    EXPECT_GE(lost, 1u);
    EXPECT_LE(lost, 2u);
}

// The name of a pipe, whose readers come and go.
TEST_F(LineWriterTest, ReaderThatGoesIsNoEndAndTheNextHearsWhatIsMissing) {
    const support::ScratchFolder folder;
    const std::string path = folder.Path("rura");
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const auto open = [&path](int flags) { return Descriptor(::open(path.c_str(), flags)); };
    const auto kept = std::signal(SIGPIPE, SIG_IGN);
    m_reader = open(O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const Descriptor pipe = open(O_WRONLY | O_CLOEXEC);
    std::counting_semaphore<> tries(0);
    LineWriter writer(pipe.Get(), [&tries](std::uint64_t lost) {
        tries.release();
        return Gap(lost);
    });
    m_reader = Descriptor(-1);
    writer.Write("a");
    writer.Write("b");
    tries.acquire();
    m_reader = open(O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(::fcntl(m_reader.Get(), F_SETFL, 0), 0);
    writer.Write("c");
    const std::string gap = Read(1).at(0);
    if (gap == Gap(1)) {
        EXPECT_THAT(Read(2), ElementsAre("b", "c"));
    } else {
        EXPECT_EQ(gap, Gap(2));
        EXPECT_THAT(Read(1), ElementsAre("c"));
    }
    std::signal(SIGPIPE, kept);
}

TEST_F(LineWriterTest, EndDoesNotWaitForAPipeThatStandsStill) {
    FillPipe();
    LineWriter writer(m_writer.Get(), Gap);
    writer.Write("a");
    writer.Finish(std::chrono::milliseconds(0));
    writer.Write("b");
    ASSERT_EQ(Read(1)[0].size(), Room() - 1);
    m_writer = Descriptor(-1);
    EXPECT_THAT(Read(1), testing::IsEmpty());
}

TEST_F(LineWriterTest, EndWaitsForWhatCanBeWritten) {
    // A pipe has room as long as it has a free page.
    ASSERT_GT(::fcntl(m_writer.Get(), F_SETPIPE_SZ, 65536), 0);
    LineWriter writer(m_writer.Get(), Gap);
    for (int i = 0; i < 100; ++i) writer.Write(std::to_string(i));
    writer.Finish(kAsLongAsItTakes);
    writer.Finish(kAsLongAsItTakes);
    EXPECT_EQ(Read(100).back(), "99");
}

TEST_F(LineWriterTest, DeviceWithoutRoomLosesLinesAndEndsAllTheSame) {
    const Descriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    LineWriter writer(full.Get(), Gap);
    writer.Write("a");
    writer.Finish(kAsLongAsItTakes);
}

}  // namespace
}  // namespace kalvex::platform

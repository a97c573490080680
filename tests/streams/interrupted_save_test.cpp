// A program that is killed during a save leaves a truncated file. `load` returns true exactly if
// the file is a whole number of records.

#include "misc/zntl_Integer.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "support/bytes.h"
#include "support/temporary_directory.h"
#include "video/znvl_Resolution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using test::Bytes;
using znsl::MemIOStream;

/// A child process that saves a stream. The destructor kills it.
class Saver {
public:
    template <class Preparation>
    Saver(MemIOStream const& stream, std::string const& path, Preparation prepare)
        : process_(fork()) {
        if (process_ < 0)
            throw std::runtime_error("cannot start a process");
        if (process_ > 0)
            return;
        prepare();
        _exit(stream.save(path.c_str()) ? 0 : 1);
    }
    Saver(Saver const&) = delete;
    Saver& operator=(Saver const&) = delete;
    ~Saver() {
        if (process_ > 0)
            kill();
    }

    /// Waits for the end of the process. Returns the signal that ended it; 0 for a normal exit.
    int wait() {
        int status = 0;
        if (waitpid(process_, &status, 0) != process_)
            throw std::runtime_error("the process is gone");
        process_ = 0;
        return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }

    int kill() {
        ::kill(process_, SIGKILL);
        return wait();
    }

private:
    pid_t process_;
};

MemIOStream streamOf(unsigned int count) {
    MemIOStream stream;
    for (unsigned int i = 0; i < count; ++i)
        stream << zntl::Integer(static_cast<int>(i)) << znvl::Resolution(640, 480);
    stream.close();
    return stream;
}

/// Returns 0 and the offset of the end of each record.
std::vector<std::size_t> boundaries(MemIOStream stream) {
    std::vector<std::size_t> ends{0};
    while (!stream.isEmpty())
        ends.push_back(ends.back() + stream.skip());
    return ends;
}

/// Expects that the file is a prefix of the stream, and that `load` reports whether it is a whole
/// number of records. Returns the file's size.
std::size_t judge(std::string const& path, MemIOStream const& stream) {
    Bytes const all = test::content(stream);
    std::vector<std::size_t> const ends = boundaries(stream);
    auto const size = static_cast<std::size_t>(std::filesystem::file_size(path));
    EXPECT_LE(size, all.size());

    MemIOStream loaded;
    EXPECT_EQ(loaded.load(path.c_str()), std::binary_search(ends.begin(), ends.end(), size))
        << size << " bytes";
    Bytes const front(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(test::content(loaded), front);
    return size;
}

class InterruptedSave : public testing::Test {
protected:
    test::TemporaryDirectory directory;
    std::string const path = directory / "stream";
};

/// From now on, a write beyond this file size ends the process by SIGXFSZ.
void endBeyond(rlim_t size) {
    rlimit const most{size, size};
    rlimit const none{0, 0};
    setrlimit(RLIMIT_FSIZE, &most);
    setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGXFSZ, SIG_DFL);
}

TEST_F(InterruptedSave, LoadsOnlyWholeRecordsWhenCutOffAnywhere) {
    MemIOStream const stream = streamOf(3);
    for (unsigned int limit = 0; limit <= stream.size(); ++limit) {
        std::filesystem::remove(path);
        Saver saver(stream, path, [=] { endBeyond(limit); });
        EXPECT_EQ(saver.wait(), limit < stream.size() ? SIGXFSZ : 0) << limit;
        EXPECT_EQ(judge(path, stream), limit);
    }
}

TEST_F(InterruptedSave, LeavesNothingOfAnEarlierFile) {
    ASSERT_TRUE(streamOf(5).save(path.c_str()));
    MemIOStream const stream = streamOf(3);
    Saver saver(stream, path, [] { endBeyond(50); });
    EXPECT_EQ(saver.wait(), SIGXFSZ);
    EXPECT_EQ(judge(path, stream), 50U);
}

TEST_F(InterruptedSave, LoadsOnlyWholeRecordsAfterAKillAtAnyTime) {
    MemIOStream const stream = streamOf(50000);
    for (useconds_t delay = 0; delay < 2000; delay += 100) {
        std::filesystem::remove(path);
        Saver saver(stream, path, [] {});
        while (!std::filesystem::exists(path))
            usleep(10);
        usleep(delay);
        saver.kill();
        judge(path, stream);
    }
}

// The pipe is full and its reader reads only some bytes, so the save blocks inside write().
TEST_F(InterruptedSave, LoadsOnlyWholeRecordsAfterAKillInAPipe) {
    MemIOStream const stream = streamOf(20000);
    std::string const pipe = directory / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (std::size_t const taken : {0U, 1U, 12U, 28U, 4096U, 4100U, 65536U}) {
        Saver saver(stream, pipe, [] {});
        int const reader = open(pipe.c_str(), O_RDONLY | O_CLOEXEC);
        ASSERT_GE(reader, 0);
        Bytes received(taken);
        for (std::size_t used = 0; used < taken;) {
            ssize_t const got = read(reader, &received[used], taken - used);
            ASSERT_GT(got, 0);
            used += static_cast<std::size_t>(got);
        }
        EXPECT_EQ(saver.kill(), SIGKILL) << "the save was not finished";
        close(reader);
        test::writeFile(path, received);
        EXPECT_EQ(judge(path, stream), taken);
    }
}

} // namespace

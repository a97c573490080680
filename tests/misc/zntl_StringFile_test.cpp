// Writing a string to a plain text file and reading it back.

#include "misc/zntl_String.h"

#include "support/bytes.h"
#include "support/failing_allocation.h"
#include "support/same_text.h"
#include "support/sample_texts.h"
#include "support/system_calls.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using test::bytesOf;
using test::SystemCalls;
using zntl::String;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

std::string const oldContent = "what was there before";

/// All characters that a conversion of line ends or encodings could change.
std::string const awkward = "a\0b\r\nc\nd\re\n\r\t\x1a\x80\xff\0"s;

std::string everyByte() {
    std::string bytes;
    for (int byte = 0; byte <= UCHAR_MAX; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}

std::size_t openDescriptors() {
    fs::directory_iterator const listing("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(listing), end(listing)));
}

/// Provides the path of a file, and checks that the test closes all descriptors.
class TextFile : public testing::Test {
protected:
    ~TextFile() override { EXPECT_EQ(openDescriptors(), descriptorsBefore_); }

    std::string path() const { return directory_ / "text"; }

    void make(std::string const& content) const { test::writeFile(path(), bytesOf(content)); }

    std::string content() const {
        test::Bytes const bytes = test::readFile(path());
        return {bytes.begin(), bytes.end()};
    }

    /// Returns paths at which no file exists and none can be created.
    std::vector<std::string> impossiblePaths() const {
        make("");
        fs::create_symlink("loop", directory_ / "loop");
        return {"",
                directory_.path(),
                directory_ / "missing/text",
                path() + "/text",
                directory_ / "loop",
                directory_ / std::string(NAME_MAX + 1, 'x'),
                "/" + std::string(PATH_MAX, 'x')};
    }

    test::TemporaryDirectory const directory_;

private:
    std::size_t const descriptorsBefore_ = openDescriptors();
};

/// Closes standard input while it lives, so the next file that is opened gets descriptor 0.
class WithoutStandardInput {
public:
    WithoutStandardInput() { close(STDIN_FILENO); }
    WithoutStandardInput(WithoutStandardInput const&) = delete;
    WithoutStandardInput& operator=(WithoutStandardInput const&) = delete;
    ~WithoutStandardInput() {
        EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << "a file stayed open";
        EXPECT_EQ(dup2(kept_, STDIN_FILENO), STDIN_FILENO);
        close(kept_);
    }

private:
    int const kept_ = dup(STDIN_FILENO);
};

/// Runs the process as an ordinary user while it lives.
class OrdinaryUser {
public:
    OrdinaryUser() {
        if (user_ == 0 && seteuid(nobody) != 0)
            ADD_FAILURE() << "cannot become an ordinary user";
    }
    OrdinaryUser(OrdinaryUser const&) = delete;
    OrdinaryUser& operator=(OrdinaryUser const&) = delete;
    ~OrdinaryUser() { EXPECT_EQ(seteuid(user_), 0); }

private:
    static constexpr uid_t nobody = 65534;
    uid_t const user_ = geteuid();
};

// --- writing ---

using StringToFile = TextFile;

TEST_F(StringToFile, WritesTheCharactersAndNothingElse) {
    for (std::string const& text : {"abc"s, "line\n"s, awkward, everyByte(), "\0"s}) {
        EXPECT_TRUE(String(text).toFile(path().c_str()));
        EXPECT_EQ(content(), text);
    }
}

TEST_F(StringToFile, MakesAnEmptyFileOfTheEmptyString) {
    EXPECT_TRUE(String().toFile(path().c_str()));
    ASSERT_TRUE(fs::exists(path()));
    EXPECT_EQ(content(), "");
}

TEST_F(StringToFile, TruncatesAnExistingFile) {
    make(oldContent);
    EXPECT_TRUE(String("new").toFile(path().c_str()));
    EXPECT_EQ(content(), "new");
    EXPECT_TRUE(String().toFile(path().c_str()));
    EXPECT_EQ(content(), "");
}

TEST_F(StringToFile, HidesTheTypedFile) {
    String const text("abc");
    znsl::Serializable const& value = text;
    EXPECT_TRUE(value.toFile(path().c_str()));
    EXPECT_EQ(content(), "abc");
}

TEST_F(StringToFile, WritesALongTextAtOnce) {
    std::string const text = test::repeated(everyByte(), 10000);
    SystemCalls calls;
    EXPECT_TRUE(String(text).toFile(path().c_str()));
    EXPECT_EQ(calls.count("write"), 1U);
    EXPECT_TRUE(test::sameText(content(), text));
}

TEST_F(StringToFile, FollowsALinkToTheFile) {
    make(oldContent);
    fs::create_symlink("text", directory_ / "link");
    EXPECT_TRUE(String("new").toFile((directory_ / "link").c_str()));
    EXPECT_EQ(content(), "new");
}

TEST_F(StringToFile, CreatesAFileWithThePermissionsOfTheUmask) {
    for (mode_t const mask : {0000U, 0022U, 0177U}) {
        fs::remove(path());
        mode_t const before = umask(mask);
        EXPECT_TRUE(String("abc").toFile(path().c_str()));
        umask(before);
        EXPECT_EQ(fs::status(path()).permissions(), fs::perms{0666U & ~mask});
    }
}

TEST_F(StringToFile, DoesNotNeedReadPermission) {
    make(oldContent);
    fs::permissions(directory_.path(), fs::perms{0755});
    fs::permissions(path(), fs::perms{0222});
    {
        OrdinaryUser const user;
        EXPECT_TRUE(String("abc").toFile(path().c_str()));
    }
    fs::permissions(path(), fs::perms{0644});
    EXPECT_EQ(content(), "abc");
}

TEST_F(StringToFile, WorksWithoutStandardInput) {
    {
        WithoutStandardInput const closed;
        EXPECT_TRUE(String("abc").toFile(path().c_str()));
    }
    EXPECT_EQ(content(), "abc");
}

TEST_F(StringToFile, DoesNotAskTheSystemForANullPath) {
    SystemCalls const calls;
    EXPECT_FALSE(String("abc").toFile(nullptr));
    EXPECT_EQ(calls.log(), "");
}

TEST_F(StringToFile, IsFalseWhenNoFileCanBeCreated) {
    for (std::string const& impossible : impossiblePaths())
        EXPECT_FALSE(String("abc").toFile(impossible.c_str())) << impossible;
    EXPECT_FALSE(String("abc").toFile(nullptr));
    EXPECT_FALSE(String().toFile(directory_.path().c_str())) << "even if there is nothing to write";
}

TEST_F(StringToFile, IsFalseWithoutWritePermission) {
    make(oldContent);
    fs::permissions(directory_.path(), fs::perms{0755});
    fs::permissions(path(), fs::perms{0444});
    {
        OrdinaryUser const user;
        EXPECT_FALSE(String("abc").toFile(path().c_str()));
    }
    EXPECT_EQ(content(), oldContent);
}

TEST_F(StringToFile, IsFalseWhenTheDiskIsFull) {
    test::Device const full("/dev/full");
    for (std::size_t const length : {1U, 100U, 4096U, 8192U, 1U << 20})
        EXPECT_FALSE(String(std::string(length, 'x')).toFile(full.path())) << length;
    EXPECT_TRUE(String().toFile(full.path())) << "nothing is written, so nothing fails";
    EXPECT_TRUE(full.isUntouched());
}

TEST_F(StringToFile, IsFalseWhenTheFileMayNotGrow) {
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
    for (rlim_t const size : {0U, 1U, 5U}) {
        rlimit limit = before;
        limit.rlim_cur = size;
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        bool const written = String("abcdef").toFile(path().c_str());
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_FALSE(written);
        EXPECT_EQ(content(), "abcdef"s.substr(0, size)) << "partly written";
    }
    std::signal(SIGXFSZ, handler);
}

TEST_F(StringToFile, IsFalseWhenAnyWriteFails) {
    for (int const error : {EIO, ENOSPC, EDQUOT, EPIPE}) {
        for (unsigned int k = 1; k <= 3; ++k) {
            SystemCalls calls;
            for (unsigned int i = 1; i <= 3; ++i)
                calls.limit("write", i, 1);
            calls.fail("write", k, error);
            EXPECT_FALSE(String("abc").toFile(path().c_str()));
            EXPECT_EQ(calls.count("write"), k) << "not tried again";
            EXPECT_EQ(content(), "abc"s.substr(0, k - 1));
        }
    }
}

TEST_F(StringToFile, IsFalseWhenTheSystemWritesNothing) {
    SystemCalls calls;
    calls.answer("write", 1, 0);
    EXPECT_FALSE(String("abc").toFile(path().c_str()));
}

TEST_F(StringToFile, ResumesAfterInterruptionsAndShortWrites) {
    SystemCalls calls;
    calls.fail("open", 1, EINTR);
    calls.fail("write", 1, EINTR).limit("write", 2, 2);
    calls.fail("write", 3, EINTR).fail("write", 4, EINTR).limit("write", 5, 1);
    EXPECT_TRUE(String("abcdef").toFile(path().c_str()));
    EXPECT_EQ(calls.count("write"), 6U);
    EXPECT_EQ(content(), "abcdef");
}

TEST_F(StringToFile, DoesNotAllocate) {
    String const text("abc");
    std::string const file = path();
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        EXPECT_FALSE(run.runsOutOfMemory([&] { EXPECT_TRUE(text.toFile(file.c_str())); }));
    });
    EXPECT_EQ(failures, 0);
}

// --- reading ---

class StringFromFile : public TextFile {
protected:
    /// Reads the file into a string with earlier content; returns the result and the content.
    std::pair<bool, std::string> read(std::string const& file) const {
        String text(oldContent);
        bool const done = text.fromFile(file.c_str());
        return {done, text};
    }
    std::pair<bool, std::string> read() const { return read(path()); }
};

std::pair<bool, std::string> holding(std::string const& text) { return {true, text}; }
std::pair<bool, std::string> const failedAndEmpty = {false, ""};

TEST_F(StringFromFile, ReadsTheWholeFileUnchanged) {
    for (std::string const& text : {"abc"s, "line\n"s, awkward, everyByte(), "\0"s, "\n"s}) {
        make(text);
        EXPECT_EQ(read(), holding(text));
    }
}

TEST_F(StringFromFile, TakesAnEmptyFile) {
    make("");
    EXPECT_EQ(read(), holding(""));
    EXPECT_EQ(read(test::Device("/dev/null").path()), holding(""));
}

TEST_F(StringFromFile, ReturnsTheWrittenCharacters) {
    for (std::size_t const length : std::initializer_list<std::size_t>{
             0, 1, 2, 15, 16, 511, 512, 4094, 4095, 4096, 4097, 8191, 8192, 8193, 65536, 1000000}) {
        std::string const text = test::repeated(everyByte(), length / 256 + 1).substr(0, length);
        ASSERT_TRUE(String(text).toFile(path().c_str()));
        auto const [done, taken] = read();
        EXPECT_TRUE(done);
        EXPECT_TRUE(test::sameText(taken, text));
    }
}

TEST_F(StringFromFile, HidesTheTypedFile) {
    make("abc");
    String text;
    znsl::Serializable& value = text;
    EXPECT_TRUE(value.fromFile(path().c_str()));
    EXPECT_EQ(text, "abc"s);
}

TEST_F(StringFromFile, ReadsInFewSteps) {
    struct {
        std::size_t length;
        unsigned int reads;
    } const cases[] = {{0, 1}, {100, 2}, {4095, 2}, {10000, 3}, {std::size_t{1} << 20, 3}};
    for (auto const& c : cases) {
        make(std::string(c.length, 'x'));
        SystemCalls calls;
        EXPECT_EQ(read().second.size(), c.length);
        EXPECT_LE(calls.count("read"), c.reads) << c.length;
    }
}

TEST_F(StringFromFile, ReadsOnAfterAShortRead) {
    make(std::string(20000, 'x'));
    SystemCalls calls;
    calls.limit("read", 1, 10).limit("read", 2, 5000);
    EXPECT_EQ(read().second.size(), 20000U);
}

TEST_F(StringFromFile, AllocatesAtMostTwiceTheFileAndAPage) {
    std::string const file = path();
    for (std::size_t const length : {0U, 100U, 5000U, 20000U, 100000U}) {
        make(std::string(length, 'x'));
        String text;
        SystemCalls calls;
        EXPECT_LE(test::largestAllocation([&] { text.fromFile(file.c_str()); }), 2 * length + 4097);
        calls.fail("fstat", 2, EIO); // now the size of the file is unknown
        EXPECT_LE(test::largestAllocation([&] { text.fromFile(file.c_str()); }), 2 * length + 4097);
        EXPECT_EQ(text.size(), length);
    }
}

TEST_F(StringFromFile, WorksWithoutStandardInput) {
    make("abc");
    WithoutStandardInput const closed;
    EXPECT_EQ(read(), holding("abc"));
}

TEST_F(StringFromFile, ReadsNothingWithoutAFile) {
    SystemCalls const calls;
    EXPECT_EQ(read(directory_ / "missing"), failedAndEmpty);
    EXPECT_EQ(calls.log(), "open");
}

TEST_F(StringFromFile, IsFalseAndEmptyWhenNoFileCanExist) {
    for (std::string const& impossible : impossiblePaths())
        EXPECT_EQ(read(impossible), failedAndEmpty) << impossible;
    EXPECT_EQ(read(directory_ / "missing"), failedAndEmpty);
    String text(oldContent);
    EXPECT_FALSE(text.fromFile(nullptr));
    EXPECT_EQ(text, ""s);
}

TEST_F(StringFromFile, IsFalseAndEmptyWithoutReadPermission) {
    make("secret");
    fs::permissions(directory_.path(), fs::perms{0755});
    fs::permissions(path(), fs::perms{0});
    OrdinaryUser const user;
    EXPECT_EQ(read(), failedAndEmpty);
}

TEST_F(StringFromFile, IsFalseAndEmptyForADirectory) {
    EXPECT_EQ(read(directory_.path()), failedAndEmpty);
    EXPECT_EQ(read("/"), failedAndEmpty);
    fs::create_directory_symlink(".", directory_ / "link");
    EXPECT_EQ(read(directory_ / "link"), failedAndEmpty);
}

TEST_F(StringFromFile, DoesNotAllocateTheSizeThatADirectoryReports) {
    String text;
    std::string const directory = directory_.path();
    EXPECT_LE(test::largestAllocation([&] { text.fromFile(directory.c_str()); }), 4097U);
}

TEST_F(StringFromFile, EmptiesTheStringBeforeItOpensTheFile) {
    make("abc");
    // The path points into the string, so it is empty when the file is opened.
    String text(path());
    EXPECT_FALSE(text.fromFile(text.c_str()));
    EXPECT_EQ(text, ""s);
}

TEST_F(StringFromFile, IsFalseAndEmptyAfterAReadError) {
    // Reading fails because the process has no memory at address 0.
    EXPECT_EQ(read("/proc/self/mem"), failedAndEmpty);
}

TEST_F(StringFromFile, IsFalseAndEmptyWhenAnyReadFails) {
    make("abc");
    for (int const error : {EIO, EISDIR, ENOMEM, EAGAIN}) {
        for (unsigned int k = 1; k <= 4; ++k) {
            SystemCalls calls;
            for (unsigned int i = 1; i <= 3; ++i)
                calls.limit("read", i, 1);
            calls.fail("read", k, error);
            EXPECT_EQ(read(), failedAndEmpty) << "read " << k;
            EXPECT_EQ(calls.count("read"), k) << "not tried again";
        }
    }
}

TEST_F(StringFromFile, IsFalseAndEmptyWhenALongFileFailsLate) {
    make(std::string(20000, 'x'));
    for (unsigned int k = 1; k <= 5; ++k) {
        SystemCalls calls;
        calls.limit("read", 1, 5000).limit("read", 2, 5000).limit("read", 3, 5000);
        calls.limit("read", 4, 5000);
        calls.fail("read", k, EIO);
        EXPECT_EQ(read(), failedAndEmpty) << "read " << k;
        EXPECT_EQ(calls.count("read"), k) << "not tried again";
    }
}

TEST_F(StringFromFile, ResumesAfterInterruptionsAndShortReads) {
    make(awkward);
    SystemCalls calls;
    calls.fail("open", 1, EINTR).fail("open", 2, EINTR);
    for (unsigned int k = 1; k < 3 * awkward.size(); k += 3)
        calls.fail("read", k, EINTR).fail("read", k + 1, EINTR).limit("read", k + 2, 1);
    EXPECT_EQ(read(), holding(awkward));
    EXPECT_GE(calls.count("read"), 3 * awkward.size());
}

TEST_F(StringFromFile, TakesAFileThatGrewMeanwhile) {
    for (std::size_t const length : {100U, 4095U, 4096U, 4097U, 8192U, 8193U, 100000U}) {
        std::string const text = test::repeated(everyByte(), length / 256 + 1).substr(0, length);
        make(text);
        for (std::ptrdiff_t const sizeBefore : {0, 1, 4096, 5000, 99999}) {
            SystemCalls calls;
            calls.pretendSize(sizeBefore);
            auto const [done, taken] = read();
            EXPECT_TRUE(done);
            EXPECT_TRUE(test::sameText(taken, text));
        }
    }
}

TEST_F(StringFromFile, TakesAFileThatShrankMeanwhile) {
    for (std::size_t const length : {3U, 4096U, 5000U}) {
        make(std::string(length, 'x'));
        SystemCalls calls;
        calls.pretendSize(100000);
        EXPECT_EQ(read(), holding(std::string(length, 'x')));
    }
}

TEST_F(StringFromFile, TakesAFileWhoseSizeIsNotKnown) {
    std::string const text = test::repeated(everyByte(), 100);
    make(text);
    SystemCalls calls;
    calls.fail("fstat", 1, EIO);
    EXPECT_EQ(read(), holding(text));
}

TEST_F(StringFromFile, ReadsAFileThatTheKernelGenerates) {
    // The kernel generates this file when it is read, and reports size 0 before.
    std::ifstream file("/proc/version");
    std::string const version{std::istreambuf_iterator<char>(file), {}};
    file.close();
    ASSERT_FALSE(version.empty());
    EXPECT_EQ(read("/proc/version"), holding(version));
}

/// Joins the writer of a pipe. Opens the pipe first, because a writer without a reader would block.
void joinWriter(std::thread& writer, std::string const& pipe) {
    int const descriptor = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    writer.join();
    close(descriptor);
}

TEST_F(StringFromFile, ReadsAPipeToItsEnd) {
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    std::string const text = test::repeated(everyByte(), 1000);
    std::thread writer([&] {
        std::ofstream pipe(path(), std::ios::binary);
        pipe << "first" << std::flush;
        pipe << text << std::flush;
    });
    auto const [done, taken] = read();
    joinWriter(writer, path());
    EXPECT_TRUE(done);
    EXPECT_TRUE(test::sameText(taken, "first" + text));
}

TEST_F(StringFromFile, IsNotDisturbedBySignals) {
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    struct sigaction interrupt = {};
    struct sigaction before;
    interrupt.sa_handler = [](int) {};
    ASSERT_EQ(sigaction(SIGUSR1, &interrupt, &before), 0);
    pthread_t const reader = pthread_self();
    std::thread writer([&] {
        auto const disturb = [&] {
            for (int i = 0; i < 5; ++i) {
                pthread_kill(reader, SIGUSR1);
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        };
        disturb(); // the reader waits for a writer to open the pipe
        std::ofstream pipe(path(), std::ios::binary);
        for (char const* const text : {"one ", "two ", "three"}) {
            pipe << text << std::flush;
            disturb(); // the reader waits for more bytes
        }
    });
    auto const result = read();
    joinWriter(writer, path());
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_EQ(result, holding("one two three"));
}

TEST_F(StringFromFile, IsFalseAndEmptyOnAllocationFailure) {
    make(std::string(20000, 'x'));
    std::string const file = path();
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        String text(oldContent);
        bool done = false;
        EXPECT_FALSE(run.runsOutOfMemory([&] { done = text.fromFile(file.c_str()); }))
            << "fromFile never throws";
        EXPECT_EQ(done, !run.happened());
        EXPECT_EQ(text.size(), done ? 20000U : 0U);
    });
    EXPECT_GE(failures, 1);
}

TEST_F(StringFromFile, IsFalseAndEmptyWhenAFileDoesNotFitInMemory) {
    make(std::string(5000, 'x'));
    SystemCalls calls;
    calls.pretendSize(PTRDIFF_MAX);
    EXPECT_EQ(read(), failedAndEmpty);
}

} // namespace

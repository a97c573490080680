// Writing and reading the typed binary file of storable values.

#include "streams/znsl_Serializable.h"

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/blob.h"
#include "support/bytes.h"
#include "support/failing_allocation.h"
#include "support/system_calls.h"
#include "support/temporary_directory.h"
#include "video/znvl_Resolution.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <type_traits>
#include <unistd.h>
#include <vector>

using namespace test;

static_assert(std::is_abstract_v<znsl::Serializable>);
static_assert(std::has_virtual_destructor_v<znsl::Serializable>);
static_assert(sizeof(znsl::Serializable) == sizeof(void*), "no base and no data");

namespace {

Bytes const oldContent = fromHex("0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17 18 19");

/// Returns a value that writes and reads exactly as many bytes as it reports.
Blob blob(unsigned int id, Bytes const& payload) {
    Blob value(id, payload);
    value.reported = static_cast<unsigned int>(payload.size());
    return value;
}

class TypedFile : public testing::Test {
protected:
    std::string path() const { return directory_ / "value"; }
    std::string content() const { return toHex(readFile(path())); }

    /// Whether `value` loads from a file of these bytes.
    bool loads(znsl::Serializable& value, Bytes const& file) const {
        writeFile(path(), file);
        return value.fromFile(path().c_str());
    }

    test::TemporaryDirectory const directory_;
};

constexpr unsigned int manyCalls = 100;

/// Every call of `read` or `write` moves a single byte.
void cutShort(test::SystemCalls& calls, std::string const& function) {
    for (unsigned int k = 1; k <= manyCalls; ++k)
        calls.limit(function, k, 1);
}

/// Like `cutShort`, and two interrupted calls precede each call that moves a byte.
void interruptAndCutShort(test::SystemCalls& calls, std::string const& function) {
    cutShort(calls, function);
    for (unsigned int k = 1; k <= manyCalls; k += 3)
        calls.fail(function, k, EINTR).fail(function, k + 1, EINTR);
}

// Writing

using SerializableToFile = TypedFile;

TEST_F(SerializableToFile, WritesTypeLengthAndPayload) {
    EXPECT_TRUE(zntl::Integer(-2).toFile(path().c_str()));
    EXPECT_EQ(content(), "f8 01 04 00 00 00 fe ff ff ff");

    EXPECT_TRUE(znvl::Resolution(640, 480).toFile(path().c_str()));
    EXPECT_EQ(content(), "2f 03 08 00 00 00 80 02 00 00 e0 01 00 00");

    EXPECT_TRUE(blob(0xBEEF, fromHex("01 02 03")).toFile(path().c_str()));
    EXPECT_EQ(content(), "ef be 03 00 00 00 01 02 03");
}

TEST_F(SerializableToFile, WritesAnEmptyPayload) {
    EXPECT_TRUE(blob(7, {}).toFile(path().c_str()));
    EXPECT_EQ(content(), "07 00 00 00 00 00");
}

TEST_F(SerializableToFile, WritesALargePayload) {
    Bytes const payload(1 << 20, 0x5A);
    EXPECT_TRUE(blob(7, payload).toFile(path().c_str()));
    EXPECT_EQ(readFile(path()), concat(fromHex("07 00 00 00 10 00"), payload));
}

TEST_F(SerializableToFile, KeepsTheLowSixteenBitsOfTheType) {
    EXPECT_TRUE(blob(0x12345678, fromHex("01")).toFile(path().c_str()));
    EXPECT_EQ(content(), "78 56 01 00 00 00 01");
}

TEST_F(SerializableToFile, TruncatesAnExistingFile) {
    writeFile(path(), oldContent);
    EXPECT_TRUE(blob(7, fromHex("01")).toFile(path().c_str()));
    EXPECT_EQ(content(), "07 00 01 00 00 00 01");
}

TEST_F(SerializableToFile, AsksForTheLengthThenOpensThenAsksForThePayload) {
    writeFile(path(), oldContent);
    std::vector<std::string> log;
    Blob value = blob(7, fromHex("01"));
    auto const note = [&](char const* operation) {
        log.push_back(operation + std::string(" at ") +
                      std::to_string(std::filesystem::file_size(path())));
    };
    value.onGetBinLength = [&] { note("length"); };
    value.onToBin = [&](unsigned char*) { note("payload"); };
    EXPECT_TRUE(value.toFile(path().c_str()));
    EXPECT_EQ(log, (std::vector<std::string>{"length at 16", "payload at 0"}));
}

TEST_F(SerializableToFile, IsFalseWhenTheFileCannotBeOpened) {
    Blob const value = blob(7, fromHex("01"));
    EXPECT_FALSE(value.toFile(directory_.path().c_str())) << "a directory";
    EXPECT_FALSE(value.toFile((directory_ / "missing/value").c_str()));
    EXPECT_FALSE(value.toFile(""));
    EXPECT_FALSE(value.toFile(nullptr));
    EXPECT_TRUE(std::filesystem::is_empty(directory_.path()));
}

TEST_F(SerializableToFile, DoesNotAskForThePayloadWhenTheFileCannotBeOpened) {
    Blob value = blob(7, fromHex("01"));
    value.onToBin = [](unsigned char*) { ADD_FAILURE(); };
    EXPECT_FALSE(value.toFile(directory_.path().c_str()));
}

TEST_F(SerializableToFile, IsFalseAndLeavesAnEmptyFileWhenThePayloadHasAnotherLength) {
    for (unsigned int const reported : {0U, 2U, 4U, 0xFFFFFFFFU}) {
        writeFile(path(), oldContent);
        Blob value = blob(7, fromHex("01 02 03"));
        value.reported = reported;
        EXPECT_FALSE(value.toFile(path().c_str())) << reported;
        EXPECT_EQ(content(), "");
    }
}

TEST_F(SerializableToFile, IsFalseWhenAnOperationThrows) {
    using Throw = void (*)();
    for (Throw const raise :
         {Throw([] { throw zntl::Exception("fault"); }),
          Throw([] { throw std::runtime_error("fault"); }), Throw([] { throw 7; })}) {
        Blob value = blob(7, fromHex("01"));
        value.onToBin = [=](unsigned char*) { raise(); };
        writeFile(path(), oldContent);
        EXPECT_FALSE(value.toFile(path().c_str()));
        EXPECT_EQ(content(), "") << "toFile truncates the file before it calls toBin";

        value = blob(7, fromHex("01"));
        value.onGetTypeId = raise;
        EXPECT_FALSE(value.toFile(path().c_str()));

        value = blob(7, fromHex("01"));
        value.onGetBinLength = raise;
        writeFile(path(), oldContent);
        EXPECT_FALSE(value.toFile(path().c_str()));
        EXPECT_EQ(content(), toHex(oldContent))
            << "toFile calls getBinLength before it opens the file";
    }
}

TEST_F(SerializableToFile, IsFalseWhenTheDiskIsFull) {
    test::Device const full("/dev/full");
    for (std::size_t const size : {0U, 1U, 4096U, 1U << 20})
        EXPECT_FALSE(blob(7, Bytes(size)).toFile(full.path())) << size;
    EXPECT_TRUE(full.isUntouched());
}

TEST_F(SerializableToFile, IsFalseWhenTheFileMayNotGrow) {
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
    for (rlim_t const size : {0U, 3U, 6U, 8U}) {
        rlimit limit = before;
        limit.rlim_cur = size;
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        bool const written = blob(7, fromHex("01 02 03")).toFile(path().c_str());
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_FALSE(written) << size;
        EXPECT_EQ(std::filesystem::file_size(path()), size) << "partly written";
    }
    std::signal(SIGXFSZ, handler);
}

TEST_F(SerializableToFile, ResumesAfterInterruptionsAndShortWrites) {
    test::SystemCalls calls;
    interruptAndCutShort(calls, "write");
    EXPECT_TRUE(blob(7, fromHex("01 02 03")).toFile(path().c_str()));
    EXPECT_EQ(calls.count("write"), 3 * 9U);
    EXPECT_EQ(content(), "07 00 03 00 00 00 01 02 03");
}

TEST_F(SerializableToFile, IsFalseWhenAnyWriteFails) {
    for (unsigned int k = 1; k <= 9; ++k) {
        test::SystemCalls calls;
        cutShort(calls, "write");
        calls.fail("write", k, EIO);
        EXPECT_FALSE(blob(7, fromHex("01 02 03")).toFile(path().c_str())) << k;
        EXPECT_EQ(calls.count("write"), k);
    }
}

TEST_F(SerializableToFile, IsFalseAndLeavesTheFileOnAllocationFailure) {
    std::string const file = path();
    Blob const value = blob(7, fromHex("01"));
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        writeFile(file, oldContent);
        bool written = true;
        EXPECT_FALSE(run.runsOutOfMemory([&] { written = value.toFile(file.c_str()); }));
        EXPECT_EQ(written, !run.happened());
        EXPECT_EQ(readFile(file) == oldContent, run.happened());
    });
    EXPECT_GT(failures, 0);
}

TEST_F(SerializableToFile, IsFalseForAPayloadThatDoesNotFitInMemoryAndLeavesTheFile) {
    writeFile(path(), oldContent);
    std::string const file = path();
    for (unsigned int const length : {0x80000000U, 0xFFFFFFF8U, 0xFFFFFFFFU}) {
        Blob value = blob(7, fromHex("01"));
        value.announced = length;
        bool written = true;
        {
            // A 64-bit machine may have enough memory, so the allocation is made to fail.
            test::AllocationFailure const failure(sizeof(void*) > 4 ? 1 : 0);
            written = value.toFile(file.c_str());
        }
        EXPECT_FALSE(written);
        EXPECT_EQ(content(), toHex(oldContent));
    }
}

TEST_F(SerializableToFile, KeepsNoFileOpen) {
    Blob const value = blob(7, fromHex("01"));
    Blob wrong = value;
    wrong.reported = 5;
    Blob throwing = value;
    throwing.onToBin = [](unsigned char*) { throw 7; };
    test::Device const full("/dev/full");
    int const before = dup(0);
    close(before);
    EXPECT_TRUE(value.toFile(path().c_str()));
    EXPECT_FALSE(wrong.toFile(path().c_str()));
    EXPECT_FALSE(throwing.toFile(path().c_str()));
    EXPECT_FALSE(value.toFile(directory_.path().c_str()));
    EXPECT_FALSE(value.toFile(full.path()));
    int const behind = dup(0);
    close(behind);
    EXPECT_EQ(behind, before) << "the lowest free descriptor is still the same";
}

// Reading

using SerializableFromFile = TypedFile;

TEST_F(SerializableFromFile, ReadsWhatToFileWrote) {
    ASSERT_TRUE(zntl::Integer(-2).toFile(path().c_str()));
    zntl::Integer integer(99);
    EXPECT_TRUE(integer.fromFile(path().c_str()));
    EXPECT_EQ(integer.getValue(), -2);

    ASSERT_TRUE(znvl::Resolution(640, 480).toFile(path().c_str()));
    znvl::Resolution resolution;
    resolution.name = "kept";
    EXPECT_TRUE(resolution.fromFile(path().c_str()));
    EXPECT_EQ(resolution, znvl::Resolution(640, 480));
    EXPECT_EQ(resolution.name, "kept");

    Bytes const payload(1 << 20, 0x5A);
    ASSERT_TRUE(blob(0xFFFF, payload).toFile(path().c_str()));
    Blob value(0xFFFF);
    value.reported = 1 << 20;
    EXPECT_TRUE(value.fromFile(path().c_str()));
    EXPECT_EQ(value.payload, payload);
}

TEST_F(SerializableFromFile, ReadsTheBytesAsTheyAre) {
    Blob value(0xBEEF);
    value.reported = 3;
    EXPECT_TRUE(loads(value, fromHex("ef be 03 00 00 00 01 02 03")));
    EXPECT_EQ(toHex(value.payload), "01 02 03");
}

TEST_F(SerializableFromFile, ReadsAnEmptyPayload) {
    Blob value(7, fromHex("99"));
    EXPECT_TRUE(loads(value, fromHex("07 00 00 00 00 00")));
    EXPECT_EQ(toHex(value.payload), "");
}

// A class may read a String even from an empty payload.
TEST_F(SerializableFromFile, ProvidesANulAfterTheLengthOfAMissingString) {
    Blob value(7);
    zntl::String text("before");
    value.onFromBin = [&](unsigned char const* data, unsigned int length) {
        text.fromBin(data, length);
    };
    EXPECT_TRUE(loads(value, fromHex("07 00 00 00 00 00")));
    EXPECT_EQ(text, "");
}

TEST_F(SerializableFromFile, IgnoresBytesAfterThePayload) {
    Blob value(7);
    value.reported = 1;
    EXPECT_TRUE(loads(value, fromHex("07 00 01 00 00 00 01 02 03")));
    EXPECT_EQ(toHex(value.payload), "01");
}

TEST_F(SerializableFromFile, ReadsTheBeginningOfAFileBeyond32Bits) {
    writeFile(path(), fromHex("07 00 01 00 00 00 01"));
    ASSERT_EQ(truncate64(path().c_str(), off64_t{5} << 30), 0); // sparse, so it needs no disk space
    Blob value(7);
    value.reported = 1;
    EXPECT_TRUE(value.fromFile(path().c_str()));
    EXPECT_EQ(toHex(value.payload), "01");
}

TEST_F(SerializableFromFile, IsFalseWhenTheFileCannotBeOpened) {
    Blob value(7, fromHex("99"));
    EXPECT_FALSE(value.fromFile((directory_ / "missing").c_str()));
    EXPECT_FALSE(value.fromFile(""));
    EXPECT_FALSE(value.fromFile(nullptr));
    EXPECT_EQ(toHex(value.payload), "99");
}

TEST_F(SerializableFromFile, ReadsNothingWithoutAFile) {
    Blob value(7);
    test::SystemCalls const calls;
    EXPECT_FALSE(value.fromFile((directory_ / "missing").c_str()));
    EXPECT_EQ(calls.log(), "open");
}

TEST_F(SerializableFromFile, IsFalseForADirectoryWithoutAnAllocation) {
    Blob value(7, fromHex("99"));
    std::string const folder = directory_.path();
    EXPECT_LT(test::largestAllocation([&] { EXPECT_FALSE(value.fromFile(folder.c_str())); }),
              4096U);
    EXPECT_EQ(toHex(value.payload), "99");
}

TEST_F(SerializableFromFile, IsFalseForEveryShorterFileWithoutCallingTheValue) {
    Bytes const whole = fromHex("07 00 03 00 00 00 01 02 03");
    Blob value(7, fromHex("99"));
    value.reported = 3;
    value.onFromBin = [](unsigned char const*, unsigned int) { ADD_FAILURE(); };
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(loads(value, Bytes(whole.begin(), whole.begin() + static_cast<long>(size))))
            << size;
        EXPECT_EQ(toHex(value.payload), "99");
    }
}

TEST_F(SerializableFromFile, IsFalseForAnotherType) {
    zntl::Integer integer(99);
    EXPECT_FALSE(loads(integer, fromHex("f9 01 04 00 00 00 fe ff ff ff")));
    EXPECT_FALSE(loads(integer, fromHex("f8 02 04 00 00 00 fe ff ff ff")));
    EXPECT_EQ(integer.getValue(), 99);

    ASSERT_TRUE(zntl::Integer(-2).toFile(path().c_str()));
    znvl::Resolution resolution(640, 480);
    EXPECT_FALSE(resolution.fromFile(path().c_str()));
    EXPECT_EQ(resolution, znvl::Resolution(640, 480));
}

// The file stores 16 bits of the type id, and fromFile compares them with the object's whole id.
TEST_F(SerializableFromFile, NeverLoadsATypeBeyondSixteenBits) {
    Blob value = blob(0x10007, fromHex("01"));
    ASSERT_TRUE(value.toFile(path().c_str()));
    ASSERT_EQ(content(), "07 00 01 00 00 00 01");
    EXPECT_FALSE(value.fromFile(path().c_str()));

    Blob small(7);
    small.reported = 1;
    EXPECT_TRUE(small.fromFile(path().c_str())) << "the file's type is 7";
}

TEST_F(SerializableFromFile, IsFalseWhenTheValueConsumesAnotherLengthAndKeepsWhatItTook) {
    for (unsigned int const consumed : {0U, 2U, 4U, 0xFFFFFFFFU}) {
        Blob value(7, fromHex("99"));
        value.reported = consumed;
        EXPECT_FALSE(loads(value, fromHex("07 00 03 00 00 00 01 02 03"))) << consumed;
        EXPECT_EQ(toHex(value.payload), "01 02 03") << "the old payload is not restored";
    }
}

TEST_F(SerializableFromFile, IsFalseForAPayloadOfAnotherLengthThanTheClassReads) {
    znvl::Resolution resolution(1, 2);
    EXPECT_FALSE(loads(resolution, fromHex("2f 03 06 00 00 00 80 02 00 00 e0 01")));
    EXPECT_EQ(resolution, znvl::Resolution(640, 2)) << "the width is read before the height fails";
    EXPECT_FALSE(loads(resolution, fromHex("2f 03 09 00 00 00 05 00 00 00 06 00 00 00 07")));
    EXPECT_EQ(resolution, znvl::Resolution(5, 6));

    zntl::Integer integer(99);
    EXPECT_FALSE(loads(integer, fromHex("f8 01 03 00 00 00 01 02 03")));
    EXPECT_EQ(integer.getValue(), 99);
}

TEST_F(SerializableFromFile, IsFalseWhenAnOperationThrows) {
    using Throw = void (*)();
    Bytes const file = fromHex("07 00 01 00 00 00 01");
    for (Throw const raise :
         {Throw([] { throw zntl::Exception("fault"); }),
          Throw([] { throw std::runtime_error("fault"); }), Throw([] { throw 7; })}) {
        Blob value(7, fromHex("99"));
        value.reported = 1;
        value.onFromBin = [=](unsigned char const*, unsigned int) { raise(); };
        EXPECT_FALSE(loads(value, file));
        value.onFromBin = [](unsigned char const*, unsigned int) {};
        value.onGetTypeId = raise;
        EXPECT_FALSE(loads(value, file));
        EXPECT_EQ(toHex(value.payload), "99");
    }
}

TEST_F(SerializableFromFile, AllocatesNoMoreThanTheFileJustifies) {
    for (char const* const file : {"07 00 ff ff ff ff", "07 00 ff ff ff ff 01 02 03",
                                   "07 00 00 00 10 00 01 02 03", "07 00 04 00 00 00 01 02 03"}) {
        Blob value(7);
        writeFile(path(), fromHex(file));
        std::string const name = path();
        EXPECT_EQ(test::largestAllocation([&] { EXPECT_FALSE(value.fromFile(name.c_str())); }), 0U)
            << file;
    }
}

/// A pipe that contains these bytes, with its writing end closed.
class Pipe {
public:
    explicit Pipe(Bytes const& bytes) {
        int ends[2];
        if (::pipe(ends) != 0)
            throw std::runtime_error("no pipe");
        if (::write(ends[1], bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            throw std::runtime_error("the bytes do not fit");
        ::close(ends[1]);
        readingEnd_ = ends[0];
    }
    Pipe(Pipe const&) = delete;
    Pipe& operator=(Pipe const&) = delete;
    ~Pipe() { ::close(readingEnd_); }

    std::string path() const { return "/dev/fd/" + std::to_string(readingEnd_); }

private:
    int readingEnd_;
};

TEST_F(SerializableFromFile, ReadsAFileThatCannotSeek) {
    Blob value(7);
    value.reported = 3;
    EXPECT_TRUE(value.fromFile(Pipe(fromHex("07 00 03 00 00 00 01 02 03")).path().c_str()));
    EXPECT_EQ(toHex(value.payload), "01 02 03");
    EXPECT_FALSE(value.fromFile(Pipe(fromHex("07 00 03 00 00 00 01 02")).path().c_str()));
    EXPECT_FALSE(value.fromFile(Pipe(fromHex("07 00 03")).path().c_str()));
    EXPECT_FALSE(value.fromFile(Pipe({}).path().c_str()));
}

TEST_F(SerializableFromFile, ResumesAfterInterruptionsAndShortReads) {
    writeFile(path(), fromHex("07 00 03 00 00 00 01 02 03"));
    Blob value(7);
    value.reported = 3;
    test::SystemCalls calls;
    interruptAndCutShort(calls, "read");
    EXPECT_TRUE(value.fromFile(path().c_str()));
    EXPECT_EQ(calls.count("read"), 3 * 9U);
    EXPECT_EQ(toHex(value.payload), "01 02 03");
}

TEST_F(SerializableFromFile, IsFalseWhenAnyReadFails) {
    writeFile(path(), fromHex("07 00 03 00 00 00 01 02 03"));
    for (unsigned int k = 1; k <= 9; ++k) {
        Blob value(7, fromHex("99"));
        value.reported = 3;
        test::SystemCalls calls;
        cutShort(calls, "read");
        calls.fail("read", k, EIO);
        EXPECT_FALSE(value.fromFile(path().c_str())) << k;
        EXPECT_EQ(calls.count("read"), k);
        EXPECT_EQ(toHex(value.payload), "99");
    }
}

TEST_F(SerializableFromFile, IsFalseOnAllocationFailure) {
    writeFile(path(), fromHex("f8 01 04 00 00 00 fe ff ff ff"));
    std::string const file = path();
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        zntl::Integer value(99);
        bool read = true;
        EXPECT_FALSE(run.runsOutOfMemory([&] { read = value.fromFile(file.c_str()); }));
        EXPECT_EQ(read, !run.happened());
        EXPECT_EQ(value.getValue(), run.happened() ? 99 : -2);
    });
    EXPECT_GT(failures, 0);
}

TEST_F(SerializableFromFile, KeepsNoFileOpen) {
    int const before = dup(0);
    close(before);
    Blob value(7);
    value.reported = 1;
    EXPECT_TRUE(loads(value, fromHex("07 00 01 00 00 00 01")));
    EXPECT_FALSE(loads(value, fromHex("08 00 01 00 00 00 01")));
    EXPECT_FALSE(loads(value, fromHex("07 00 01")));
    EXPECT_FALSE(value.fromFile(directory_.path().c_str()));
    value.onFromBin = [](unsigned char const*, unsigned int) { throw 7; };
    EXPECT_FALSE(loads(value, fromHex("07 00 01 00 00 00 01")));
    int const behind = dup(0);
    close(behind);
    EXPECT_EQ(behind, before) << "the lowest free descriptor is still the same";
}

} // namespace

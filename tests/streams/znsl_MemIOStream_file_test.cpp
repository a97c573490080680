// Saving and loading the memory stream. Its XML operations, which are not implemented.

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "streams/blob.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/system_calls.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace test;
using znsl::MemIOStream;
using zntl::Integer;

/// A stream with a buffer of 100 bytes, 20 of them consumed and 30 unread, and a directory for its
/// files.
class MemIOStreamFile : public testing::Test {
protected:
    MemIOStreamFile() : stream(100) {
        fill(stream, 20, 30);
        records = content(stream);
    }

    test::TemporaryDirectory directory;
    std::string const path = directory / "stream";
    MemIOStream stream;
    Bytes records;
};

class MemIOStreamSave : public MemIOStreamFile {};
class MemIOStreamLoad : public MemIOStreamFile {};

// Saving

TEST_F(MemIOStreamSave, WritesTheUnreadRecordsAndNothingElse) {
    View const before(stream);
    EXPECT_TRUE(stream.save(path.c_str()));
    EXPECT_EQ(readFile(path), records);
    EXPECT_EQ(View(stream), before) << "the stream can still be read";
}

TEST_F(MemIOStreamSave, ReplacesTheContentOfTheFile) {
    writeFile(path, Bytes(1000, 0xEE));
    EXPECT_TRUE(stream.save(path.c_str()));
    EXPECT_EQ(readFile(path), records);
}

TEST_F(MemIOStreamSave, OfAnEmptyStreamMakesAnEmptyFile) {
    MemIOStream const none;
    MemIOStream const unused(100);
    MemIOStream consumed(100);
    fill(consumed, 60, 0);
    for (MemIOStream const* const empty :
         {&none, &unused, static_cast<MemIOStream const*>(&consumed)}) {
        writeFile(path, Bytes(10, 0xEE));
        SystemCalls calls;
        EXPECT_TRUE(empty->save(path.c_str()));
        EXPECT_EQ(calls.log(), "open close");
        EXPECT_EQ(readFile(path), Bytes());
    }
}

TEST_F(MemIOStreamSave, WritesBytesThatAreNotWholeRecords) {
    append(stream, fromHex("01 02 03"));
    EXPECT_TRUE(stream.save(path.c_str()));
    EXPECT_EQ(readFile(path), concat(records, fromHex("01 02 03")));
}

TEST_F(MemIOStreamSave, MovesTheContentWithOneWriteStraightFromTheBuffer) {
    SystemCalls calls;
    EXPECT_TRUE(stream.save(path.c_str()));
    EXPECT_EQ(calls.log(), "open write(30) close");
    EXPECT_EQ(calls.buffer(), readPosition(stream));
    EXPECT_NE(calls.flags() & O_CLOEXEC, 0);
}

TEST_F(MemIOStreamSave, DoesNotAllocate) {
    test::FailingRun noMemory(1);
    bool saved = false;
    EXPECT_FALSE(noMemory.runsOutOfMemory([&] { saved = stream.save(path.c_str()); }));
    EXPECT_TRUE(saved);
    EXPECT_FALSE(noMemory.happened());
}

TEST_F(MemIOStreamSave, IsFalseWhenNoFileCanBeCreated) {
    View const before(stream);
    EXPECT_FALSE(stream.save(directory.path().c_str()));
    EXPECT_FALSE(stream.save((directory / "missing/stream").c_str()));
    EXPECT_FALSE(stream.save(""));
    EXPECT_FALSE(stream.save(nullptr));
    EXPECT_EQ(View(stream), before);
}

TEST_F(MemIOStreamSave, IsFalseOnAFullDisk) {
    test::Device const full("/dev/full");
    EXPECT_FALSE(stream.save(full.path()));
    EXPECT_TRUE(stream.save(test::Device("/dev/null").path()));
    EXPECT_TRUE(MemIOStream().save(full.path()))
        << "an empty stream writes nothing, so nothing fails";
    EXPECT_TRUE(full.isUntouched());
}

TEST_F(MemIOStreamSave, WritesIntoAPipe) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    int const pipe = open(path.c_str(), O_RDWR); // with both ends open, opening does not block
    ASSERT_GE(pipe, 0);
    EXPECT_TRUE(stream.save(path.c_str()));
    Bytes received(100);
    ssize_t const got = read(pipe, received.data(), received.size());
    close(pipe);
    ASSERT_EQ(got, 30);
    received.resize(30);
    EXPECT_EQ(received, records);
}

TEST_F(MemIOStreamSave, IsFalseWhenAnyCallFails) {
    struct Case {
        char const* function;
        int error;
        char const* expectedLog;
    };
    for (Case const& c :
         {Case{"open", EACCES, "open"}, Case{"open", EMFILE, "open"},
          Case{"write", ENOSPC, "open write(30) close"}, Case{"write", EIO, "open write(30) close"},
          Case{"close", EIO, "open write(30) close"},
          Case{"close", ENOSPC, "open write(30) close"}}) {
        View const before(stream);
        SystemCalls calls;
        calls.fail(c.function, 1, c.error);
        EXPECT_FALSE(stream.save(path.c_str())) << c.function << " fails";
        EXPECT_EQ(calls.log(), c.expectedLog);
        EXPECT_EQ(View(stream), before);
    }
}

TEST_F(MemIOStreamSave, RetriesInterruptedCalls) {
    SystemCalls calls;
    calls.fail("open", 1, EINTR).fail("write", 1, EINTR).fail("write", 2, EINTR);
    EXPECT_TRUE(stream.save(path.c_str()));
    EXPECT_EQ(calls.log(), "open open write(30) write(30) write(30) close");
    EXPECT_EQ(readFile(path), records);
}

TEST_F(MemIOStreamSave, DoesNotCloseTwice) {
    // Linux closes the descriptor even if close() is interrupted.
    SystemCalls calls;
    calls.fail("close", 1, EINTR);
    EXPECT_TRUE(stream.save(path.c_str()));
    EXPECT_EQ(calls.log(), "open write(30) close");
    EXPECT_EQ(readFile(path), records);
}

TEST_F(MemIOStreamSave, WritesTheRestAfterAShortWrite) {
    SystemCalls calls;
    calls.limit("write", 1, 7).limit("write", 2, 1);
    EXPECT_TRUE(stream.save(path.c_str()));
    EXPECT_EQ(calls.log(), "open write(30) write(23) write(22) close");
    EXPECT_EQ(readFile(path), records);
}

TEST_F(MemIOStreamSave, IsFalseWhenTheRestDoesNotFit) {
    SystemCalls calls;
    calls.limit("write", 1, 7).fail("write", 2, ENOSPC);
    EXPECT_FALSE(stream.save(path.c_str()));
    EXPECT_EQ(calls.log(), "open write(30) write(23) close");
    EXPECT_EQ(readFile(path), Bytes(records.begin(), records.begin() + 7));
}

TEST_F(MemIOStreamSave, IsFalseWhenTheSystemWritesNothing) {
    SystemCalls calls;
    calls.answer("write", 1, 0);
    EXPECT_FALSE(stream.save(path.c_str()));
    EXPECT_EQ(calls.log(), "open write(30) close");
}

// Loading

TEST_F(MemIOStreamLoad, ReturnsTheSavedRecordsInTheirOrder) {
    MemIOStream source;
    source << Integer(1) << Blob(9, fromHex("0a 0b 0c")) << Integer(2);
    source.close();
    ASSERT_TRUE(source.save(path.c_str()));

    MemIOStream loaded;
    EXPECT_TRUE(loaded.load(path.c_str()));
    EXPECT_EQ(content(loaded), content(source));
    EXPECT_EQ(loaded.capacity(), source.size());
    EXPECT_TRUE(loaded.validate());
    EXPECT_EQ(loaded.count(), 4U);
}

TEST_F(MemIOStreamLoad, ReplacesTheUnreadRecords) {
    writeFile(path, recordOfSize(504, 12));
    EXPECT_TRUE(stream.load(path.c_str()));
    EXPECT_EQ(content(stream), recordOfSize(504, 12));
    EXPECT_EQ(stream.count(), 1U);
}

TEST_F(MemIOStreamLoad, OfAnEmptyFileEmptiesTheStream) {
    writeFile(path, Bytes());
    EXPECT_TRUE(stream.load(path.c_str()));
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_EQ(stream.capacity(), 100U);

    MemIOStream none;
    EXPECT_TRUE(none.load(path.c_str()));
    EXPECT_TRUE(none.isEmpty());
    EXPECT_EQ(none.capacity(), 0U);
}

struct LoadCase {
    char const* what;
    unsigned int capacity;
    unsigned int consumed;
    unsigned int unread;
    unsigned int fileSize;
    unsigned int expectedCapacity;
    unsigned int expectedOffset; // of the content, from the start of the buffer
};

TEST_F(MemIOStreamLoad, MakesRoomAfterTheReadPosition) {
    constexpr LoadCase cases[] = {
        {"a stream without a buffer", 0, 0, 0, 40, 40, 0},
        {"a buffer of the file's size", 40, 0, 0, 40, 40, 0},
        {"a buffer that is too small", 39, 0, 20, 40, 40, 0},
        {"a buffer that is too small, and consumed bytes", 39, 8, 20, 40, 40, 0},
        {"a larger buffer", 100, 0, 30, 40, 100, 0},
        {"room after the consumed bytes", 100, 60, 30, 40, 100, 60},
        {"one byte too few after the consumed bytes", 100, 61, 30, 40, 100, 0},
        {"no room after the consumed bytes", 100, 100, 0, 40, 100, 0},
        {"the whole buffer, and consumed bytes", 100, 60, 30, 100, 100, 0},
        {"a byte more than the buffer", 100, 60, 30, 101, 101, 0},
        {"an empty file", 100, 60, 30, 0, 100, 60},
    };
    for (LoadCase const& c : cases) {
        SCOPED_TRACE(c.what);
        Bytes const file = c.fileSize > 0 ? recordOfSize(504, c.fileSize) : Bytes();
        writeFile(path, file);
        MemIOStream target(c.capacity);
        auto const* const begin = writePosition(target);
        fill(target, c.consumed, c.unread);
        EXPECT_TRUE(target.load(path.c_str()));
        EXPECT_EQ(content(target), file);
        EXPECT_EQ(target.capacity(), c.expectedCapacity);
        if (c.expectedCapacity == c.capacity) {
            EXPECT_EQ(writePosition(target) - target.size(), begin + c.expectedOffset);
        }
    }
}

TEST_F(MemIOStreamLoad, MovesTheContentWithOneReadStraightIntoTheBuffer) {
    writeFile(path, recordOfSize(504, 45));
    SystemCalls calls;
    EXPECT_TRUE(stream.load(path.c_str()));
    EXPECT_EQ(calls.log(), "open fstat read(45) close");
    EXPECT_EQ(calls.buffer(), readPosition(stream));
    EXPECT_NE(calls.flags() & O_CLOEXEC, 0);
}

TEST_F(MemIOStreamLoad, IsFalseButKeepsTheBytesWhenTheyAreNotWholeRecords) {
    Bytes const integer = recordOfSize(504, 12);
    for (Bytes const& bytes :
         {Bytes(1, 0), Bytes(5, 0), Bytes(7, 0xFF), recordHeader(504, 1),
          Bytes(integer.begin(), integer.end() - 1), concat(integer, Bytes(1, 0)),
          concat(integer, recordHeader(504, 0x7FFFFFFF)), recordHeader(504, 0xFFFFFFF8),
          concat(integer, recordHeader(504, 0xFFFFFFEC)), recordHeader(504, 0xFFFFFFFF),
          concat(recordHeader(504, 0xFFFFFFFF), Bytes(7, 0))}) {
        SCOPED_TRACE(toHex(bytes));
        writeFile(path, bytes);
        EXPECT_FALSE(stream.load(path.c_str()));
        EXPECT_EQ(content(stream), bytes);
        EXPECT_FALSE(stream.validate());
    }
}

TEST_F(MemIOStreamLoad, IsFalseAndChangesNothingWhereThereIsNoFile) {
    View const before(stream);
    EXPECT_FALSE(stream.load((directory / "missing").c_str()));
    EXPECT_FALSE(stream.load((directory / "missing/stream").c_str()));
    EXPECT_FALSE(stream.load(""));
    EXPECT_FALSE(stream.load(nullptr));
    EXPECT_EQ(View(stream), before);
}

TEST_F(MemIOStreamLoad, IsFalseForADirectoryWithoutAskingForItsPretendedSize) {
    View const before(stream);
    for (std::string const& folder : {directory.path(), std::string("/"), std::string("/proc")}) {
        test::FailingRun noMemory(1);
        bool loaded = true;
        EXPECT_FALSE(noMemory.runsOutOfMemory([&] { loaded = stream.load(folder.c_str()); }));
        EXPECT_FALSE(noMemory.happened()) << folder;
        EXPECT_FALSE(loaded) << folder;
        EXPECT_EQ(View(stream), before) << folder;
    }
}

TEST_F(MemIOStreamLoad, IsFalseForAPipeWhateverItHolds) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    int const pipe = open(path.c_str(), O_RDWR);
    ASSERT_GE(pipe, 0);
    Bytes const sent = recordOfSize(504, 12);
    EXPECT_EQ(write(pipe, sent.data(), sent.size()), 12);
    View const before(stream);
    EXPECT_FALSE(stream.load(path.c_str()));
    EXPECT_EQ(View(stream), before);
    close(pipe);
}

TEST_F(MemIOStreamLoad, TreatsADeviceWithoutSizeAsAnEmptyFile) {
    for (char const* const device : {"/dev/null", "/dev/zero", "/dev/full"}) {
        fill(stream, 0, 20);
        EXPECT_TRUE(stream.load(test::Device(device).path())) << device;
        EXPECT_TRUE(stream.isEmpty()) << device;
    }
}

TEST_F(MemIOStreamLoad, IsFalseForAFileThatTheKernelGenerates) {
    // The kernel generates this file when it is read, and reports size 0 before.
    View const before(stream);
    EXPECT_FALSE(stream.load("/proc/self/status"));
    EXPECT_EQ(View(stream), before);
}

TEST_F(MemIOStreamLoad, IsFalseForAFileBeyond32Bits) {
    constexpr std::uint64_t fourGiB = std::uint64_t{1} << 32;
    View const before(stream);
    // Truncated to 32 bits, some of these sizes would be the size of the record at the file's
    // start.
    for (std::uint64_t const size : {fourGiB, fourGiB + 12, 3 * fourGiB + 12, 1000 * fourGiB}) {
        writeFile(path, recordOfSize(504, 12));
        std::filesystem::resize_file(path, size); // sparse, so it needs no disk space
        test::FailingRun noMemory(1);
        bool loaded = true;
        EXPECT_FALSE(noMemory.runsOutOfMemory([&] { loaded = stream.load(path.c_str()); }));
        EXPECT_FALSE(noMemory.happened()) << size;
        EXPECT_FALSE(loaded) << size;
        EXPECT_EQ(View(stream), before) << size;
    }
}

TEST_F(MemIOStreamLoad, IsFalseAndChangesNothingOnAllocationFailure) {
    writeFile(path, recordOfSize(504, 200));
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        MemIOStream target(100);
        fill(target, 20, 30);
        View const before(target);
        bool loaded = false;
        EXPECT_FALSE(run.runsOutOfMemory([&] { loaded = target.load(path.c_str()); }));
        if (run.happened()) {
            EXPECT_FALSE(loaded);
            EXPECT_EQ(View(target), before);
        } else {
            EXPECT_TRUE(loaded);
        }
    });
    EXPECT_EQ(failures, 1);
}

TEST_F(MemIOStreamLoad, IsFalseForTheLargestFileOnAllocationFailure) {
    writeFile(path, recordOfSize(504, 12));
    std::filesystem::resize_file(path, 0xFFFFFFFF);
    View const before(stream);
    test::FailingRun noMemory(1);
    bool loaded = true;
    EXPECT_FALSE(noMemory.runsOutOfMemory([&] { loaded = stream.load(path.c_str()); }));
    EXPECT_FALSE(loaded);
    EXPECT_EQ(View(stream), before);
    // A machine with 32-bit addresses cannot have a buffer of this size, so it does not try.
    EXPECT_EQ(noMemory.happened(), sizeof(std::size_t) > 4);
}

TEST_F(MemIOStreamLoad, IsFalseWhenAnyCallFails) {
    struct Case {
        char const* function;
        unsigned int k;
        int error;
        char const* expectedLog;
    };
    writeFile(path, recordOfSize(504, 45));
    for (Case const& c : {Case{"open", 1, ENOENT, "open"}, Case{"open", 1, EMFILE, "open"},
                          Case{"fstat", 1, EIO, "open fstat close"},
                          Case{"read", 1, EIO, "open fstat read(45) close"}}) {
        SCOPED_TRACE(testing::Message() << c.function << " " << c.k << " fails");
        View const before(stream);
        SystemCalls calls;
        calls.fail(c.function, c.k, c.error);
        EXPECT_FALSE(stream.load(path.c_str()));
        EXPECT_EQ(calls.log(), c.expectedLog);
        EXPECT_EQ(View(stream), before);
    }
}

TEST_F(MemIOStreamLoad, IgnoresAFailingClose) {
    writeFile(path, recordOfSize(504, 45));
    SystemCalls calls;
    calls.fail("close", 1, EIO);
    EXPECT_TRUE(stream.load(path.c_str()));
    EXPECT_EQ(calls.count("close"), 1U);
}

TEST_F(MemIOStreamLoad, RetriesInterruptedCalls) {
    writeFile(path, recordOfSize(504, 45));
    SystemCalls calls;
    calls.fail("open", 1, EINTR).fail("read", 1, EINTR).fail("read", 2, EINTR);
    EXPECT_TRUE(stream.load(path.c_str()));
    EXPECT_EQ(calls.log(), "open open fstat read(45) read(45) read(45) close");
    EXPECT_EQ(content(stream), recordOfSize(504, 45));
}

TEST_F(MemIOStreamLoad, ReadsTheRestAfterAShortRead) {
    writeFile(path, recordOfSize(504, 45));
    SystemCalls calls;
    calls.limit("read", 1, 7).limit("read", 2, 1);
    EXPECT_TRUE(stream.load(path.c_str()));
    EXPECT_EQ(calls.log(), "open fstat read(45) read(38) read(37) close");
    EXPECT_EQ(content(stream), recordOfSize(504, 45));
}

TEST_F(MemIOStreamLoad, IsFalseWithTheWritePositionUnchangedWhenTheFileEndsTooSoon) {
    // Another program has truncated the file after load has asked for its size.
    writeFile(path, recordOfSize(504, 45));
    auto const* const position = readPosition(stream);
    for (std::size_t const got : {std::size_t{0}, std::size_t{7}}) {
        SystemCalls calls;
        if (got > 0)
            calls.limit("read", 1, got).answer("read", 2, 0);
        else
            calls.answer("read", 1, 0);
        EXPECT_FALSE(stream.load(path.c_str()));
        EXPECT_EQ(stream.size(), 30U);
        EXPECT_EQ(readPosition(stream), position);
        EXPECT_EQ(stream.capacity(), 100U);
        EXPECT_EQ(calls.count("close"), 1U);
    }
}

TEST_F(MemIOStreamLoad, KeepsItsUnreadBytesWhenTheReadFails) {
    // The first file needs compaction, the second a larger buffer.
    for (unsigned int const fileSize : {85U, 200U}) {
        writeFile(path, recordOfSize(504, fileSize));
        MemIOStream target(100);
        fill(target, 20, 30);
        SystemCalls calls;
        calls.fail("read", 1, EIO);
        EXPECT_FALSE(target.load(path.c_str()));
        EXPECT_EQ(content(target), records);
    }
}

TEST_F(MemIOStreamLoad, LeavesAStreamThatCanBeUsed) {
    writeFile(path, Bytes(5, 0));
    EXPECT_FALSE(stream.load(path.c_str()));
    stream.clear();
    stream << Integer(7);
    Integer number;
    stream >> number;
    EXPECT_EQ(number.getValue(), 7);
    EXPECT_TRUE(stream.isEmpty());
}

TEST_F(MemIOStreamLoad, ResumesFromItsOwnSavedRecords) {
    // A reader may save the remaining records and resume later.
    MemIOStream queue;
    for (int i = 0; i < 20; ++i)
        queue << Integer(i);
    Integer number;
    for (int i = 0; i < 20; ++i) {
        queue >> number;
        EXPECT_EQ(number.getValue(), i);
        ASSERT_TRUE(queue.save(path.c_str()));
        ASSERT_TRUE(queue.load(path.c_str()));
    }
    EXPECT_TRUE(queue.isEmpty());
}

// The typed file, which is not the file that `save` writes

TEST_F(MemIOStreamFile, IsNotTheTypedFile) {
    ASSERT_TRUE(stream.toFile(path.c_str()));
    EXPECT_EQ(readFile(path), concat(fromHex("06 00 22 00 00 00 1e 00 00 00"), records));
    MemIOStream other;
    EXPECT_FALSE(other.load(path.c_str()));
    ASSERT_TRUE(stream.save(path.c_str()));
    EXPECT_FALSE(other.fromFile(path.c_str()));
}

TEST_F(MemIOStreamFile, TypedIsFalseWhenItsContentIsNotWholeRecords) {
    writeFile(path, fromHex("06 00 09 00 00 00 05 00 00 00 01 02 03 04 05"));
    EXPECT_FALSE(stream.fromFile(path.c_str()));
    EXPECT_EQ(toHex(content(stream)), "01 02 03 04 05");
    // The records are whole, but the file's payload is one byte longer.
    writeFile(path, fromHex("06 00 0d 00 00 00 08 00 00 00 01 00 00 00 00 00 00 00 ff"));
    EXPECT_FALSE(stream.fromFile(path.c_str()));
    EXPECT_EQ(content(stream), endOfFileRecord());
}

// XML

TEST(MemIOStreamXml, IsNotImplemented) {
    MemIOStream stream;
    fill(stream, 0, 20);
    View const before(stream);
    std::string const toXml = fault(685, "toXML() - not implemented");
    EXPECT_TRUE(throws<zntl::Exception>(toXml, [&] { stream.toXML(); }));
    EXPECT_TRUE(throws<zntl::Exception>(toXml, [&] { stream.toXML("stream"); }));
    EXPECT_TRUE(throws<zntl::Exception>(toXml, [&] { stream.toXML(nullptr); }));
    std::string const fromXml = fault(694, "fromXML() - not implemented");
    for (char const* const text : {"<znsl_MemIOStream/>", "", static_cast<char const*>(nullptr)})
        EXPECT_TRUE(throws<zntl::Exception>(fromXml, [&] { stream.fromXML(text); }));
    EXPECT_EQ(View(stream), before);
}

TEST(MemIOStreamXml, UsesTheTypeNameWithoutAnElementName) {
    class Rendering : public MemIOStream {
    public:
        using MemIOStream::toXML;
        std::string toXML(char const* name) const override { return std::string(name) + "!"; }
    };
    EXPECT_EQ(Rendering().toXML(), "znsl_MemIOStream!");
}

} // namespace

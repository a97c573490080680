// Each system call of every file operation fails in turn. The operation must return the documented
// result, throw nothing, close its file and leave the documented state.

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "support/bytes.h"
#include "support/system_calls.h"
#include "support/temporary_directory.h"
#include "video/znvl_Resolution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <ostream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using test::Bytes;
using test::SystemCalls;
using ResolutionSet = znsl::Set<znvl::Resolution>;

using Functions = std::vector<std::string>;

struct Operation {
    char const* name;
    /// Runs the operation on a new value, and asserts the value's state after a failure.
    std::function<bool(char const* path)> run;
    /// The initial content of the file.
    Bytes file;
    /// The operation fails if one of these functions fails.
    Functions fatal;

    friend std::ostream& operator<<(std::ostream& out, Operation const& operation) {
        return out << operation.name;
    }
};

znsl::MemIOStream streamOfOne() {
    znsl::MemIOStream stream;
    stream << zntl::Integer(-2);
    return stream;
}

Bytes const integerFile = test::fromHex("f8 01 04 00 00 00 fe ff ff ff");

Functions const reading{"open", "read"};
// Contract: only `save` checks the result of close; other operations ignore it.
Functions const writing{"open", "write"};

std::vector<Operation> const operations{
    {"toFile", [](char const* path) { return zntl::Integer(-2).toFile(path); }, {}, writing},
    {"toFileOfASet",
     [](char const* path) {
         return ResolutionSet{{640, 480}}.toFile(path);
     },
     {},
     writing},
    {"fromFile",
     [](char const* path) {
         zntl::Integer integer(99);
         bool const read = integer.fromFile(path);
         EXPECT_EQ(integer.getValue(), read ? -2 : 99);
         return read;
     },
     integerFile, reading},
    {"toTextFile", [](char const* path) { return zntl::String("text").toFile(path); }, {}, writing},
    {"fromTextFile",
     [](char const* path) {
         zntl::String text("before");
         bool const read = text.fromFile(path);
         EXPECT_EQ(text, read ? "content" : "");
         return read;
     },
     test::bytesOf("content"), reading},
    {"save",
     [](char const* path) {
         znsl::MemIOStream const stream = streamOfOne();
         test::View const before(stream);
         bool const saved = stream.save(path);
         EXPECT_EQ(test::View(stream), before);
         return saved;
     },
     {},
     {"open", "write", "close"}},
    {"load",
     [](char const* path) {
         znsl::MemIOStream stream;
         stream.close();
         bool const loaded = stream.load(path);
         EXPECT_EQ(stream.size(), loaded ? 12U : 8U);
         return loaded;
     },
     test::content(streamOfOne()),
     {"open", "fstat", "read"}},
};

int lowestFreeDescriptor() {
    int const descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(descriptor);
    return descriptor;
}

class FailingFileCalls : public testing::TestWithParam<Operation> {
protected:
    /// Runs the operation with the failures that `spoil` sets up.
    template <class Spoil>
    bool run(Spoil spoil) const {
        test::writeFile(path, GetParam().file);
        int const before = lowestFreeDescriptor();
        bool done;
        {
            SystemCalls calls;
            spoil(calls);
            done = GetParam().run(path.c_str());
        }
        EXPECT_EQ(lowestFreeDescriptor(), before) << "a file stayed open";
        return done;
    }

    /// Returns how often the operation calls this function.
    unsigned int count(std::string const& function) const {
        test::writeFile(path, GetParam().file);
        SystemCalls const calls;
        EXPECT_TRUE(GetParam().run(path.c_str()));
        return calls.count(function);
    }

    bool isFatal(std::string const& function) const {
        Functions const& fatal = GetParam().fatal;
        return std::find(fatal.begin(), fatal.end(), function) != fatal.end();
    }

    template <class Check>
    void forEachCall(Check check) const {
        unsigned int calls = 0;
        for (char const* const function : {"open", "read", "write", "close"}) {
            for (unsigned int k = 1; k <= count(function); ++k, ++calls) {
                SCOPED_TRACE(testing::Message() << function << " number " << k);
                check(function, k);
            }
        }
        EXPECT_GE(calls, 3U) << "at least open, read or write, and close";
    }

    test::TemporaryDirectory const directory;
    std::string const path = directory / "file";
};

TEST_P(FailingFileCalls, ReturnThePromisedResult) {
    forEachCall([&](std::string const& function, unsigned int k) {
        for (int const error : {EIO, ENOSPC, EACCES}) {
            EXPECT_EQ(run([&](SystemCalls& calls) { calls.fail(function, k, error); }),
                      !isFatal(function))
                << error;
        }
    });
}

// Some operations need the file's size and fail without it; others succeed.
TEST_P(FailingFileCalls, OfFstatReturnThePromisedResult) {
    EXPECT_EQ(run([](SystemCalls& calls) { calls.fail("fstat", 1, EIO); }), !isFatal("fstat"));
}

TEST_P(FailingFileCalls, AreRetriedAfterAnInterruption) {
    forEachCall([&](std::string const& function, unsigned int k) {
        EXPECT_TRUE(run([&](SystemCalls& calls) { calls.fail(function, k, EINTR); }));
    });
}

TEST_P(FailingFileCalls, MayTransferSingleBytes) {
    EXPECT_TRUE(run([&](SystemCalls& calls) {
        for (unsigned int k = 1; k < 100; ++k)
            calls.limit("read", k, 1).limit("write", k, 1);
    }));
}

INSTANTIATE_TEST_SUITE_P(Operations, FailingFileCalls, testing::ValuesIn(operations),
                         [](auto const& test) { return test.param.name; });

} // namespace

// docs/formats.md says what is so: its dumps are the golden files, and its code is what is tested
// here.

#include "../../examples/check_before_reading.h"
#include "misc/zntl_String.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "support/bytes.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>

namespace {

using test::append;
using test::Bytes;
using test::concat;
using test::fromHex;
using test::record;
using test::recordHeader;
using test::toHex;

std::filesystem::path root() {
    return std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
}

std::string readText(std::filesystem::path const& path) {
    Bytes const bytes = test::readFile(path.string());
    return {bytes.begin(), bytes.end()};
}

/// The bytes at the start of each line, in front of two blanks and an explanation.
Bytes bytesOfDump(std::string const& dump) {
    Bytes bytes;
    std::istringstream lines(dump);
    for (std::string line; std::getline(lines, line);)
        bytes = concat(bytes, fromHex(line.substr(0, line.find("  "))));
    return bytes;
}

/// The dumps on the page by the names of the files that they show.
std::map<std::string, Bytes> dumps() {
    std::string const page = readText(root() / "docs/formats.md");
    static std::string const opening = "```hex ";
    std::map<std::string, Bytes> found;
    std::size_t position = 0;
    while ((position = page.find(opening, position)) != std::string::npos) {
        std::size_t const name = position + opening.size();
        std::size_t const body = page.find('\n', name) + 1;
        position = page.find("```", body);
        EXPECT_TRUE(found
                        .emplace(page.substr(name, body - 1 - name),
                                 bytesOfDump(page.substr(body, position - body)))
                        .second)
            << "shown twice";
    }
    return found;
}

TEST(FormatsPage, ShowsEveryGoldenFileByteByByte) {
    std::map<std::string, Bytes> const shown = dumps();
    std::set<std::string> const extensions = {".bin", ".stream", ".text", ".typed"};
    std::size_t files = 0;
    for (auto const& file : std::filesystem::directory_iterator(root() / "tests/golden")) {
        if (extensions.count(file.path().extension().string()) == 0)
            continue;
        std::string const name = file.path().filename().string();
        SCOPED_TRACE(name);
        ++files;
        ASSERT_EQ(shown.count(name), 1U);
        EXPECT_EQ(toHex(shown.at(name)), toHex(test::readFile(file.path().string())));
    }
    EXPECT_EQ(files, shown.size());
    EXPECT_EQ(files, 12U);
}

TEST(FormatsPage, QuotesTheChecksAsTheyAre) {
    std::string const page = readText(root() / "docs/formats.md");
    std::string const checks = readText(root() / "examples/check_before_reading.h");
    std::size_t const begin = checks.find("/// Whether zntl::String::fromBin");
    std::size_t const end = checks.find("/// Whether read() and peek()");
    ASSERT_NE(begin, std::string::npos);
    ASSERT_NE(end, std::string::npos);
    std::string const quoted = checks.substr(begin, end - begin - 1); // without the blank line
    EXPECT_NE(page.find("```cpp\n" + quoted + "```\n"), std::string::npos);
}

// The checks themselves

TEST(CheckBeforeReading, OfAStringLooksForItsEnd) {
    struct Case {
        char const* payload;
        bool safe;
    };
    for (Case const& c : {Case{"", false}, Case{"00", false}, Case{"00 00 00 00", false},
                          Case{"00 00 00 00 00", true}, Case{"00 00 00 00 61", false},
                          Case{"01 00 00 00 61 00", true}, Case{"ff ff ff ff 61 00", true},
                          Case{"02 00 00 00 00 61", false}}) {
        Bytes const payload = fromHex(c.payload);
        EXPECT_EQ(holdsString(payload.data(), static_cast<unsigned int>(payload.size())), c.safe)
            << c.payload;
    }
}

TEST(CheckBeforeReading, OfAStreamComparesItsSize) {
    struct Case {
        char const* payload;
        bool safe;
    };
    for (Case const& c :
         {Case{"", false}, Case{"00 00 00", false}, Case{"00 00 00 00", true},
          Case{"01 00 00 00", false}, Case{"01 00 00 00 ff", true}, Case{"00 00 00 00 ff", true},
          Case{"02 00 00 00 ff", false}, Case{"fc ff ff ff", false}, Case{"ff ff ff ff", false}}) {
        Bytes const payload = fromHex(c.payload);
        EXPECT_EQ(holdsStream(payload.data(), static_cast<unsigned int>(payload.size())), c.safe)
            << c.payload;
    }
}

TEST(CheckBeforeReading, OfARecordLooksAtItsLengthAndItsType) {
    struct Case {
        char const* what;
        Bytes content;
        bool safe;
    };
    Case const cases[] = {
        {"nothing", {}, false},
        {"a fragment", Bytes(7, 0), false},
        {"an integer", record(504, Bytes(4, 0)), true},
        {"an integer cut short, which its own reader finds out", record(504, Bytes(3, 0)), true},
        {"a payload cut short", concat(recordHeader(504, 5), Bytes(4, 0)), false},
        {"a length that wraps", concat(recordHeader(504, 0xFFFFFFF8), Bytes(4, 0)), false},
        {"a string", record(501, fromHex("01 00 00 00 61 00")), true},
        {"a string without its end", record(501, fromHex("01 00 00 00 61 62")), false},
        {"a stream", record(6, fromHex("00 00 00 00")), true},
        {"a stream that runs out of its record",
         concat(record(6, fromHex("0c 00 00 00")), record(504, Bytes(4, 0))), false},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        // A buffer that ends where the content ends, so that sanitizers see a step too far.
        znsl::MemIOStream stream(static_cast<unsigned int>(c.content.size()));
        append(stream, c.content);
        ASSERT_EQ(isSafeToRead(stream), c.safe);
        if (!c.safe || stream.getNextType() == 504)
            continue;
        zntl::String text;
        znsl::MemIOStream inner;
        znsl::Serializable* const objects[] = {&text, &inner};
        for (znsl::Serializable* const object : objects) {
            if (object->getTypeId() == stream.getNextType()) {
                EXPECT_EQ(stream.peek(*object), stream.size());
            }
        }
    }
}

} // namespace

// The dumps in docs/formats.md are equal to the golden files.

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

using namespace test;

std::filesystem::path root() {
    return std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
}

std::string readText(std::filesystem::path const& path) {
    Bytes const bytes = test::readFile(path.string());
    return {bytes.begin(), bytes.end()};
}

/// Returns the bytes at the start of each line, which two blanks and an explanation follow.
Bytes bytesOfDump(std::string const& dump) {
    Bytes bytes;
    std::istringstream lines(dump);
    for (std::string line; std::getline(lines, line);)
        bytes = concat(bytes, fromHex(line.substr(0, line.find("  "))));
    return bytes;
}

/// Returns the dumps on the page by the names of the files that they show.
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

} // namespace

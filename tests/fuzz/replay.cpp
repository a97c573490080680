// Runs a fuzz target without a fuzzer. The inputs are each file of the given folders, the file
// truncated at every position, and the file with each of its bytes changed in turn.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes readFile(std::filesystem::path const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void feed(Bytes const& bytes) { LLVMFuzzerTestOneInput(bytes.data(), bytes.size()); }

void feedPrefixes(Bytes const& bytes, std::size_t step) {
    for (std::size_t size = 0; size < bytes.size(); size += step)
        LLVMFuzzerTestOneInput(bytes.data(), size);
}

void feedChanges(Bytes bytes, std::size_t step) {
    for (std::size_t at = 0; at < bytes.size(); at += step) {
        std::uint8_t const before = bytes[at];
        for (int const change : {0x01, 0x80, 0xFF}) {
            bytes[at] = static_cast<std::uint8_t>(before ^ change);
            feed(bytes);
        }
        bytes[at] = before;
    }
}

/// Returns all files in the folders, in the same order on every machine.
std::vector<std::filesystem::path> filesIn(std::vector<std::string> const& folders) {
    std::vector<std::filesystem::path> files;
    for (std::string const& folder : folders) {
        if (!std::filesystem::is_directory(folder))
            continue;
        for (auto const& entry : std::filesystem::directory_iterator(folder))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

int main(int count, char** arguments) {
    auto const files = filesIn({arguments + 1, arguments + count});
    if (files.empty()) {
        std::fputs("no inputs\n", stderr);
        return 1;
    }
    for (auto const& file : files) {
        std::printf("%s\n", file.c_str());
        std::fflush(stdout); // after a crash, the last line is the input that caused it
        Bytes const bytes = readFile(file);
        // In a long input, only about this many positions are tried.
        constexpr std::size_t places = 200;
        std::size_t const step = 1 + bytes.size() / places;
        feed(bytes);
        feedPrefixes(bytes, step);
        feedChanges(bytes, step);
    }
    return 0;
}

// zn-dump: prints the values in stored files.

#include "json_listing.h"
#include "reader.h"
#include "text_listing.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace {

constexpr char const usage[] =
    "Usage: zn-dump [OPTION...] FILE...\n"
    "\n"
    "Prints the values in object stream files and typed files of the library zn, one per\n"
    "line: offset, type id, type name, length, value. \"-\" is the standard input.\n"
    "\n"
    "  --json     print JSON\n"
    "  --stream   read the files as object streams, without detecting their form\n"
    "  --typed    read the files as typed files, without detecting their form\n"
    "  --help     print this text\n"
    "  --version  print the version\n"
    "\n"
    "Exit status: 0 when all files are whole, 1 when one is damaged, 2 when one cannot be\n"
    "read or the output cannot be written.\n";

enum Status : int { whole = 0, damaged = 1, failed = 2 };

struct Options {
    bool json = false;
    std::optional<dump::Form> form;
    std::vector<char const*> files;
};

int misused(char const* fault, char const* argument) {
    std::fprintf(stderr, "zn-dump: %s", fault);
    dump::printEscaped(stderr, argument);
    std::fputs("\nTry 'zn-dump --help'.\n", stderr);
    return failed;
}

/// Prints the start of a message about a file.
void printFault(char const* path) {
    std::fputs("zn-dump: ", stderr);
    dump::printEscaped(stderr, path);
}

constexpr std::size_t maxFileSize = UINT32_MAX; // the library cannot load larger files

/// Reads a whole file. Sets errno on failure.
bool readAll(std::FILE* file, std::vector<unsigned char>& content) {
    std::size_t size = 0;
    do {
        content.resize(std::max<std::size_t>(4096, 2 * size));
        size += std::fread(content.data() + size, 1, content.size() - size, file);
        if (size > maxFileSize) {
            errno = EFBIG;
            return false;
        }
    } while (size == content.size());
    content.resize(size);
    return std::ferror(file) == 0;
}

bool readFile(char const* path, std::vector<unsigned char>& content) {
    if (std::strcmp(path, "-") == 0)
        return readAll(stdin, content);
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(std::fopen(path, "rb"), std::fclose);
    return file && readAll(file.get(), content);
}

Status dumpFile(char const* path, Options const& options, dump::Listing& listing) {
    std::vector<unsigned char> content;
    if (!readFile(path, content)) {
        char const* const reason = std::strerror(errno);
        listing.unreadableFile(path, reason);
        printFault(path);
        std::fprintf(stderr, ": %s\n", reason);
        return failed;
    }
    dump::Bytes const file(content.data(), content.size());
    dump::Form const form = options.form.value_or(dump::formOf(file));
    listing.beginFile(path, form, file.size());
    std::optional<std::size_t> const damage = dump::list(file, form, listing);
    listing.endFile();
    if (!damage)
        return whole;
    std::fflush(stdout); // so that the message follows the values before the damage
    printFault(path);
    std::fprintf(stderr, ": damaged at offset %zu\n", *damage);
    return damaged;
}

Status dumpFiles(Options const& options, dump::Listing& listing) {
    Status status = whole;
    for (char const* const path : options.files)
        status = std::max(status, dumpFile(path, options, listing));
    return status;
}

Status run(Options const& options) {
    if (options.json) {
        dump::JsonListing listing(stdout);
        return dumpFiles(options, listing);
    }
    dump::TextListing listing(stdout);
    return dumpFiles(options, listing);
}

/// Returns `status` if all output was written; otherwise prints an error and returns `failed`.
int finish(int status) {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return status;
    std::fprintf(stderr, "zn-dump: cannot write: %s\n", std::strerror(errno));
    return failed;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    bool onlyFiles = false;
    for (int i = 1; i < argc; ++i) {
        std::string_view const argument = argv[i];
        if (onlyFiles || argument == "-" || argument.substr(0, 1) != "-") {
            options.files.push_back(argv[i]);
        } else if (argument == "--") {
            onlyFiles = true;
        } else if (argument == "--json") {
            options.json = true;
        } else if (argument == "--stream") {
            options.form = dump::Form::stream;
        } else if (argument == "--typed") {
            options.form = dump::Form::typed;
        } else if (argument == "--help") {
            std::fputs(usage, stdout);
            return finish(whole);
        } else if (argument == "--version") {
            std::puts("zn-dump " ZN_VERSION);
            return finish(whole);
        } else {
            return misused("no such option: ", argv[i]);
        }
    }
    if (options.files.empty())
        return misused("no file named", "");
    try {
        return finish(run(options));
    } catch (std::bad_alloc const&) {
        std::fputs("zn-dump: not enough memory\n", stderr);
    } catch (std::length_error const&) { // more than a vector can hold on a 32-bit machine
        std::fputs("zn-dump: not enough memory\n", stderr);
    }
    return failed;
}

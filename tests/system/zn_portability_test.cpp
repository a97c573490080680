#include "system/zn_portability.h"

#include "support/bytes.h"
#include "support/segmentation_fault.h"
#include "support/virtual_time.h"
#include "zn_portability_c.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <ctype.h>
#include <dlfcn.h>
#include <pthread.h>
#include <string>
#include <thread>
#include <time.h>

using test::bytesOf;
using test::toHex;

namespace {

char const* const noText = nullptr;

int sign(int number) { return (number > 0) - (number < 0); }

/// Replaces the C library's table of lower-case letters while it lives.
class LowerCaseTable {
public:
    LowerCaseTable() { current() = this; }
    LowerCaseTable(LowerCaseTable const&) = delete;
    LowerCaseTable& operator=(LowerCaseTable const&) = delete;
    ~LowerCaseTable() { current() = nullptr; }

    /// The result for an unsigned byte.
    std::int32_t& operator[](unsigned char byte) { return entries_[negative + byte]; }
    static LowerCaseTable*& current() {
        static LowerCaseTable* table = nullptr;
        return table;
    }
    std::int32_t const** address() { return &bytes_; }

private:
    static constexpr int negative = 128; // entries before byte 0, for negative indices: all 0
    std::int32_t entries_[negative + 256] = {};
    std::int32_t const* bytes_ = entries_ + negative;
};

} // namespace

extern "C" std::int32_t const** __ctype_tolower_loc() noexcept {
    if (LowerCaseTable::current())
        return LowerCaseTable::current()->address();
    using Function = std::int32_t const** (*)();
    static auto const original =
        reinterpret_cast<Function>(dlsym(RTLD_NEXT, "__ctype_tolower_loc"));
    return original();
}

namespace {

TEST(GetThreadId, IsTheCallingThreadsIdentity) {
    EXPECT_EQ(zn_get_threadid(), static_cast<unsigned long>(pthread_self()));
    unsigned long other = 0;
    unsigned long expected = 0;
    std::thread([&] {
        other = zn_get_threadid();
        expected = static_cast<unsigned long>(pthread_self());
    }).join();
    EXPECT_EQ(other, expected);
    EXPECT_NE(other, zn_get_threadid());
}

TEST(Strdup, CopiesIntoMemoryForFree) {
    for (std::string const& text : {std::string(), std::string("abc"), std::string(1000, 'x')}) {
        char* const copy = zn_strdup(text.c_str());
        ASSERT_NE(copy, nullptr);
        EXPECT_NE(copy, text.c_str());
        EXPECT_EQ(copy, text);
        std::free(copy);
    }
}

TEST(Strdup, OfNullIsTheEmptyText) {
    char* const copy = zn_strdup(noText);
    EXPECT_STREQ(copy, "");
    std::free(copy);
}

TEST(Strcpy, TruncatesAndAlwaysTerminatesTheText) {
    struct {
        char const* source;
        unsigned int size;
        std::string bytes; // of the whole destination, "." for one that was not written
    } const rows[] = {
        {"abcdef", 4, "abc0...."}, {"abcdef", 6, "abcde0.."}, {"abcdef", 7, "abcdef0."},
        {"abcdef", 8, "abcdef00"}, {"abc", 8, "abc00000"},    {"abcdef", 1, "0......."},
        {"", 3, "000....."},       {"", 1, "0......."},       {nullptr, 3, "000....."},
    };
    for (auto const& row : rows) {
        char destination[] = "........";
        EXPECT_EQ(zn_strcpy(destination, row.size, row.source), destination);
        for (char& c : destination)
            c = c == '\0' ? '0' : c;
        EXPECT_EQ(std::string(destination, 8), row.bytes);
    }
}

// Contract: zn_strcpy does not check for size 0, so the final NUL goes to the byte before.
TEST(Strcpy, OfSizeZeroWritesTheByteBefore) {
    char memory[] = "........";
    char* const destination = memory + 4;
    EXPECT_EQ(zn_strcpy(destination, 0, "abc"), destination);
    EXPECT_EQ(toHex(memory, 8), toHex(bytesOf(std::string("...\0....", 8))));
}

TEST(Stricmp, IgnoresLetterCase) {
    struct {
        char const* left;
        char const* right;
        int order;
    } const rows[] = {
        {"", "", 0},       {"abc", "ABC", 0}, {"aBc", "AbD", -1}, {"b", "A", 1},
        {"ab", "abc", -1}, {"a", "", 1},      {"_", "a", -1},     {"_", "Z", -1},
        {"\xE9", "z", 1},  {noText, "", 0},   {"", noText, 0},    {noText, noText, 0},
        {noText, "a", -1}, {"a", noText, 1},
    };
    for (auto const& row : rows)
        EXPECT_EQ(sign(zn_stricmp(row.left, row.right)), row.order);
}

TEST(Strlwr, LowersInPlace) {
    char text[] = "AbC-09_[Z]\xC4\0XYZ";
    EXPECT_EQ(zn_strlwr(text), text);
    EXPECT_EQ(std::string(text, sizeof text - 1),
              std::string("abc-09_[z]\xC4\0XYZ", sizeof text - 1));
}

TEST(Strlwr, LowersEveryByteByTheTableTakenAsUnsigned) {
    std::string text;
    for (int byte = 1; byte < 256; ++byte)
        text += static_cast<char>(byte);
    LowerCaseTable table;
    for (int byte = 0; byte < 256; ++byte)
        table[static_cast<unsigned char>(byte)] = (byte + 100) % 255 + 1;
    zn_strlwr(text.data());
    for (unsigned int byte = 1; byte < 256; ++byte)
        EXPECT_EQ(static_cast<unsigned char>(text[byte - 1]), (byte + 100) % 255 + 1);
}

TEST(Strlwr, DoesNotTouchAnEmptyText) {
    LowerCaseTable table;
    table[0] = 'x';
    char text[] = "\0ABC";
    EXPECT_EQ(zn_strlwr(text), text);
    EXPECT_EQ(std::string(text, 4), std::string("\0ABC", 4));
}

TEST(Strlwr, StopsAtTheTextsEndWhateverTheTableMakesOfIt) {
    LowerCaseTable table;
    table['A'] = '\0';
    table['B'] = 'b';
    char text[] = "BAB";
    zn_strlwr(text);
    EXPECT_EQ(std::string(text, 3), std::string("b\0b", 3));
}

// Contract: zn_strupr starts at address 0, so every call is a segmentation fault.
TEST(StruprDeathTest, FaultsBeforeAnythingIsChanged) {
    for (char const* const text : {"abc", ""}) {
        char buffer[4];
        zn_strcpy(buffer, sizeof buffer, text);
        EXPECT_EXIT(zn_strupr(buffer), test::diedOfASegmentationFault, "");
        EXPECT_STREQ(buffer, text);
    }
}

[[gnu::format(printf, 1, 2)]] int length(char const* format, ...) {
    std::va_list args;
    va_start(args, format);
    int const result = zn_vscprintf(format, args);
    va_end(args);
    return result;
}

TEST(Vscprintf, MeasuresWhatFormattingWouldProduce) {
    EXPECT_EQ(length("%d-%s", 42, "xy"), 5);
    EXPECT_EQ(length("no arguments"), 12);
    EXPECT_EQ(length("%c", 0), 1) << "a NUL counts";
    EXPECT_EQ(length("%s", std::string(100000, 'x').c_str()), 100000);
    std::string const empty;
    EXPECT_EQ(length("%s", empty.c_str()), 0);
    EXPECT_EQ(length(noText), 0) << "null is the empty format";
}

TEST(Vscprintf, IsNegativeForWhatTheCLibraryRejects) {
    wchar_t const noCharacter[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
    EXPECT_LT(length("%ls", noCharacter), 0);
}

TEST(Atoi64, ReadsDecimalNumbersOf64Bits) {
    struct {
        char const* text;
        std::int64_t value;
    } const rows[] = {
        {"0", 0},
        {"42", 42},
        {"-9000000000", -9000000000},
        {" \t\n+12abc", 12},
        {"0x10", 0},
        {"010", 10},
        {"", 0},
        {"abc", 0},
        {"- 1", 0},
        {"9223372036854775807", INT64_MAX},
        {"9223372036854775808", INT64_MAX},
        {"-9223372036854775808", INT64_MIN},
        {"-99999999999999999999", INT64_MIN},
        {noText, 0},
    };
    for (auto const& row : rows)
        EXPECT_EQ(zn_atoi64(row.text), row.value) << (row.text ? row.text : "null");
}

TEST(Tickcount, IsTheMonotonicClockInMillisecondsOf32Bits) {
    struct {
        std::int64_t seconds;
        long nanoseconds;
        std::uint32_t ticks;
    } const rows[] = {
        {0, 0, 0},
        {0, 999999, 0},
        {0, 1000000, 1},
        {12, 345678901, 12345},
        {12, 999999999, 12999},
        {4294967, 295999999, 4294967295U},
        {4294967, 296000000, 0}, // the wrap
        {4294968, 0, 704},
        {INT32_MAX, 999000000, 4294967295U}, // 2147483647999 in 32 bits
    };
    for (auto const& row : rows) {
        test::VirtualTime const time(row.seconds, row.nanoseconds);
        EXPECT_EQ(zn_tickcount(), row.ticks) << row.seconds;
        EXPECT_EQ(time.readings(), 1U);
    }
    if (sizeof(time_t) > 4) {
        test::VirtualTime const time((std::int64_t{1} << 33) + 12, 345678901);
        EXPECT_EQ(zn_tickcount(), 12345U);
    }
}

TEST(Tickcount, IsZeroWhenTheClockCannotBeRead) {
    test::VirtualTime time(12, 345678901);
    time.fail();
    EXPECT_EQ(zn_tickcount(), 0U);
}

std::uint32_t monotonicMilliseconds() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint32_t>(std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000);
}

TEST(Tickcount, GoesWithTheSystemsClock) {
    std::uint32_t const before = monotonicMilliseconds();
    std::uint32_t const ticks = zn_tickcount();
    std::uint32_t const behind = monotonicMilliseconds();
    EXPECT_LE(ticks - before, behind - before);
}

TEST(PortabilityFunctions, AreTheSameInC) {
    zn_functions const c = zn_functions_in_c();
    EXPECT_EQ(c.get_threadid, &zn_get_threadid);
    EXPECT_EQ(c.strdup, &zn_strdup);
    EXPECT_EQ(c.strcpy, &zn_strcpy);
    EXPECT_EQ(c.stricmp, &zn_stricmp);
    EXPECT_EQ(c.strlwr, &zn_strlwr);
    EXPECT_EQ(c.strupr, &zn_strupr);
    EXPECT_EQ(c.vscprintf, &zn_vscprintf);
    EXPECT_EQ(c.atoi64, &zn_atoi64);
    EXPECT_EQ(c.tickcount, &zn_tickcount);
    EXPECT_EQ(zn_length_in_c("%d-%s", 42, "xy"), 5);
}

} // namespace

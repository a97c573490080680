// Several threads may format at the same time.

#include "misc/zntl_String.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using zntl::String;

namespace {

using Results = std::vector<std::pair<String, std::string>>; // actual and expected

/// Formats in every way, with different arguments for each thread.
Results formatAll(int thread) {
    std::string const number = std::to_string(thread);
    std::string longText;
    for (int i = 0; i < 300; ++i)
        longText += std::to_string(i * 7 + thread) + ',';
    char const* const text = longText.c_str();
    float const value = static_cast<float>(thread) + 0.5F;
    return {
        {String::fromFormat("%d:%s", thread, "short"), number + ":short"},
        {String::fromFormat("%s|%d|%s", text, thread, text),
         longText + "|" + number + "|" + longText},
        {String::fromFormat("%.2000s|%*d", text, 5, thread), longText + "|    " + number},
        {String::fromFormat("%05d", thread), "0000" + number},
        {String::fromInteger(thread), number},
        {String::fromFloat(value, 1), number + ".5"},
        {String::fromFloat(value, 60), number + ".5" + std::string(59, '0')},
    };
}

int countWrong(int thread, std::atomic<int>& started) {
    ++started;
    while (started < 2)
        std::this_thread::yield();
    int wrong = 0;
    for (int round = 0; round < 300; ++round) {
        for (auto const& [came, expected] : formatAll(thread))
            wrong += came == expected ? 0 : 1;
    }
    return wrong;
}

TEST(StringFromFormat, ReturnsEveryThreadItsOwnText) {
    std::atomic<int> started{0};
    int wrongThere = 0;
    std::thread other([&] { wrongThere = countWrong(1, started); });
    EXPECT_EQ(countWrong(2, started), 0);
    other.join();
    EXPECT_EQ(wrongThere, 0);
}

} // namespace

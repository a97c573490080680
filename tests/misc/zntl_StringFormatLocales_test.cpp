// Formatted floats have the decimal point of the calling thread's locale.

#include "misc/zntl_String.h"

#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <locale.h>
#include <string>
#include <thread>
#include <tuple>

#ifdef __GLIBC__

using zntl::String;

namespace {

/// A locale whose decimal point is a comma. The test creates it, because a machine may have none.
class CommaLocale {
public:
    CommaLocale() {
        std::ofstream(directory_ / "source") << "comment_char %\n"
                                                "escape_char /\n"
                                                "LC_NUMERIC\n"
                                                "decimal_point \",\"\n"
                                                "thousands_sep \"\"\n"
                                                "grouping -1\n"
                                                "END LC_NUMERIC\n";
        // localedef warns of missing categories and returns 1, although it creates the locale.
        std::string const compile = "localedef -c --no-archive -f ANSI_X3.4-1968 -i " +
                                    (directory_ / "source") + ' ' + (directory_ / "comma") + " 2>" +
                                    (directory_ / "warnings");
        std::ignore = std::system(compile.c_str());
        setenv("LOCPATH", directory_.path().c_str(), 1);
        // Not with newlocale, which leaks memory if LOCPATH is set.
        if (setlocale(LC_NUMERIC, "comma"))
            locale_ = duplocale(LC_GLOBAL_LOCALE);
        setlocale(LC_NUMERIC, "C");
    }
    CommaLocale(CommaLocale const&) = delete;
    CommaLocale& operator=(CommaLocale const&) = delete;
    ~CommaLocale() {
        if (locale_)
            freelocale(locale_);
        unsetenv("LOCPATH");
    }

    locale_t get() const { return locale_; }

private:
    test::TemporaryDirectory directory_;
    locale_t locale_{};
};

/// Waits for the other thread, then formats floats in this locale. Returns how many of them do not
/// have the decimal point `point`.
int countWrong(locale_t locale, char point, std::atomic<int>& started) {
    locale_t const before = uselocale(locale);
    ++started;
    while (started < 2)
        std::this_thread::yield();
    int wrong = 0;
    for (int i = 0; i < 50000; ++i) {
        float const value = static_cast<float>(i) + 0.5F;
        std::string const expected = std::to_string(i) + point + '5';
        wrong += String::fromFloat(value, 1) == expected ? 0 : 1;
        wrong += String::fromFormat("%.1f", static_cast<double>(value)) == expected ? 0 : 1;
    }
    uselocale(before);
    return wrong;
}

TEST(StringFromFloat, HasTheDecimalPointOfItsThread) {
    CommaLocale const comma;
    ASSERT_TRUE(comma.get()) << "localedef did not create the locale";
    locale_t const plain = newlocale(LC_ALL_MASK, "C", locale_t{});
    std::atomic<int> started{0};
    int wrongThere = 0;
    std::thread other([&] { wrongThere = countWrong(comma.get(), ',', started); });
    EXPECT_EQ(countWrong(plain, '.', started), 0);
    other.join();
    EXPECT_EQ(wrongThere, 0);
    freelocale(plain);
}

} // namespace

#endif

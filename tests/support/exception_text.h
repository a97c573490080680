#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <typeinfo>

namespace test {

/// Returns whether `operation` throws exactly an `ExceptionType`, not a class derived from it, with
/// exactly this message:
///
///     EXPECT_TRUE(test::throws<zntl::Exception>("no data", [&] { stream.skip(); }));
template <class ExceptionType, class Operation>
testing::AssertionResult throws(std::string const& text, Operation operation) {
    try {
        operation();
    } catch (std::exception const& exception) {
        if (typeid(exception) != typeid(ExceptionType))
            return testing::AssertionFailure() << "threw another type, " << typeid(exception).name()
                                               << ": " << exception.what();
        if (exception.what() != text)
            return testing::AssertionFailure()
                   << "threw with the text\n  " << exception.what() << "\ninstead of\n  " << text;
        return testing::AssertionSuccess();
    } catch (...) {
        return testing::AssertionFailure() << "threw something that is no std::exception";
    }
    return testing::AssertionFailure() << "did not throw";
}

} // namespace test

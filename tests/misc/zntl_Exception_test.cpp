#include "misc/zntl_Exception.h"

#include "support/failing_allocation.h"

#include <gtest/gtest.h>

#include <climits>
#include <exception>
#include <string>
#include <type_traits>
#include <utility>

using zntl::Exception;
using zntl::locatedMessage;

static_assert(std::is_base_of_v<std::exception, Exception>);
static_assert(sizeof(Exception) == sizeof(std::exception) + sizeof(std::string),
              "the message is the only field");
static_assert(noexcept(std::declval<Exception const&>().what()));
static_assert(!std::is_convertible_v<std::string, Exception>, "constructed explicitly only");

namespace {

std::string const longMessage(100, 'm');

TEST(Exception, WhatReturnsTheMessage) {
    for (std::string const message : {"", "no data", "znsl::Serializable::fromBin() - Failed!"})
        EXPECT_EQ(Exception(message).what(), message);
}

TEST(Exception, KeepsItsOwnCopyOfTheMessage) {
    std::string message = "before";
    Exception const exception(message);
    message = "behind";
    EXPECT_STREQ(exception.what(), "before");
}

TEST(Exception, IsCaughtAsStandardException) {
    try {
        throw Exception("thrown by value");
    } catch (std::exception const& exception) {
        EXPECT_STREQ(exception.what(), "thrown by value");
    }
}

TEST(Exception, CopiesCarryTheMessage) {
    Exception const original(longMessage);
    Exception const copy(original);
    EXPECT_EQ(copy.what(), longMessage);
    EXPECT_NE(copy.what(), original.what()) << "each exception owns its message";

    Exception assigned("before");
    assigned = original;
    EXPECT_EQ(assigned.what(), longMessage);
}

TEST(Exception, ConstructionThrowsBadAllocOnAllocationFailure) {
    EXPECT_EQ(test::failEachAllocationOf([] { Exception{longMessage}; }), 1);
}

TEST(LocatedMessage, NamesSourceLineClassAndText) {
    EXPECT_EQ(locatedMessage("../../../../../libraries/src/misc/zntl_SmartArray", 272,
                             "zntl::SmartArray", "operator[]() - pointer is NULL!"),
              "../../../../../libraries/src/misc/zntl_SmartArray (272): "
              "zntl::SmartArray::operator[]() - pointer is NULL!");
    EXPECT_EQ(locatedMessage("", 0, "", ""), " (0): ::");
    EXPECT_EQ(locatedMessage("a", INT_MAX, "b", "c"), "a (2147483647): b::c");
}

} // namespace

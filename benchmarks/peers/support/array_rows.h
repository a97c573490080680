#pragma once

#include "support/row.h"

#include "misc/zntl_SmartArray.h"

#include <boost/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>

#include <cstddef>
#include <memory>
#include <string>

namespace bench {

inline constexpr std::size_t arraySize = 64;

template <class Array>
auto copying(Array const& array) {
    return [=] {
        Array copy = array;
        benchmark::DoNotOptimize(copy);
        return 0;
    };
}

inline void addArrayRows(std::string const& where) {
    Row("array: make and release" + where)
        .library([] {
            zntl::SmartArray<char> array(new char[arraySize], arraySize);
            benchmark::DoNotOptimize(array);
            return 0;
        })
        .peer("std::shared_ptr",
              [] {
                  std::shared_ptr<char[]> array(new char[arraySize]);
                  benchmark::DoNotOptimize(array);
                  return 0;
              })
        .peer("boost::make_shared",
              [] {
                  auto array = boost::make_shared_noinit<char[]>(arraySize);
                  benchmark::DoNotOptimize(array);
                  return 0;
              })
        .limit("new[]", [] {
            std::unique_ptr<char[]> array(new char[arraySize]);
            benchmark::DoNotOptimize(array);
            return 0;
        });
    Row("array: copy a handle and release it" + where)
        .library(copying(zntl::SmartArray<char>(new char[arraySize], arraySize)))
        .peer("std::shared_ptr", copying(std::shared_ptr<char[]>(new char[arraySize])))
        .peer("boost::make_shared", copying(boost::make_shared_noinit<char[]>(arraySize)));
}

} // namespace bench

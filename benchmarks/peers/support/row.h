#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace bench {

template <class Result>
std::string printed(Result const& result) {
    if constexpr (std::is_arithmetic_v<Result>) {
        return std::to_string(result);
    } else if constexpr (std::is_convertible_v<Result const&, std::string const&>) {
        return result;
    } else {
        std::string all;
        for (auto const& element : result)
            all += printed(element) + '\x1f';
        return all;
    }
}

/// One row of the comparison: the same work, done by the library and by its peers. Each contender's
/// work is a function object that returns the result. The row checks that all results are equal
/// before it measures times.
class Row {
public:
    explicit Row(std::string name) : name_(std::move(name)) {}

    template <class Work>
    Row& library(Work work) {
        return peer("zn", std::move(work));
    }

    template <class Work>
    Row& peer(std::string const& contender, Work work) {
        std::string const result = printed(work());
        if (expected_.value_or(result) != result) {
            std::fprintf(stderr, "%s: %s returns\n%.500s\ninstead of\n%.500s\n", name_.c_str(),
                         contender.c_str(), result.c_str(), expected_->c_str());
            std::exit(1);
        }
        expected_ = result;
        benchmark::RegisterBenchmark((name_ + '/' + contender).c_str(),
                                     [work](benchmark::State& state) mutable {
                                         for (auto _ : state) {
                                             benchmark::DoNotOptimize(work());
                                             benchmark::ClobberMemory();
                                         }
                                     });
        return *this;
    }

private:
    std::string name_;
    std::optional<std::string> expected_;
};

} // namespace bench

#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace bench {

/// Each program defines this function, which adds its rows.
void addRows();

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
/// work is a function object that receives the row's inputs, whose values the compiler cannot know,
/// and returns the result. The row checks that all results are equal before it measures times.
template <class... Inputs>
class Row {
public:
    explicit Row(std::string name, Inputs... inputs)
        : name_(std::move(name)), inputs_(std::move(inputs)...) {}

    template <class Work>
    Row& library(Work work) {
        return peer("zn", std::move(work));
    }

    template <class Work>
    Row& peer(std::string const& contender, Work work) {
        auto run = [work = std::move(work), inputs = inputs_]() mutable {
            return std::apply(work, inputs);
        };
        std::string const result = printed(run());
        if (expected_.value_or(result) != result) {
            std::fprintf(stderr, "%s: %s returns\n%.500s\ninstead of\n%.500s\n", name_.c_str(),
                         contender.c_str(), result.c_str(), expected_->c_str());
            std::exit(1);
        }
        expected_ = result;
        benchmark::RegisterBenchmark((name_ + '/' + contender).c_str(),
                                     [run](benchmark::State& state) mutable {
                                         for (auto _ : state) {
                                             benchmark::DoNotOptimize(run());
                                             benchmark::ClobberMemory();
                                         }
                                     });
        return *this;
    }

private:
    std::string name_;
    std::tuple<Inputs...> inputs_;
    std::optional<std::string> expected_;
};

} // namespace bench

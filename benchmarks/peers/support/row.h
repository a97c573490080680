#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace bench {

inline std::string printed(std::string const& text) { return text; }
inline std::string printed(char const* text) { return text; }
template <class Number, class = std::enable_if_t<std::is_arithmetic_v<Number>>>
std::string printed(Number number) {
    return std::to_string(number);
}
template <class Element>
std::string printed(std::vector<Element> const& elements) {
    std::string all;
    for (Element const& element : elements)
        all += printed(element) + '\x1f';
    return all;
}

/// One line of the comparison: the same work, done by the library, by what a user would take in its
/// place, and where there is one, by what bounds them all. A piece of work is a function object; it
/// returns its result, and the results of all but the limits are compared before anything is timed.
class Row {
public:
    explicit Row(std::string name) : name_(std::move(name)) {}

    template <class Work>
    Row& library(Work work) {
        return peer("zn", std::move(work));
    }

    template <class Work>
    Row& peer(std::string const& name, Work work) {
        compare(name, printed(work()));
        return add(name, std::move(work));
    }

    template <class Work>
    Row& limit(std::string const& name, Work work) {
        work(); // may prepare files
        return add("limit " + name, std::move(work));
    }

private:
    template <class Work>
    Row& add(std::string const& contender, Work work) {
        benchmark::RegisterBenchmark((name_ + '/' + contender).c_str(),
                                     [work](benchmark::State& state) mutable {
                                         for (auto _ : state) {
                                             benchmark::DoNotOptimize(work());
                                             benchmark::ClobberMemory();
                                         }
                                     });
        return *this;
    }

    void compare(std::string const& contender, std::string const& result) {
        if (!expected_)
            expected_ = result;
        if (*expected_ == result)
            return;
        std::fprintf(stderr, "%s: %s gives\n%.500s\ninstead of\n%.500s\n", name_.c_str(),
                     contender.c_str(), result.c_str(), expected_->c_str());
        std::exit(1);
    }

    std::string name_;
    std::optional<std::string> expected_;
};

} // namespace bench

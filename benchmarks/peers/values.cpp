// Sharing arrays, XML forms, resolutions.

#include "support/row.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_SmartArray.h"
#include "video/znvl_Resolution.h"

#include <absl/strings/str_cat.h>
#include <boost/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <fmt/format.h>

#include <map>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

namespace bench {

namespace {

/// `make` returns an array of 64 characters, which the work releases.
template <class Make>
auto making(Make make) {
    return [=] {
        auto array = make();
        benchmark::DoNotOptimize(array);
        return 0;
    };
}

void addArrayRows() {
    // A second thread, because std::shared_ptr uses atomic counts only in programs with threads.
    std::thread([] { pause(); }).detach();
    auto const zn = [] { return zntl::SmartArray<char>(new char[64], 64); };
    auto const std = [] { return std::shared_ptr<char[]>(new char[64]); };
    auto const boost = [] { return boost::make_shared_noinit<char[]>(64); };
    Row("array: make and release")
        .library(making(zn))
        .peer("std::shared_ptr", making(std))
        .peer("boost::make_shared", making(boost));
    Row("array: copy a handle and release it")
        .library(making([array = zn()] { return array; }))
        .peer("std::shared_ptr", making([array = std()] { return array; }))
        .peer("boost::make_shared", making([array = boost()] { return array; }));
}

// Resolutions

std::string peerName(znvl::Resolution const& size) {
    static std::map<std::pair<int, int>, std::string> const names = {{{176, 144}, "QCIF"},
                                                                     {{352, 288}, "CIF"},
                                                                     {{704, 576}, "4CIF"},
                                                                     {{1280, 720}, "720p"},
                                                                     {{1920, 1080}, "1080p"}};
    int const width = size.width.getValue();
    int const height = size.height.getValue();
    auto const name = names.find({width, height});
    return name != names.end() ? name->second : absl::StrCat(width, "x", height);
}

void addNameRow(std::string const& name, znvl::Resolution const& size) {
    Row("resolution: name of " + name, size)
        .library([](znvl::Resolution const& own) { return own.toNameString(); })
        .peer("std::map, absl", peerName);
}

} // namespace

void addRows() {
    Row("xml: an integer", -1234567)
        .library([integer = zntl::Integer(-1234567)](int) { return integer.toXML("width"); })
        .peer("std::to_string",
              [](int number) { return "<width>" + std::to_string(number) + "</width>"; })
        .peer("fmt", [](int number) { return fmt::format("<{0}>{1}</{0}>", "width", number); })
        .peer("absl", [](int number) { return absl::StrCat("<width>", number, "</width>"); });
    addNameRow("a named size", {1920, 1080});
    addNameRow("another size", {640, 480});
    addArrayRows();
}

} // namespace bench

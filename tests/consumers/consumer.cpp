// A program outside the project, with the same include lines as the library's sources. It passes
// objects through a stream, and catches an exception of the library by its type.

#include "misc/zntl_Exception.h"
#include "misc/zntl_Markup.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "system/zn_portability.h"
#include "system/znst_Wait.h"
#include "video/znvl_Resolution.h"

#include <cstdio>
#include <typeinfo>

namespace {

znvl::Resolution throughStream(znvl::Resolution const& resolution) {
    znsl::MemIOStream stream;
    stream << resolution;
    znvl::Resolution read;
    stream >> read;
    return read;
}

char const* faultOfEmptyStream() {
    try {
        znsl::MemIOStream().skip();
    } catch (zntl::Exception const& fault) {
        return typeid(fault) == typeid(zntl::Exception) ? "zntl::Exception" : "a copy of its type";
    } catch (...) {
        return "something unknown";
    }
    return "nothing";
}

} // namespace

int main() {
    znsl::Set<znvl::Resolution> resolutions;
    resolutions.insert(throughStream({640, 480}));
    resolutions.insert(throughStream({352, 288}));
    for (znvl::Resolution const& resolution : resolutions)
        std::printf("%s\n", resolution.toNameString().c_str());

    zntl::String const text("a,'b,c'");
    unsigned int start = 0;
    unsigned int end = 0;
    bool selfClosing = false;
    bool const found = zntl::findOpenTag("<br/>", 0, "br", start, end, selfClosing);
    std::printf("%zu %d %d\n", text.tokenize(",", "'").size(), found, zn_stricmp("CIF", "cif"));
    std::printf("%s\n", faultOfEmptyStream());
    znst::Wait(0);
}

// Collects resolutions in a set and saves it in a file together with objects of other types. Then
// reads the file as a program would that does not know all of these types.
//
//     collect_resolutions FILE

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "video/znvl_Resolution.h"

#include <iostream>

namespace {

using Resolutions = znsl::Set<znvl::Resolution>;

/// A class of this program: a string with a different type id.
class Remark : public zntl::String {
public:
    using zntl::String::String;
    unsigned int getTypeId() const override { return 900; }
};

bool save(char const* path) {
    Resolutions resolutions;
    resolutions.insert({640, 480});
    resolutions.insert({352, 288});
    resolutions.insert({320, 240});
    resolutions.insert({640, 480}); // is in the set already

    znsl::MemIOStream stream;
    stream << zntl::Integer(2) << zntl::String("Gate 3") << Remark("north wall") << resolutions;
    stream.close();
    std::cout << "saving " << stream.count() << " objects, " << stream.size() << " bytes\n";
    return stream.save(path);
}

/// Reads a file that this program wrote. docs/formats.md describes how to check untrusted files.
bool load(char const* path) {
    znsl::MemIOStream stream;
    if (!stream.load(path))
        return false;

    // The first two objects identify the file. `checkTypes` and `peek` leave them in the stream.
    // (Arguments after the count must have exactly the type znsl::Serializable*.)
    zntl::Integer format;
    zntl::String place;
    znsl::Serializable* const first = &format;
    znsl::Serializable* const second = &place;
    if (!stream.checkTypes(2, first, second))
        return false;
    unsigned int const size = stream.peek(2, first, second);
    std::cout << "format " << format.getValue() << ", place \"" << place << "\", in the first "
              << size << " bytes\n";
    stream >> format >> place;

    Resolutions resolutions;
    while (!stream.isEmpty() && !stream.isEOF()) {
        unsigned int const type = stream.getNextType();
        if (type == resolutions.getTypeId())
            stream >> resolutions;
        else
            std::cout << "skipping type " << type << ", " << stream.skip() << " bytes\n";
    }
    for (znvl::Resolution const& resolution : resolutions)
        std::cout << resolution.toNameString() << '\n';
    std::cout << (stream.isEOF() ? "complete\n" : "cut short\n");
    return stream.isEOF();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: collect_resolutions FILE\n";
        return 2;
    }
    try {
        return save(argv[1]) && load(argv[1]) ? 0 : 1;
    } catch (zntl::Exception const& e) {
        std::cerr << e.what() << '\n';
        return 1;
    }
}

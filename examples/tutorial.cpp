// docs/tutorial.md quotes the parts between the marks.

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "streams/znsl_Struct.h"
#include "system/znst_Wait.h"
#include "video/znvl_Resolution.h"

#include <iostream>
#include <vector>

namespace {

// [text]
void useText() {
    zntl::String const line = "  name=Gate 3; size='640 x 480; wide'  ";
    for (zntl::String const& field : line.trim().tokenize(";", "'"))
        std::cout << '[' << field.trim() << "]\n";

    std::cout << zntl::String::fromFormat("%dx%d", 640, 480) << '\n';
    std::cout << zntl::String::encodeHtml("<b> & </b>") << '\n';
    std::cout << zntl::String("Yes").toBool() << zntl::String("off").toBool() << '\n';
}
// [text]

// [resolution]
void useResolutions() {
    znvl::Resolution const sensor(1920, 1080);
    std::cout << sensor.scale({640, 640}).toNameString() << '\n';

    znvl::Resolution preview;
    if (preview.fromString("cif"))
        std::cout << preview.width.getValue() << " x " << preview.height.getValue() << '\n';

    znsl::Set<znvl::Resolution> sizes;
    sizes.insert(sensor);
    sizes.insert(preview);
    sizes.insert({352, 288}); // is in the set already
    for (znvl::Resolution const& size : sizes)
        std::cout << size.toNameString() << '\n';
}
// [resolution]

// [class]
/// The place of a camera: a value that can be stored.
class Place : public znsl::Struct<Place> {
public:
    zntl::Integer floor = 0;
    zntl::String name;

    static constexpr auto schema =
        znsl::schema(2001, "Place",                        // type id and type name
                     znsl::member(&Place::floor, "floor"), // one line for each member
                     znsl::member(&Place::name, "name"));

    // As in any class: an order for sets, and a convenient constructor.
    bool operator<(Place const& other) const { return name < other.name; }
    Place() = default;
    Place(int number, char const* text) : floor(number), name(text) {}
};
// [class]

// [places]
void usePlaces(char const* path) {
    znsl::Set<Place> const places = {{2, "Gate 3"}, {0, "Car park"}};
    std::cout << places.toXML() << '\n';
    if (!places.toFile(path))
        std::cout << "cannot write " << path << '\n';

    znsl::Set<Place> stored;
    if (!stored.fromFile(path))
        std::cout << "cannot read " << path << '\n';
    for (Place const& place : stored)
        std::cout << place.floor.getValue() << ' ' << place.name << '\n';
}
// [places]

// [stream]
void useStreams(char const* path) {
    znsl::MemIOStream out;
    out << Place(2, "Gate 3") << zntl::Integer(7) << znvl::Resolution(640, 480);
    out.close();
    std::cout << out.count() << " objects, " << out.size() << " bytes\n";
    if (!out.save(path))
        std::cout << "cannot write " << path << '\n';

    znsl::MemIOStream in;
    if (!in.load(path))
        std::cout << "cannot read " << path << '\n';
    Place place;
    znvl::Resolution size;
    in >> place;
    in.skip(); // an object of any type
    in >> size;
    std::cout << place.toXML() << ' ' << size.toNameString()
              << (in.isEOF() ? ", complete\n" : "\n");
}
// [stream]

// [faults]
void meetFaults() {
    znsl::MemIOStream stream;
    stream << zntl::Integer(7);
    try {
        Place place;
        stream >> place; // an Integer is next
    } catch (zntl::Exception const& fault) {
        std::cout << fault.what() << '\n';
    }
    std::cout << stream.count() << " object is still there\n";
}
// [faults]

// [wait]
/// Ready when a stream is not empty.
class Arrival : public znst::WaitObject {
public:
    explicit Arrival(znsl::IStream const& stream) : stream_(stream) {}
    unsigned int wait(unsigned int /*timeout*/) const override { return stream_.isEmpty() ? 0 : 1; }

private:
    znsl::IStream const& stream_;
};

void waitForObjects() {
    znsl::MemIOStream left;
    znsl::MemIOStream right;
    Arrival onLeft(left);
    Arrival onRight(right);
    std::vector<znst::WaitObject*> const arrivals = {&onLeft, &onRight};
    unsigned int which = 99;

    std::cout << znst::Wait(arrivals, 5, which) << ' ' << which << '\n';
    right << zntl::Integer(7);
    std::cout << znst::Wait(arrivals, 5, which) << ' ' << which << '\n';
}
// [wait]

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: tutorial FILE\n";
        return 2;
    }
    useText();
    useResolutions();
    usePlaces(argv[1]);
    useStreams(argv[1]);
    meetFaults();
    waitForObjects();
}

// The code of docs/tutorial.md, which quotes the parts between the marks.

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Members.h"
#include "streams/znsl_Set.h"
#include "system/znst_Wait.h"
#include "video/znvl_Resolution.h"

#include <iostream>
#include <list>
#include <map>
#include <string>
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
/// A place where a camera hangs: a value that can be stored.
class Place : public znsl::Serializable {
public:
    zntl::Integer floor;
    zntl::String name;

    Place() : floor(0) {}
    Place(int number, char const* text) : floor(number), name(text) {}

    bool operator<(Place const& other) const { return name < other.name; }

    unsigned int getTypeId() const override { return 20001; }
    std::string getTypeName() const override { return "Place"; }

    std::string toXML() const override { return toXML(getTypeName().c_str()); }
    std::string toXML(char const* element) const override {
        return znsl::Members(*this).toXML(element, {"tutorial", 0, "Place"});
    }
    bool fromXML(char const* xml) override {
        return znsl::Members(*this).fromXML(xml, {"tutorial", 0, "Place"});
    }
    unsigned int getBinLength() const override { return znsl::Members(*this).getBinLength(); }
    unsigned int toBin(unsigned char* out) const override {
        return znsl::Members(*this).toBin(out);
    }
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        return znsl::Members(*this).fromBin(data, length);
    }

    /// The members of the binary form in their order, and those of the XML form by their names.
    void fillSerializable(std::list<znsl::Serializable*>& list,
                          std::map<std::string, znsl::Serializable*>& table) const {
        auto& self = const_cast<Place&>(*this);
        list = {&self.floor, &self.name};
        table = {{"floor", &self.floor}, {"name", &self.name}};
    }
};
// [class]

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
    in.skip(); // whatever it is
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
/// Ready when there is something in a stream.
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
    useStreams(argv[1]);
    meetFaults();
    waitForObjects();
}

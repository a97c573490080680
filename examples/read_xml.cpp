// Reads a document with an iterator, and stored values with `fromXML`.

#include "misc/zntl_String.h"
#include "streams/znsl_Set.h"
#include "xml/znxml_DomIterator.h"

#include <cstdio>

int main() {
    // [document]
    auto const camera = znxml::DomIterator::parse("<camera name='hall'>"
                                                  "<stream fps='25'>main &amp; wide</stream>"
                                                  "<stream fps='5'>small</stream>"
                                                  "<light/>"
                                                  "</camera>");
    if (camera.atEnd())
        return 1; // malformed
    std::printf("%s has %u streams\n", camera.getAttribute("name").c_str(),
                camera.numChildren("stream"));
    for (auto part = camera.childrenBegin(); !part.atEnd(); part.nextSibling())
        std::printf("%s: \"%s\"\n", part.getName().c_str(), part.getValue().c_str());
    std::printf("%s\n", camera.findChild("light").toXML().c_str());
    // [document]

    // [values]
    znsl::Set<zntl::String> written;
    written.insert("a < b");
    written.insert("\"c\"");
    znsl::Set<zntl::String> read;
    bool const isRead = read.fromXML(written.toXML().c_str());
    std::printf("%d %d\n", isRead, read == written);
    // [values]
}

// Reads values from XML. Only the library uses iterators, not this program.

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Set.h"

#include <cstdio>

int main() {
    zntl::Integer number(0);
    bool const isRead = number.fromXML("<number>42</number>");
    znsl::Set<zntl::String> texts;
    texts.fromXML("<texts><text>a &amp; b</text><text kind='empty'/></texts>");
    std::printf("%d %d %zu\n", isRead, number.getValue(), texts.size());
}

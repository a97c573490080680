#include "streams/internal/znsl_readWithin.h"

#include "misc/zntl_Exception.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"

namespace znsl {

namespace {

/// Whether `object.fromBin` would stay within the bytes. Only a String or a MemIOStream could read
/// past them.
bool staysWithin(Serializable const& object, unsigned char const* data, unsigned int length) {
    if (dynamic_cast<zntl::String const*>(&object))
        return zntl::String::canReadBin(data, length);
    if (dynamic_cast<MemIOStream const*>(&object))
        return MemIOStream::canReadBin(data, length);
    // Equivalent: the cache only saves time
    cautiousClass(typeid(object)).store(&typeid(object), std::memory_order_relaxed);
    return true;
}

} // namespace

void requireWithin(Serializable const& object, unsigned char const* data, unsigned int length) {
    // Equivalent: staysWithin would return the same
    if (isCertainlyWithin(data, length) || isKnownCautious(object))
        return;
    if (!staysWithin(object, data, length))
        throw zntl::Exception(unreadable);
}

unsigned int readWithin(Serializable& object, unsigned char const* data, unsigned int length) {
    requireWithin(object, data, length);
    return object.fromBin(data, length);
}

} // namespace znsl

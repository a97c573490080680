#include "streams/znsl_OStream.h"

namespace znsl {

bool OStream::getNextObject(IStream& source, unsigned char*& data, unsigned int& length) {
    return source.readNextObject(data, length);
}

} // namespace znsl

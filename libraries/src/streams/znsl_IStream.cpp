#include "streams/znsl_IStream.h"

#include "streams/znsl_EndOfFile.h"
#include "system/zn_portability.h"
#include "system/znst_Wait.h"

#include <cstdint>

namespace znsl {

bool IStream::wait(unsigned int timeout) const {
    constexpr unsigned int withoutLimit = 0xFFFFFFFF;
    std::uint32_t const start = zn_tickcount();
    // Contract: the deadline is checked before the stream, so wait(0) is always false. Programs on
    // cameras may depend on it.
    while (timeout == withoutLimit || zn_tickcount() - start < timeout) {
        if (!isEmpty())
            return true;
        znst::Wait(1);
    }
    return false;
}

bool IStream::isEOF() const { return !isEmpty() && getNextType() == EndOfFile::typeId; }

} // namespace znsl

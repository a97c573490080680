#include "streams/znsl_IStream.h"

#include "streams/znsl_EndOfFile.h"
#include "system/zn_portability.h"
#include "system/znst_Wait.h"

#include <cstdint>

namespace znsl {

bool IStream::wait(unsigned int timeout) const {
    constexpr unsigned int withoutLimit = 0xFFFFFFFF;
    std::uint32_t const start = zn_tickcount();
    if (timeout == withoutLimit) {
        while (isEmpty())
            znst::Wait(1);
        return true;
    }
    while (true) {
        // Contract: the deadline is checked before the stream, so wait(0) is always false. Programs
        // on cameras may depend on it.
        if (zn_tickcount() - start >= timeout)
            return false;
        if (!isEmpty())
            return true;
        znst::Wait(1);
    }
}

bool IStream::isEOF() const { return !isEmpty() && getNextType() == EndOfFile::typeId; }

} // namespace znsl

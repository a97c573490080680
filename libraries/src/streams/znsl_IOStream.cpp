#include "streams/znsl_IOStream.h"

namespace znsl {

IOStream::~IOStream() = default;

} // namespace znsl

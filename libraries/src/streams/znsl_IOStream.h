#pragma once

#include "streams/znsl_IStream.h"
#include "streams/znsl_OStream.h"

namespace znsl {

/// A source and a sink of serialized objects in one.
class IOStream : public IStream, public OStream {
public:
    IOStream() = default;
    IOStream(IOStream const&) = default;
    IOStream& operator=(IOStream const&) = default;
    ~IOStream() override;
};

} // namespace znsl

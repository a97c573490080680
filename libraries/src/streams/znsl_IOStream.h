#pragma once

#include "streams/znsl_IStream.h"
#include "streams/znsl_OStream.h"

namespace znsl {

/// A stream that is both a source and a sink of serialized objects.
class IOStream : public IStream, public OStream {
public:
    IOStream() = default;
    IOStream(IOStream const&) = default;
    IOStream& operator=(IOStream const&) = default;
    ~IOStream() override;
};

} // namespace znsl

#pragma once

#include "streams/znsl_IStream.h"
#include "streams/znsl_Serializable.h"

namespace znsl {

/// A sink of serialized objects. No operation locks.
class OStream {
public:
    OStream() = default;
    OStream(OStream const&) = default;
    OStream& operator=(OStream const&) = default;
    virtual ~OStream() = default;

    /// Passes buffered data on to its destination.
    virtual void flush() = 0;

    /// Ends the sequence of objects with an end-of-file marker.
    virtual void close() = 0;

    /// Appends an object; returns the bytes appended.
    virtual unsigned int write(Serializable const& object) = 0;

    /// Calls `write`; returns the stream, so that calls can be chained.
    virtual OStream& operator<<(Serializable const& object) = 0;

    /// Moves one raw record from `source`, obtained with `getNextObject`, to this stream.
    virtual OStream& operator<<(IStream& source) = 0;

    /// Obtains the next raw record from `source` through its `readNextObject`, with the same
    /// result, ownership and exceptions.
    virtual bool getNextObject(IStream& source, unsigned char*& data, unsigned int& length);
};

} // namespace znsl

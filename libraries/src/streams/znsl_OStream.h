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

    /// Writes buffered data to its destination.
    virtual void flush() = 0;

    /// Ends the sequence of objects with an end-of-file marker.
    virtual void close() = 0;

    /// Appends an object. Returns the number of bytes appended.
    virtual unsigned int write(Serializable const& object) = 0;

    /// Calls `write` and returns the stream, so calls can be chained.
    virtual OStream& operator<<(Serializable const& object) = 0;

    /// Moves one raw record, which it obtains with `getNextObject`, from `source` to this stream.
    virtual OStream& operator<<(IStream& source) = 0;

    /// Calls `source.readNextObject`, with the same results, ownership and exceptions.
    virtual bool getNextObject(IStream& source, unsigned char*& data, unsigned int& length);
};

} // namespace znsl

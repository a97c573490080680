#pragma once

#include "streams/znsl_Serializable.h"

namespace znsl {

/// A source of serialized objects.
///
/// No operation locks. `wait` is only useful if another thread fills the stream. The implementation
/// of the stream or its users must then make `isEmpty()` safe to call while that thread writes.
class IStream {
public:
    IStream() = default;
    IStream(IStream const&) = default;
    IStream& operator=(IStream const&) = default;
    virtual ~IStream() = default;

    /// Polls the stream once a millisecond. Returns true once it has data, or false if `timeout`
    /// milliseconds pass first; 0xFFFFFFFF means no limit.
    ///
    /// Checks the deadline before the stream: `wait(0)` is false even if the stream has data, and
    /// data that arrives in the millisecond of the deadline is too late.
    virtual bool wait(unsigned int timeout) const;

    /// The type id of the next object; 1, the id of the end-of-file marker, if there is none.
    virtual unsigned int getNextType() const = 0;

    /// Whether the next object is an end-of-file marker; false for a stream without data.
    virtual bool isEOF() const;

    /// Whether the stream has no data.
    virtual bool isEmpty() const = 0;

    /// Reads the next object into `object` and removes it from the stream. Returns the number of
    /// bytes consumed.
    virtual unsigned int read(Serializable& object) = 0;

    /// Removes the next object, which may be a marker, without reading it. Returns the number of
    /// bytes consumed.
    virtual unsigned int skip() = 0;

    /// Calls `read` and returns the stream, so calls can be chained.
    virtual IStream& operator>>(Serializable& object) = 0;

    /// Removes the next object from the stream as a raw record (header and payload). If it returns
    /// true, the caller owns `data`, an array of `length` bytes, and must release it with delete[].
    /// Returns false if there is no object.
    virtual bool readNextObject(unsigned char*& data, unsigned int& length) = 0;
};

} // namespace znsl

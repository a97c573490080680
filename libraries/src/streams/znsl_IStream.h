#pragma once

#include "streams/znsl_Serializable.h"

namespace znsl {

/// A source of serialized objects.
///
/// No operation locks. `wait` is only useful while another thread fills the stream. The concrete
/// stream or the caller must then make `isEmpty()` safe to call from both threads.
class IStream {
public:
    IStream() = default;
    IStream(IStream const&) = default;
    IStream& operator=(IStream const&) = default;
    virtual ~IStream() = default;

    /// Waits until the stream holds data, and polls it once a millisecond. Returns false if
    /// `timeout` milliseconds pass first; 0xFFFFFFFF means no limit.
    ///
    /// Tests the deadline before the stream: `wait(0)` is false even if the stream holds data, and
    /// data that arrives in the millisecond of the deadline is too late.
    virtual bool wait(unsigned int timeout) const;

    /// The type id of the next object; 1, the id of the end-of-file marker, when there is none.
    virtual unsigned int getNextType() const = 0;

    /// Whether the next object is an end-of-file marker; false for a stream without data.
    virtual bool isEOF() const;

    /// Whether the stream holds no data.
    virtual bool isEmpty() const = 0;

    /// Takes the next object out of the stream and into `object`; returns the bytes consumed.
    virtual unsigned int read(Serializable& object) = 0;

    /// Removes the next object without reading it, even a marker; returns the bytes consumed.
    virtual unsigned int skip() = 0;

    /// Calls `read`; returns the stream, so that calls can be chained.
    virtual IStream& operator>>(Serializable& object) = 0;

    /// Takes the next object out of the stream as a raw record, header and payload. True on
    /// success: the caller owns `data`, an array of `length` bytes to be released with delete[].
    virtual bool readNextObject(unsigned char*& data, unsigned int& length) = 0;
};

} // namespace znsl

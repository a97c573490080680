#pragma once

#include "streams/znsl_Serializable.h"

namespace znsl {

/// A source of serialized objects.
///
/// No operation locks. Waiting only makes sense while another thread fills the stream, and then
/// the concrete stream, or the caller, must make `isEmpty()` safe to call meanwhile.
class IStream {
public:
    IStream() = default;
    IStream(IStream const&) = default;
    IStream& operator=(IStream const&) = default;
    virtual ~IStream() = default;

    /// Waits until the stream holds data, looking once a millisecond; false when `timeout`
    /// milliseconds have passed first. 0xFFFFFFFF means no limit.
    ///
    /// The deadline is deliberately tested before the stream is looked at: `wait(0)` is false even
    /// when data is there, and data that arrives in the millisecond of the deadline comes too late.
    virtual bool wait(unsigned int timeout) const;

    /// The type id of the next object; 1, the id of the end-of-file marker, when there is none.
    virtual unsigned int getNextType() const = 0;

    /// Whether the next object is an end-of-file marker; false for a stream without data.
    virtual bool isEOF() const;

    /// Whether the stream holds no data.
    virtual bool isEmpty() const = 0;

    /// Takes the next object out of the stream and into `object`; returns the bytes consumed.
    virtual unsigned int read(Serializable& object) = 0;

    /// Removes the next object unseen, a marker too; returns the bytes consumed.
    virtual unsigned int skip() = 0;

    /// As `read`, to be chained.
    virtual IStream& operator>>(Serializable& object) = 0;

    /// Takes the next object out of the stream as a raw record, header and payload. True on
    /// success: the caller owns `data`, an array of `length` bytes to be released with delete[].
    virtual bool readNextObject(unsigned char*& data, unsigned int& length) = 0;
};

} // namespace znsl

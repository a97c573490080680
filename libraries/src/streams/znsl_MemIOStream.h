#pragma once

#include "misc/zntl_Exception.h"
#include "streams/znsl_IOStream.h"
#include "streams/znsl_Serializable.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace znsl {

/// A first-in, first-out queue of serialized objects in one growable byte buffer. It can be saved
/// to a file and loaded from one, and it is itself a storable value.
///
/// The unread content is a sequence of object records, back to back: type id (2 bytes), reserved
/// (2 bytes, 0), payload length N (4 bytes), payload (N bytes), in the machine's byte order.
/// Writing appends records, reading takes them from the front. A reader may skip a record without
/// knowing its type. Appending is amortised constant time per byte. A queue in steady state stops
/// growing: compaction reclaims consumed space when an append finds too little room.
///
/// Every operation except a direct call of `fromBin` is safe on any content, whatever bytes `load`,
/// `setBuffer` or the caller put there: no access leaves the buffer, provided that the `fromBin` of
/// the objects read stays within the length that it is given.
///
/// Faults are zntl::Exception with a located message. Every operation documents what it leaves
/// behind. std::bad_alloc, and std::length_error for content beyond 32 bits, leave the stream
/// unchanged unless documented otherwise. A stream may be used by one thread at a time.
class MemIOStream : public Serializable, public IOStream {
public:
    /// The value of `getTypeId`.
    static constexpr unsigned int typeId = 6;
    /// The bytes before every payload: type id, reserved field, payload length.
    static constexpr unsigned int recordHeaderSize =
        sizeof(std::uint16_t) + sizeof(std::uint16_t) + sizeof(std::uint32_t);

    /// A stream without a buffer, or with one of exactly `capacity` bytes.
    explicit MemIOStream(unsigned int const& capacity = 0);
    /// A stream with a copy of the given records; throws what `setBuffer` throws.
    MemIOStream(unsigned char const* data, unsigned int const& size);
    /// Copies the unread content, into a buffer of the other stream's capacity.
    MemIOStream(MemIOStream const& other);
    /// Copies the unread content and adopts the other stream's capacity. Assigning a stream to
    /// itself empties it and keeps its buffer. If allocating a buffer of another capacity fails,
    /// the stream is left without a buffer.
    MemIOStream& operator=(MemIOStream const& other);
    ~MemIOStream() override = default;

    /// 6.
    unsigned int getTypeId() const override;
    /// "znsl_MemIOStream".
    std::string getTypeName() const override;
    /// Not implemented: throws, as the form with a name does.
    std::string toXML() const override;
    /// Not implemented: throws "toXML() - not implemented" (line 685).
    std::string toXML(char const* name) const override;
    /// Not implemented: throws "fromXML() - not implemented" (line 694).
    bool fromXML(char const* xml) override;
    /// `size()` + 4. Throws std::length_error if that does not fit 32 bits.
    unsigned int getBinLength() const override;
    /// Writes `size()` (4 bytes) and the unread content; returns `getBinLength()`. Throws what
    /// `getBinLength` throws.
    unsigned int toBin(unsigned char* out) const override;

    /// Whether `fromBin` stays within the `length` bytes at `data`: they hold a 4-byte length S and
    /// at least S more bytes. Does not check the records.
    static bool canReadBin(unsigned char const* data, unsigned int length);

    /// Replaces the content with the records that follow a 4-byte length S at `data`; returns
    /// `getBinLength()`. Throws what `setBuffer` throws.
    ///
    /// TRUSTS ITS INPUT when called directly: `available` is ignored, and S + 4 bytes must be
    /// there. Ask `canReadBin` first if the bytes are not your own. The library asks before it
    /// calls this, or that of a subclass, for a record, a member or a file.
    unsigned int fromBin(unsigned char const* data, unsigned int available) override;

    /// Does nothing.
    void flush() override;
    /// Appends an end-of-file marker.
    void close() override;

    /// Appends a record of `object` and returns its size. The object serializes itself straight
    /// into the buffer, after the header: it finds the stream 8 bytes longer. A stream written into
    /// itself, alone or as a member of `object`, stores the content that it had before.
    ///
    /// When the object's `toBin` throws anything, throws "couldn't convert object to binary data"
    /// (line 262). The record's header then stays in the stream without its payload, and the stream
    /// is no longer valid. Exceptions from `getBinLength`, `getTypeId` and the allocation pass
    /// through, with the content unchanged; the buffer may have grown or been compacted.
    ///
    /// While the object writes itself, operations that would replace this stream's buffer throw
    /// zntl::Exception. An object that uses up its own room by writing to this stream is reported
    /// like one that throws.
    unsigned int write(Serializable const& object) override;
    OStream& operator<<(Serializable const& object) override;

    /// The type id of the next record; 1 for an empty stream. Throws "getNextType() - no data"
    /// (line 294) when fewer than 8 bytes are left.
    unsigned int getNextType() const override;

    /// Whether the next `n` records are complete and of the types of the `n` objects named; further
    /// arguments are `znsl::Serializable*` too (convert pointers to subclasses). A null pointer
    /// stands for a record of any type. Throws "checkTypes() - no data" (line 313) when fewer than
    /// 8 bytes are left, even for an `n` of 0. A record without a payload at the very end of the
    /// content does not count.
    virtual bool checkTypes(unsigned int n, Serializable* first, ...) const;

    bool isEmpty() const override;

    /// Takes the next record into `object` and returns the record's size.
    ///
    /// Throws "read() - trying to read EOF" (line 340) for an object of type 1, "read() - type
    /// mismatch" (line 341) when the next record is of another type or there is none, what
    /// `getNextType` throws, and when the object's `fromBin` throws, "read() - " with the message
    /// of a zntl::Exception (line 354), or "read() - could not read object" (line 359). The record
    /// then stays in the stream, and the object may be partly changed. A String without a NUL or a
    /// stream longer than its payload is not read: line 354.
    ///
    /// From a record that runs past the content the object reads the bytes that are there; the
    /// stream is then empty, and the returned size is that of the length field.
    unsigned int read(Serializable& object) override;

    /// As `read`, but the record stays in the stream: lines 374, 376 ("peek() - type mismatch %d !=
    /// %d" with the type found and the type asked for), 389 and 394.
    virtual unsigned int peek(Serializable& object) const;

    /// Reads the next `n` records into the `n` objects named (arguments as in `checkTypes`) without
    /// taking them out, and returns their total size; 0 when there are not that many complete
    /// records. Throws "peek() - trying to read EOF" (line 423), "peek() - type mismatch" (line
    /// 424), "peek() - " with a message (line 433) and "peek() - could not read object" (line 438).
    /// Objects before the one that failed keep what was read into them. A record without a payload
    /// at the very end of the content does not count.
    virtual unsigned int peek(unsigned int n, Serializable* first, ...) const;

    /// The number of records, an incomplete last one included; 0 for fewer than 8 bytes. Takes
    /// time proportional to it.
    virtual unsigned int count() const;

    /// Removes the next record, markers included, and returns its size by its length field. Throws
    /// "skip() - no data" (line 485) when fewer than 8 bytes are left. A record that runs past the
    /// content removes what is left of it.
    unsigned int skip() override;

    IStream& operator>>(Serializable& object) override;

    /// A memory stream is no source of raw records: throws "readNextObject() - not implemented"
    /// (line 704).
    bool readNextObject(unsigned char*& data, unsigned int& length) override;

    /// Appends one raw record obtained from `source` through `getNextObject`; nothing when that
    /// gives false. The source must deliver a whole record, which is released in every case.
    OStream& operator<<(IStream& source) override;

    /// The size of the buffer in bytes.
    unsigned int capacity() const { return capacity_; }
    /// The number of unread bytes.
    unsigned int size() const { return writePos_ - readPos_; }

    /// Makes the capacity exactly `n` if it is smaller; the unread bytes move to the start.
    void reserve(unsigned int const& n);

    /// Makes room for `n` more bytes: grows to twice the capacity plus `n` when the unread bytes
    /// and `n` exceed the capacity, or moves the unread bytes to the start when only the room after
    /// them is too small. These sums wrap at 32 bits, and a sum that wrapped to no more than the
    /// capacity changes nothing: for an `n` near 4 GB, check `capacity()` afterwards.
    void checkBuff(unsigned int const& n);

    /// Makes room as `checkBuff` does and appends `n` bytes that the caller fills at `out`, which
    /// is valid until the next operation that appends to, compacts or replaces the buffer. Throws
    /// std::length_error when the room would exceed 32 bits.
    void getWriteBuffer(unsigned char*& out, unsigned int n);

    /// Removes what was appended after the first `n` bytes at `p`, an address from
    /// `getWriteBuffer`; does nothing when no more than that was appended.
    void finalizeBuffer(unsigned char*& p, unsigned int n);

    /// The unread bytes, in place, valid as long as an address from `getWriteBuffer`; null and 0
    /// when there are none.
    void getBuffer(unsigned char const*& data, unsigned int& length) const;

    /// Replaces the content with a copy of the given records, which may be in the stream's own
    /// buffer; null data or a length of 0 empty the stream. A larger buffer is kept.
    ///
    /// Throws "setBuffer() - resulting memory is not valid." (line 643) when the bytes are not
    /// a whole number of records; they stay in the stream. If the allocation fails, the stream is
    /// left empty.
    void setBuffer(unsigned char const* data, unsigned int const& length);

    /// Whether the unread bytes are a whole number of records. Takes time proportional to it.
    bool validate() const;

    /// Moves the unread bytes to the start of the buffer.
    void defrag();
    /// Empties the stream and keeps the buffer.
    void clear();
    /// Empties the stream and releases the buffer.
    void purge();

    /// Writes the unread records to a file, and nothing else; the file is created, or cut to zero
    /// length first. False when it cannot be opened, written (it may be partly written) or closed.
    /// The stream is unchanged. One write. Never throws.
    bool save(char const* path) const;

    /// Replaces the content with the records in a file. A larger buffer is kept.
    ///
    /// False, with the stream unchanged, when the file cannot be opened, has no size (a directory,
    /// a pipe, a file that the system makes up), does not fit 32 bits, or the allocation fails.
    /// False, with the bytes after the read position possibly overwritten, when it cannot be read.
    /// False, with its bytes in the stream, when they are not a whole number of records. One read.
    /// Never throws.
    bool load(char const* path);

private:
    struct RecordHeader;
    struct ReadFaults;
    static ReadFaults const readFaults;
    static ReadFaults const peekFaults;
    static ReadFaults const peekManyFaults;
    struct RecordWalk {
        unsigned int records; // the last one possibly incomplete
        bool whole;           // whether the last one ended where the content ends
    };

    template <class T>
    friend class Set;
    /// A fault of `write` or of a set that an allocation failure caused.
    class OutOfMemory : public zntl::Exception {
        using zntl::Exception::Exception;
    };

    RecordWalk walkRecords() const;
    template <class Visit>
    unsigned int visitRecords(unsigned int n, Visit visit) const;
    RecordHeader headerAt(unsigned int position) const;
    void readInto(Serializable& object, unsigned int payload, std::uint32_t length,
                  ReadFaults const& faults) const;
    void peekInto(Serializable& object, RecordHeader const& header, unsigned int payload) const;
    unsigned int consume(std::uint32_t length);

    [[noreturn]] static void raiseUnwritable();
    unsigned char* formLimitField() const;
    std::uint32_t formLimit() const;
    unsigned int formSize() const;

    unsigned char* appendRoom(std::uint64_t n);
    void makeRoom(std::uint64_t n);
    void replaceBuffer(unsigned int capacity);
    void requireReplaceable() const;

    std::unique_ptr<unsigned char[]> buffer_; // null exactly when capacity_ is 0
    unsigned int capacity_ = 0;
    unsigned int readPos_ = 0;  // first unread byte
    unsigned int writePos_ = 0; // one past the last written byte
};

} // namespace znsl

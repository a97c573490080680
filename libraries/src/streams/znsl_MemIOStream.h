#pragma once

#include "misc/zntl_Exception.h"
#include "streams/znsl_IOStream.h"
#include "streams/znsl_Serializable.h"

#include <cstdint>
#include <memory>
#include <string>

namespace znsl {

/// A first-in, first-out queue of serialized objects in one growable byte buffer. It can be saved
/// to a file and loaded from one, and it is itself a storable value.
///
/// The unread content is a sequence of records without gaps, each with four fields in the machine's
/// byte order: type id (2 bytes), reserved (2 bytes, 0), payload length N (4 bytes), payload
/// (N bytes). Writing appends records; reading removes them from the front. A reader can skip
/// a record whose type it does not know.
///
/// If there is too little room at the end of the buffer, an append first reuses the space of
/// records that were already read: it moves the unread bytes to the start. The buffer of a steady
/// queue therefore stops growing. Appending takes amortised constant time per byte while the
/// capacity is at least twice the number of unread bytes. In a fuller buffer, up to every append
/// moves all unread bytes; `reserve` twice the largest size of a queue to avoid that.
///
/// Every operation except a direct call of `fromBin` is safe on any content, wherever it came from:
/// it stays within the buffer if the `fromBin` of the objects read stays within the length that it
/// is given.
///
/// Errors are reported as zntl::Exception, whose message contains a source location; the comments
/// below name the line. If an operation throws std::bad_alloc, or std::length_error because the
/// capacity, which doubles, would exceed 32 bits, the stream is unchanged unless its comment says
/// otherwise. Only one thread at a time may use a stream.
class MemIOStream : public Serializable, public IOStream {
public:
    /// The value of `getTypeId`.
    static constexpr unsigned int typeId = 6;
    /// The number of bytes before every payload: type id, reserved field, payload length.
    static constexpr unsigned int recordHeaderSize =
        sizeof(std::uint16_t) + sizeof(std::uint16_t) + sizeof(std::uint32_t);

    /// Makes an empty stream with a buffer of exactly `capacity` bytes; without a buffer for 0.
    explicit MemIOStream(unsigned int const& capacity = 0);
    /// Makes a stream with a copy of the given records. Throws what `setBuffer` throws.
    MemIOStream(unsigned char const* data, unsigned int const& size);
    /// Copies the unread content into a buffer of the other stream's capacity.
    MemIOStream(MemIOStream const& other);
    /// Replaces the content with the other stream's unread content, and the capacity with its
    /// capacity. Assigning a stream to itself empties it but does not release its buffer. If the
    /// allocation fails, the stream is empty and has no buffer.
    MemIOStream& operator=(MemIOStream const& other);
    ~MemIOStream() override = default;

    /// Returns 6.
    unsigned int getTypeId() const override;
    /// Returns "znsl_MemIOStream".
    std::string getTypeName() const override;
    /// Not implemented: throws "toXML() - not implemented" (line 685).
    std::string toXML() const override;
    /// Not implemented: throws "toXML() - not implemented" (line 685).
    std::string toXML(char const* name) const override;
    /// Not implemented: throws "fromXML() - not implemented" (line 694).
    bool fromXML(char const* xml) override;
    /// Returns `size()` + 4. Throws std::length_error if that does not fit in 32 bits.
    unsigned int getBinLength() const override;
    /// Writes `size()` (4 bytes) and the unread content. Returns `getBinLength()`, and throws what
    /// it throws.
    unsigned int toBin(unsigned char* out) const override;

    /// Returns whether `fromBin` would stay within the `length` bytes at `data`: they start with
    /// a 4-byte length S and contain at least S more bytes. Does not check the records.
    static bool canReadBin(unsigned char const* data, unsigned int length);

    /// Replaces the content with the S bytes of records after the 4-byte length S at `data`.
    /// Returns `getBinLength()`. Throws what `setBuffer` throws.
    ///
    /// A direct call TRUSTS ITS INPUT: it reads S + 4 bytes and ignores `available`. Call
    /// `canReadBin` first if you do not trust the bytes. The library does so before it reads
    /// a record, a member or a file into a MemIOStream or a subclass.
    unsigned int fromBin(unsigned char const* data, unsigned int available) override;

    /// A no-op.
    void flush() override;
    /// Appends an end-of-file marker.
    void close() override;

    /// Appends a record of `object` and returns its size in bytes.
    ///
    /// The object's `toBin` writes directly into the buffer, after the 8-byte header, which is
    /// already part of the content by then. But if a stream is written into itself, alone or as
    /// a member of `object`, it stores the content from before the call.
    ///
    /// If `toBin` throws, throws "couldn't convert object to binary data" (line 262). The header
    /// then stays in the stream without a payload, and the stream is no longer valid. Exceptions
    /// of `getBinLength`, `getTypeId` and the allocation propagate, with the content unchanged; the
    /// buffer may have grown or been compacted.
    ///
    /// While `toBin` runs, operations that would replace this stream's buffer throw zntl::Exception
    /// "znsl::MemIOStream - an object replaces the buffer it is written to". If `toBin` itself
    /// appends so much to this stream that its payload no longer fits, throws the exception of line
    /// 262, too.
    unsigned int write(Serializable const& object) override;
    OStream& operator<<(Serializable const& object) override;

    /// The type id of the next record; 1 for an empty stream. Throws "getNextType() - no data"
    /// (line 294) if there are 1 to 7 unread bytes.
    unsigned int getNextType() const override;

    /// Returns whether the next `n` records are complete and have the types of the `n` objects.
    /// A null pointer matches any type. All arguments after `n` must have exactly the type
    /// `znsl::Serializable*`, so convert pointers to subclasses.
    ///
    /// Throws "checkTypes() - no data" (line 313) if there are fewer than 8 unread bytes, even for
    /// an `n` of 0. A last record without a payload counts as incomplete.
    virtual bool checkTypes(unsigned int n, Serializable* first, ...) const;

    bool isEmpty() const override;

    /// Reads the next record into `object`, removes it from the stream and returns its size in
    /// bytes.
    ///
    /// Throws, and leaves the record in the stream:
    /// - "read() - trying to read EOF" (line 340) if the type of `object` is 1;
    /// - "read() - type mismatch" (line 341) if the next record has another type or there is none;
    /// - what `getNextType` throws;
    /// - "read() - " and the message (line 354) if the object's `fromBin` throws zntl::Exception,
    ///   or if a String without a NUL or a MemIOStream longer than its payload is refused;
    /// - "read() - could not read object" (line 359) if `fromBin` throws anything else.
    ///
    /// If `fromBin` threw, the object may be partly changed.
    ///
    /// If the content ends inside the record, `object` reads the bytes that are present. The stream
    /// is then empty, and the returned size is the one that the header announced, modulo 2^32.
    unsigned int read(Serializable& object) override;

    /// As `read`, but leaves the record in the stream. Throws the corresponding messages, which
    /// start with "peek() - ", with the lines 374, 376, 389 and 394. The one of line 376 is
    /// "peek() - type mismatch FOUND != EXPECTED", with two type ids.
    virtual unsigned int peek(Serializable& object) const;

    /// Reads the next `n` records into the `n` objects, but leaves the records in the stream.
    /// Returns their total size in bytes, or 0 if there are fewer than `n` complete records.
    /// Arguments are as in `checkTypes`; a last record without a payload counts as incomplete. In
    /// every case, the objects of the records before have their new values.
    ///
    /// Throws "peek() - trying to read EOF" (line 423), "peek() - type mismatch" (line 424),
    /// "peek() - " and a message (line 433) and "peek() - could not read object" (line 438), for
    /// the same reasons as `read`.
    virtual unsigned int peek(unsigned int n, Serializable* first, ...) const;

    /// The number of records, including an incomplete last one; 0 for fewer than 8 unread bytes.
    /// Takes time proportional to that number.
    virtual unsigned int count() const;

    /// Removes the next record, which may be a marker, and returns the size that its header
    /// announces, modulo 2^32. If the content ends inside the record, removes the rest. Throws
    /// "skip() - no data" (line 485) if there are fewer than 8 unread bytes.
    unsigned int skip() override;

    IStream& operator>>(Serializable& object) override;

    /// Not implemented: throws "readNextObject() - not implemented" (line 704). A MemIOStream
    /// cannot be the source of `operator<<(IStream&)`.
    bool readNextObject(unsigned char*& data, unsigned int& length) override;

    /// Appends the raw record that `getNextObject(source)` returns, and releases it. Appends
    /// nothing if that returns false. Does not check that the record is whole. If appending throws,
    /// the record is lost.
    OStream& operator<<(IStream& source) override;

    /// The size of the buffer in bytes.
    unsigned int capacity() const { return capacity_; }
    /// The number of unread bytes.
    unsigned int size() const { return writePos_ - readPos_; }

    /// Replaces the buffer with one of exactly `n` bytes and the same content, if `n` exceeds the
    /// capacity.
    void reserve(unsigned int const& n);

    /// Makes room for `n` more bytes. If the unread bytes and `n` together exceed the capacity,
    /// grows to twice the capacity plus `n`. Otherwise moves the unread bytes to the start of the
    /// buffer, if there is too little room after them.
    ///
    /// Both sums wrap at 32 bits. If one wraps, there may be too little room afterwards: for a
    /// large `n`, check `capacity()`.
    void checkBuff(unsigned int const& n);

    /// Appends `n` uninitialised bytes and sets `out` to their address; the caller fills them. The
    /// address is valid until the next operation that appends to, compacts or replaces the buffer.
    /// Throws std::length_error if the new capacity would exceed 32 bits.
    void getWriteBuffer(unsigned char*& out, unsigned int n);

    /// Truncates the content after the first `n` bytes at `p`, an address from `getWriteBuffer`.
    /// A no-op if the content ends there or earlier.
    void finalizeBuffer(unsigned char*& p, unsigned int n);

    /// Sets `data` and `length` to the unread bytes in the buffer; to null and 0 if there are none.
    /// The address is valid as long as one from `getWriteBuffer`.
    void getBuffer(unsigned char const*& data, unsigned int& length) const;

    /// Replaces the content with a copy of the given records, which may be in the stream's own
    /// buffer. If `data` is null or `length` is 0, empties the stream. Never reduces the capacity.
    ///
    /// Throws "setBuffer() - resulting memory is not valid." (line 643) if the bytes are not a
    /// whole number of records; they stay in the stream. If the allocation fails, the stream is
    /// empty.
    void setBuffer(unsigned char const* data, unsigned int const& length);

    /// Whether the unread bytes are a whole number of records. Takes time proportional to that
    /// number.
    bool validate() const;

    /// Moves the unread bytes to the start of the buffer.
    void defrag();
    /// Empties the stream but does not release the buffer.
    void clear();
    /// Empties the stream and releases the buffer.
    void purge();

    /// Writes the unread records, and nothing else, to a file with a single write. Creates the file
    /// or truncates it first. Returns false if the file cannot be opened, written or closed; it may
    /// then be partly written. Never throws.
    bool save(char const* path) const;

    /// Replaces the content with the records in a file, with a single read. Never reduces the
    /// capacity. Never throws.
    ///
    /// Returns false:
    /// - with the stream unchanged, if the file cannot be opened, has 4 GiB or more or no size
    ///   (a directory, a pipe, a file in /proc), or if the allocation fails;
    /// - with the unread bytes possibly overwritten, if reading the file fails;
    /// - with the bytes of the file in the stream, if they are not a whole number of records.
    bool load(char const* path);

private:
    struct RecordHeader;
    struct RecordWalk {
        unsigned int records; // including an incomplete last one
        bool whole;           // whether the last one is complete
    };

    template <class T>
    friend class Set;
    /// Thrown by `write` and by a set after an allocation failure.
    class OutOfMemory : public zntl::Exception {
        using zntl::Exception::Exception;
    };

    RecordWalk walkRecords() const;
    template <class Visit>
    unsigned int visitRecords(unsigned int n, Visit visit) const;
    RecordHeader headerAt(unsigned int position) const;
    void readInto(Serializable& object, unsigned int payload, std::uint32_t length,
                  char const* operation, int line) const;
    void peekInto(Serializable& object, RecordHeader const& header, unsigned int payload) const;
    unsigned int consume(std::uint32_t length);

    [[noreturn]] static void raiseOutOfMemory();
    unsigned char* formLimitField() const;
    std::uint32_t formLimit() const;
    unsigned int formSize() const;

    unsigned char* appendRoom(std::uint64_t n);
    void makeRoom(std::uint64_t n);
    void replaceBuffer(unsigned int capacity, unsigned char const* content, unsigned int size);
    void requireReplaceable() const;

    std::unique_ptr<unsigned char[]> buffer_; // null if and only if capacity_ is 0
    unsigned int capacity_ = 0;
    unsigned int readPos_ = 0;  // first unread byte
    unsigned int writePos_ = 0; // one past the last written byte
};

} // namespace znsl

#include "streams/znsl_MemIOStream.h"

#include "misc/internal/zntl_binLength.h"
#include "misc/internal/zntl_bytes.h"
#include "misc/zntl_Exception.h"
#include "streams/internal/znsl_readWithin.h"
#include "streams/znsl_EndOfFile.h"
#include "system/internal/zn_File.h"
#include "system/znml_constants.h" // Contract: this file has its own copy, though nothing reads it

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

namespace znsl {

/// The fields before every payload.
struct MemIOStream::RecordHeader {
    std::uint16_t type;
    std::uint16_t reserved; // written as 0, never read
    std::uint32_t length;   // of the payload
};

namespace {

constexpr unsigned int headerSize = MemIOStream::recordHeaderSize;
constexpr unsigned int lengthPrefixSize = sizeof(std::uint32_t);
constexpr std::uint64_t maxSize = std::numeric_limits<std::uint32_t>::max();

// The exception of an object that cannot be written.
constexpr int unwritableLine = 262;
constexpr char const* unwritable = "couldn't convert object to binary data";

/// Allocated after the last byte of every buffer.
struct Tail {
    unsigned char zeros[zerosAfterPayload];
    // The maximum number of bytes in the stream's own binary form; see FormLimit. It is not a data
    // member, because programs compiled earlier allocate stream objects of a fixed size.
    unsigned char formLimit[sizeof(std::uint32_t)];
};

constexpr std::uint32_t unlimited = maxSize;

// Contract: messages contain fixed line numbers instead of those of the `raise` calls, because
// programs and logs compare them.
std::string locate(int line, char const* text) {
    return zntl::locatedMessage("../../../../../libraries/src/streams/znsl_MemIOStream", line,
                                "znsl::MemIOStream", text);
}

[[noreturn]] void raise(int line, char const* text) { throw zntl::Exception(locate(line, text)); }

[[noreturn]] void raise(int line, char const* operation, char const* fault) {
    raise(line, (std::string(operation) + " - " + (fault ? fault : "(null)")).c_str());
}

[[noreturn]] void raiseTypeMismatch(unsigned int found, unsigned int expected) {
    std::string const text = "type mismatch " + std::to_string(static_cast<int>(found)) +
                             " != " + std::to_string(static_cast<int>(expected));
    raise(376, "peek()", text.c_str());
}

std::unique_ptr<unsigned char[]> allocate(unsigned int capacity) {
    std::uint64_t const size = std::uint64_t{capacity} + sizeof(Tail);
    // Unreached: possible only with 32-bit addresses.
    if (size > PTRDIFF_MAX)
        throw std::bad_alloc();
    std::unique_ptr<unsigned char[]> buffer(new unsigned char[static_cast<std::size_t>(size)]);
    std::memset(buffer.get() + capacity, 0, sizeof(Tail::zeros));
    zntl::storeNative(buffer.get() + capacity + offsetof(Tail, formLimit), unlimited);
    return buffer;
}

/// Exists while an object is written to the stream. It limits the binary form of the stream itself
/// to the first `size` bytes, so a stream that is written into itself, alone or as a member, stores
/// its earlier content. The buffer cannot be replaced during that time.
class FormLimit {
public:
    FormLimit(unsigned char* field, std::uint32_t size)
        : field_(field), previous_(zntl::loadNative<std::uint32_t>(field)) {
        zntl::storeNative(field_, std::min(size, previous_));
    }
    FormLimit(FormLimit const&) = delete;
    FormLimit& operator=(FormLimit const&) = delete;
    ~FormLimit() { zntl::storeNative(field_, previous_); }

private:
    unsigned char* field_;
    std::uint32_t previous_;
};

/// memmove that allows null pointers if `count` is 0.
void copyBytes(unsigned char* to, unsigned char const* from, unsigned int count) {
    if (count > 0)
        std::memmove(to, from, count);
}

/// The objects passed to an operation with a variable number of arguments.
class ObjectArguments {
public:
    ObjectArguments(Serializable* first, std::va_list further) : first_(first) {
        va_copy(further_, further);
    }
    ObjectArguments(ObjectArguments const&) = delete;
    ObjectArguments& operator=(ObjectArguments const&) = delete;
    ~ObjectArguments() { va_end(further_); }

    /// Returns the next object. Do not call it more often than there are arguments.
    Serializable* next() {
        if (std::exchange(isFirst_, false))
            return first_;
        return va_arg(further_, Serializable*);
    }

private:
    Serializable* first_;
    std::va_list further_;
    bool isFirst_ = true;
};

} // namespace

MemIOStream::MemIOStream(unsigned int const& capacity) { reserve(capacity); }

MemIOStream::MemIOStream(unsigned char const* data, unsigned int const& size) {
    setBuffer(data, size);
}

MemIOStream::MemIOStream(MemIOStream const& other) : Serializable(other), IOStream(other) {
    *this = other;
}

MemIOStream& MemIOStream::operator=(MemIOStream const& other) {
    if (capacity_ != other.capacity_) {
        purge();
        reserve(other.capacity_);
    }
    // Contract: this stream is emptied before `other` is read, so assigning a stream to itself
    // empties it. Programs on cameras may depend on that.
    clear();
    unsigned int const size = other.size();
    copyBytes(buffer_.get(), other.buffer_.get() + other.readPos_, size);
    writePos_ = size;
    return *this;
}

// Buffer

/// Allocates a buffer of `capacity` bytes that starts with the `size` bytes at `content`, which may
/// be in the old buffer.
void MemIOStream::replaceBuffer(unsigned int capacity, unsigned char const* content,
                                unsigned int size) {
    requireReplaceable();
    std::unique_ptr<unsigned char[]> replacement = allocate(capacity);
    copyBytes(replacement.get(), content, size);
    buffer_ = std::move(replacement);
    capacity_ = capacity;
    readPos_ = 0;
    writePos_ = size;
}

/// Throws while an object is written, because its `toBin` writes to an address in the buffer.
void MemIOStream::requireReplaceable() const {
    if (formLimit() != unlimited)
        throw zntl::Exception("znsl::MemIOStream - an object replaces the buffer it is written to");
}

void MemIOStream::reserve(unsigned int const& n) {
    if (n > capacity_)
        replaceBuffer(n, buffer_.get() + readPos_, size());
}

// Contract: the sums wrap at 32 bits, so there may be less room afterwards than requested. Programs
// on cameras may depend on the resulting capacities.
void MemIOStream::checkBuff(unsigned int const& n) {
    if (capacity_ < size() + n) {
        reserve(2 * capacity_ + n);
    } else if (capacity_ - writePos_ < n) {
        defrag();
    }
}

/// Makes room for `n` bytes at the write position and returns its address. If it throws, nothing
/// has changed.
unsigned char* MemIOStream::appendRoom(std::uint64_t n) {
    // Equivalent: makeRoom checks again; this only avoids calling it
    if (capacity_ - writePos_ < n)
        makeRoom(n);
    return buffer_.get() + writePos_;
}

/// The rare part of appendRoom. Adds in 64 bits first, because the sums in checkBuff wrap.
void MemIOStream::makeRoom(std::uint64_t n) {
    bool const grows = size() + n > capacity_;
    if (grows && std::uint64_t{capacity_} * 2 + n > maxSize)
        throw std::length_error("znsl::MemIOStream: content beyond 32 bits");
    checkBuff(static_cast<unsigned int>(n));
}

void MemIOStream::getWriteBuffer(unsigned char*& out, unsigned int n) {
    out = appendRoom(n);
    writePos_ += n;
}

void MemIOStream::finalizeBuffer(unsigned char*& p, unsigned int n) {
    unsigned char* const begin = buffer_.get();
    // Equivalent: after the content, there is nothing to cut off
    if (p < begin || p >= begin + writePos_)
        return;
    auto const start = static_cast<unsigned int>(p - begin);
    writePos_ = std::max(start + std::min(n, writePos_ - start), readPos_);
}

void MemIOStream::getBuffer(unsigned char const*& data, unsigned int& length) const {
    length = size();
    data = length > 0 ? buffer_.get() + readPos_ : nullptr;
}

void MemIOStream::setBuffer(unsigned char const* data, unsigned int const& length) {
    unsigned int const count = length; // a copy, because `length` may be in the buffer
    clear();
    if (!data || count == 0)
        return;
    if (capacity_ < count) {
        replaceBuffer(count, data, count);
    } else {
        copyBytes(buffer_.get(), data, count);
        writePos_ = count;
    }
    if (!validate())
        raise(643, "setBuffer() - resulting memory is not valid.");
}

void MemIOStream::defrag() {
    // Equivalent: moving the bytes onto themselves is only slower
    if (readPos_ == 0)
        return;
    unsigned int const used = size();
    copyBytes(buffer_.get(), buffer_.get() + readPos_, used);
    readPos_ = 0;
    writePos_ = used;
}

void MemIOStream::clear() { readPos_ = writePos_ = 0; }

void MemIOStream::purge() {
    requireReplaceable();
    buffer_.reset();
    capacity_ = readPos_ = writePos_ = 0;
}

// Records

MemIOStream::RecordHeader MemIOStream::headerAt(unsigned int position) const {
    RecordHeader header;
    static_assert(sizeof header == headerSize, "the header is copied from the buffer as it is");
    std::memcpy(&header, buffer_.get() + position, sizeof header);
    return header;
}

MemIOStream::RecordWalk MemIOStream::walkRecords() const {
    unsigned int records = 0;
    // Has 64 bits, so adding a length field cannot wrap.
    std::uint64_t position = readPos_;
    while (position < writePos_) {
        ++records;
        // Equivalent: a truncated header never ends where the content ends
        if (writePos_ - position < headerSize)
            return {records, false};
        position +=
            std::uint64_t{headerSize} + headerAt(static_cast<unsigned int>(position)).length;
    }
    return {records, position == writePos_};
}

bool MemIOStream::validate() const { return walkRecords().whole; }

unsigned int MemIOStream::count() const { return size() < headerSize ? 0 : walkRecords().records; }

/// Calls `visit(header, payload position)` for each of the next `n` records. Returns their total
/// size; 0 if one of them is incomplete or missing, or if `visit` returns false.
///
/// Contract: a last record without a payload counts as incomplete, because programs on cameras may
/// depend on it.
template <class Visit>
unsigned int MemIOStream::visitRecords(unsigned int n, Visit visit) const {
    std::uint64_t position = readPos_;
    for (; n > 0; --n) {
        std::uint64_t const payload = position + headerSize;
        if (payload >= writePos_)
            return 0;
        RecordHeader const header = headerAt(static_cast<unsigned int>(position));
        position = payload + header.length;
        if (position > writePos_ || !visit(header, static_cast<unsigned int>(payload)))
            return 0;
    }
    return static_cast<unsigned int>(position - readPos_);
}

/// Reads a payload into an object. If the content ends inside the payload, the object reads the
/// bytes that are present. If the object throws, throws zntl::Exception with `line` and the message
/// of the object's own zntl::Exception, or with `line` + 5 after any other exception.
void MemIOStream::readInto(Serializable& object, unsigned int payload, std::uint32_t length,
                           char const* operation, int line) const {
    unsigned char const* const data = buffer_.get() + payload;
    unsigned int const available = std::min(length, writePos_ - payload);
    try {
        // Equivalent: requireWithin checks again; this only avoids calling it
        if (!isKnownCautious(object) && !isCertainlyWithin(data, available))
            requireWithin(object, data, available);
        object.fromBin(data, available);
    } catch (zntl::Exception const& e) {
        raise(line, operation, e.what());
    } catch (...) {
        raise(line + 5, operation, "could not read object");
    }
}

// Writing

unsigned char* MemIOStream::formLimitField() const {
    return buffer_.get() + capacity_ + offsetof(Tail, formLimit);
}

std::uint32_t MemIOStream::formLimit() const {
    return buffer_ ? zntl::loadNative<std::uint32_t>(formLimitField()) : unlimited;
}

/// The number of unread bytes that belong to the stream's binary form.
unsigned int MemIOStream::formSize() const { return std::min(size(), formLimit()); }

void MemIOStream::raiseOutOfMemory() { throw OutOfMemory(locate(unwritableLine, unwritable)); }

unsigned int MemIOStream::write(Serializable const& object) {
    unsigned int const before = size();
    unsigned int const length = object.getBinLength();
    std::uint64_t const recordSize = std::uint64_t{headerSize} + length;
    // Contract: the room is made before the type is asked for, so a stream that cannot grow throws
    // without that call.
    appendRoom(recordSize);
    RecordHeader const header{static_cast<std::uint16_t>(object.getTypeId()), 0, length};
    // Makes room again, because `getTypeId` may have appended to this stream.
    std::memcpy(appendRoom(recordSize), &header, sizeof header);
    FormLimit const limit(formLimitField(), before);
    // Contract: if `toBin` throws, the header stays in the stream, and programs see an invalid
    // stream.
    writePos_ += headerSize;
    try {
        object.toBin(buffer_.get() + writePos_);
    } catch (std::bad_alloc const&) {
        raiseOutOfMemory();
    } catch (OutOfMemory const&) {
        raiseOutOfMemory();
    } catch (...) {
        raise(unwritableLine, unwritable);
    }
    // `toBin` may have appended to this stream itself.
    if (capacity_ - writePos_ < length)
        raise(unwritableLine, unwritable);
    writePos_ += length;
    return headerSize + length;
}

OStream& MemIOStream::operator<<(Serializable const& object) {
    write(object);
    return *this;
}

OStream& MemIOStream::operator<<(IStream& source) {
    unsigned char* data = nullptr;
    unsigned int length = 0;
    if (!getNextObject(source, data, length))
        return *this;
    std::unique_ptr<unsigned char[]> const record(data);
    copyBytes(appendRoom(length), record.get(), length);
    writePos_ += length;
    return *this;
}

void MemIOStream::flush() {}

void MemIOStream::close() { write(EndOfFile()); }

// Reading

bool MemIOStream::isEmpty() const { return readPos_ == writePos_; }

unsigned int MemIOStream::getNextType() const {
    if (size() == 0)
        return EndOfFile::typeId;
    if (size() < headerSize)
        raise(294, "getNextType() - no data");
    return headerAt(readPos_).type;
}

bool MemIOStream::checkTypes(unsigned int n, Serializable* first, ...) const {
    if (size() < headerSize)
        raise(313, "checkTypes() - no data");
    std::va_list further;
    va_start(further, first);
    ObjectArguments objects(first, further);
    va_end(further);
    auto const matches = [&](RecordHeader const& header, unsigned int) {
        Serializable const* const expected = objects.next();
        return !expected || header.type == expected->getTypeId();
    };
    return n == 0 || visitRecords(n, matches) != 0;
}

/// Moves the read position past a record with a payload of `length` bytes, but not past the end of
/// the content. Returns the record's size modulo 2^32.
unsigned int MemIOStream::consume(std::uint32_t length) {
    readPos_ += static_cast<unsigned int>(
        std::min<std::uint64_t>(std::uint64_t{headerSize} + length, size()));
    return headerSize + length;
}

unsigned int MemIOStream::read(Serializable& object) {
    unsigned int const expected = object.getTypeId();
    if (expected == EndOfFile::typeId)
        raise(340, "read() - trying to read EOF");
    if (getNextType() != expected)
        raise(341, "read() - type mismatch");
    std::uint32_t const length = headerAt(readPos_).length;
    readInto(object, readPos_ + headerSize, length, "read()", 354);
    return consume(length);
}

IStream& MemIOStream::operator>>(Serializable& object) {
    read(object);
    return *this;
}

unsigned int MemIOStream::peek(Serializable& object) const {
    unsigned int const expected = object.getTypeId();
    if (expected == EndOfFile::typeId)
        raise(374, "peek() - trying to read EOF");
    unsigned int const found = getNextType();
    if (found != expected)
        raiseTypeMismatch(found, expected);
    std::uint32_t const length = headerAt(readPos_).length;
    readInto(object, readPos_ + headerSize, length, "peek()", 389);
    return headerSize + length;
}

unsigned int MemIOStream::peek(unsigned int n, Serializable* first, ...) const {
    std::va_list further;
    va_start(further, first);
    ObjectArguments objects(first, further);
    va_end(further);
    return visitRecords(n, [&](RecordHeader const& header, unsigned int payload) {
        if (Serializable* const object = objects.next())
            peekInto(*object, header, payload);
        return true;
    });
}

/// Reads one record for the `peek` of several records.
void MemIOStream::peekInto(Serializable& object, RecordHeader const& header,
                           unsigned int payload) const {
    unsigned int const expected = object.getTypeId();
    if (expected == EndOfFile::typeId)
        raise(423, "peek() - trying to read EOF");
    if (header.type != expected)
        raise(424, "peek() - type mismatch");
    readInto(object, payload, header.length, "peek()", 433);
}

unsigned int MemIOStream::skip() {
    if (size() < headerSize)
        raise(485, "skip() - no data");
    return consume(headerAt(readPos_).length);
}

bool MemIOStream::readNextObject(unsigned char*& /*data*/, unsigned int& /*length*/) {
    raise(704, "readNextObject() - not implemented");
}

// Forms

unsigned int MemIOStream::getTypeId() const { return typeId; }

std::string MemIOStream::getTypeName() const { return "znsl_MemIOStream"; }

std::string MemIOStream::toXML() const { return toXML("znsl_MemIOStream"); }

std::string MemIOStream::toXML(char const* /*name*/) const {
    raise(685, "toXML() - not implemented");
}

bool MemIOStream::fromXML(char const* /*xml*/) { raise(694, "fromXML() - not implemented"); }

unsigned int MemIOStream::getBinLength() const {
    return zntl::binLength(std::uint64_t{lengthPrefixSize} + formSize());
}

unsigned int MemIOStream::toBin(unsigned char* out) const {
    std::uint32_t const length = formSize();
    copyBytes(zntl::storeNative(out, length), buffer_.get() + readPos_, length);
    return getBinLength();
}

bool MemIOStream::canReadBin(unsigned char const* data, unsigned int length) {
    return length >= lengthPrefixSize &&
           zntl::loadNative<std::uint32_t>(data) <= length - lengthPrefixSize;
}

// Contract: trusts the length prefix and ignores `available`, because programs on cameras may pass
// any number.
unsigned int MemIOStream::fromBin(unsigned char const* data, unsigned int /*available*/) {
    setBuffer(data + lengthPrefixSize, zntl::loadNative<std::uint32_t>(data));
    return getBinLength();
}

bool MemIOStream::save(char const* path) const {
    znst::File file = znst::File::create(path);
    if (!file)
        return false;
    bool const written = file.write(buffer_.get() + readPos_, size());
    return file.close() && written;
}

bool MemIOStream::load(char const* path) {
    try {
        znst::File file = znst::File::open(path);
        if (!file)
            return false;
        std::optional<std::uint64_t> const fileSize = file.size();
        if (!fileSize || *fileSize > maxSize)
            return false;
        auto const size = static_cast<unsigned int>(*fileSize);
        reserve(size);
        if (capacity_ - readPos_ < size)
            defrag();
        if (!file.read(buffer_.get() + readPos_, size))
            return false;
        writePos_ = readPos_ + size;
        return validate();
    } catch (...) {
        return false;
    }
}

} // namespace znsl

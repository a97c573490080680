#include "streams/znsl_MemIOStream.h"

#include "misc/internal/zntl_bytes.h"
#include "misc/internal/zntl_decimal.h"
#include "misc/zntl_Exception.h"
#include "streams/znsl_EndOfFile.h"
#include "system/internal/zn_File.h"
#include "system/znml_constants.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

namespace znsl {

/// What stands before every payload.
struct MemIOStream::RecordHeader {
    std::uint16_t type;
    std::uint16_t reserved; // written as 0, never read
    std::uint32_t length;   // of the payload
};

/// Where the reports on an object that could not be read come from.
struct MemIOStream::ReadFaults {
    char const* operation;
    int withMessage;
    int withoutMessage;
};

namespace {

constexpr unsigned int headerSize = 8;
constexpr unsigned int lengthPrefixSize = sizeof(std::uint32_t);
constexpr std::uint64_t maxSize = std::numeric_limits<std::uint32_t>::max();

// What reports faults stays out of the functions that would otherwise carry its texts around.

[[noreturn, gnu::noinline]] void raise(int line, char const* text) {
    throw zntl::Exception(zntl::locatedMessage(
        "../../../../../libraries/src/streams/znsl_MemIOStream", line, "znsl::MemIOStream", text));
}

[[noreturn, gnu::noinline]] void raise(int line, char const* operation, char const* fault) {
    std::string text = operation;
    text += " - ";
    text += fault;
    raise(line, text.c_str());
}

[[noreturn, gnu::noinline]] void raiseTypeMismatch(unsigned int found, unsigned int expected) {
    std::string text = "type mismatch ";
    zntl::appendDecimal(text, static_cast<int>(found));
    text += " != ";
    zntl::appendDecimal(text, static_cast<int>(expected));
    raise(376, "peek()", text.c_str());
}

std::unique_ptr<unsigned char[]> allocate(unsigned int size) {
    return std::unique_ptr<unsigned char[]>(new unsigned char[size]);
}

/// Copies bytes that may overlap, and where there are none to copy, not even from null.
void move(unsigned char* to, unsigned char const* from, unsigned int count) {
    if (count > 0)
        std::memmove(to, from, count);
}

/// The objects that an operation with variable arguments was given.
class ObjectArguments {
public:
    ObjectArguments(Serializable* first, std::va_list* further)
        : first_(first), further_(further) {}
    ObjectArguments(ObjectArguments const&) = delete;
    ObjectArguments& operator=(ObjectArguments const&) = delete;
    ~ObjectArguments() { va_end(*further_); }

    /// The next object; may only be called for as many as were given.
    Serializable* next() {
        if (std::exchange(isFirst_, false))
            return first_;
        return va_arg(*further_, Serializable*);
    }

private:
    Serializable* first_;
    std::va_list* further_;
    bool isFirst_ = true;
};

} // namespace

MemIOStream::MemIOStream(unsigned int const& capacity) {
    if (capacity > 0)
        replaceBuffer(capacity);
}

MemIOStream::MemIOStream(unsigned char const* data, unsigned int const& size) {
    setBuffer(data, size);
}

MemIOStream::MemIOStream(MemIOStream const& other) : Serializable(other), IOStream(other) {
    *this = other;
}

MemIOStream& MemIOStream::operator=(MemIOStream const& other) {
    if (!other.buffer_) {
        purge();
        return *this;
    }
    if (capacity_ != other.capacity_) {
        purge();
        replaceBuffer(other.capacity_);
    }
    // Before the source is looked at, so that a stream assigned to itself ends up empty; kept.
    clear();
    unsigned int const size = other.size();
    move(buffer_.get(), other.buffer_.get() + other.readPos_, size);
    writePos_ = size;
    return *this;
}

// Buffer

/// The growth rule's second half: a new buffer with the unread bytes at its start.
void MemIOStream::replaceBuffer(unsigned int capacity) {
    std::unique_ptr<unsigned char[]> replacement = allocate(capacity);
    unsigned int const used = size();
    move(replacement.get(), buffer_.get() + readPos_, used);
    buffer_ = std::move(replacement);
    capacity_ = capacity;
    readPos_ = 0;
    writePos_ = used;
}

void MemIOStream::reserve(unsigned int const& n) {
    if (n > capacity_)
        replaceBuffer(n);
}

void MemIOStream::checkBuff(unsigned int const& n) {
    std::uint64_t const needed = std::uint64_t{size()} + n;
    if (needed > capacity_) {
        std::uint64_t const grown = std::uint64_t{capacity_} * 2 + n;
        if (grown <= maxSize)
            replaceBuffer(static_cast<unsigned int>(grown));
    } else if (capacity_ - writePos_ < n) {
        defrag();
    }
}

/// Makes room for `n` bytes at the write position and returns where that is, or throws before
/// anything is changed.
unsigned char* MemIOStream::appendRoom(std::uint64_t n) {
    if (capacity_ - writePos_ < n)
        makeRoom(n);
    return buffer_.get() + writePos_;
}

void MemIOStream::makeRoom(std::uint64_t n) {
    if (n <= maxSize)
        checkBuff(static_cast<unsigned int>(n));
    if (capacity_ - writePos_ < n)
        throw std::length_error("znsl::MemIOStream: content beyond 32 bits");
}

void MemIOStream::getWriteBuffer(unsigned char*& out, unsigned int n) {
    out = appendRoom(n);
    writePos_ += n;
}

void MemIOStream::finalizeBuffer(unsigned char*& p, unsigned int n) {
    unsigned char* const begin = buffer_.get();
    if (p < begin || p >= begin + writePos_)
        return;
    auto const start = static_cast<unsigned int>(p - begin);
    if (writePos_ - start > n)
        writePos_ = std::max(start + n, readPos_);
}

void MemIOStream::getBuffer(unsigned char const*& data, unsigned int& length) const {
    length = size();
    data = length > 0 ? buffer_.get() + readPos_ : nullptr;
}

void MemIOStream::setBuffer(unsigned char const* data, unsigned int const& length) {
    unsigned int const count = length;
    clear();
    if (!data || count == 0)
        return;
    if (capacity_ < count) {
        // The bytes may be in the buffer that is replaced.
        std::unique_ptr<unsigned char[]> replacement = allocate(count);
        move(replacement.get(), data, count);
        buffer_ = std::move(replacement);
        capacity_ = count;
    } else {
        move(buffer_.get(), data, count);
    }
    writePos_ = count;
    if (!validate())
        raise(643, "setBuffer() - resulting memory is not valid.");
}

void MemIOStream::defrag() {
    if (readPos_ == 0)
        return;
    unsigned int const used = size();
    move(buffer_.get(), buffer_.get() + readPos_, used);
    readPos_ = 0;
    writePos_ = used;
}

void MemIOStream::clear() { readPos_ = writePos_ = 0; }

void MemIOStream::purge() {
    buffer_.reset();
    capacity_ = readPos_ = writePos_ = 0;
}

// Records

MemIOStream::RecordHeader MemIOStream::headerAt(unsigned int position) const {
    RecordHeader header;
    static_assert(sizeof header == headerSize, "the header is copied as it lies in the buffer");
    std::memcpy(&header, buffer_.get() + position, sizeof header);
    return header;
}

MemIOStream::RecordWalk MemIOStream::walkRecords() const {
    RecordWalk walk{0, true};
    // Positions of 64 bits, which no length field makes wrap.
    std::uint64_t position = readPos_;
    while (position < writePos_) {
        ++walk.records;
        if (writePos_ - position < headerSize)
            return {walk.records, false};
        position +=
            std::uint64_t{headerSize} + headerAt(static_cast<unsigned int>(position)).length;
    }
    walk.whole = position == writePos_;
    return walk;
}

bool MemIOStream::validate() const { return walkRecords().whole; }

unsigned int MemIOStream::count() const { return size() < headerSize ? 0 : walkRecords().records; }

/// Shows the next `n` complete records to `visit(header, payload position)`, for as long as that
/// returns true, and returns their total size; 0 when there are not that many. A payload must
/// start strictly before the end of the content, so a last record without one is not reached; kept.
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

/// Reads a payload into an object, with the object's failures reported as `faults` says.
void MemIOStream::readInto(Serializable& object, unsigned int payload, std::uint32_t length,
                           ReadFaults faults) const {
    try {
        object.fromBin(buffer_.get() + payload, length);
    } catch (zntl::Exception const& e) {
        raise(faults.withMessage, faults.operation, e.what());
    } catch (...) {
        raise(faults.withoutMessage, faults.operation, "could not read object");
    }
}

// Writing

unsigned int MemIOStream::write(Serializable const& object) {
    unsigned int const length = object.getBinLength();
    unsigned char* const record = appendRoom(std::uint64_t{headerSize} + length);
    RecordHeader const header{static_cast<std::uint16_t>(object.getTypeId()), 0, length};
    std::memcpy(record, &header, sizeof header);
    // The write position follows the object's own work, which finds the stream as it was when the
    // object is this stream.
    try {
        object.toBin(record + headerSize);
    } catch (...) {
        writePos_ += headerSize;
        raise(262, "couldn't convert object to binary data");
    }
    writePos_ += headerSize + length;
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
    move(appendRoom(length), record.get(), length);
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
    ObjectArguments objects(first, &further);
    auto const isExpected = [&](RecordHeader const& header, unsigned int) {
        Serializable const* const expected = objects.next();
        return !expected || header.type == expected->getTypeId();
    };
    return n == 0 || visitRecords(n, isExpected) > 0;
}

/// Moves the read position behind a record with a payload of `length` bytes, but never beyond the
/// content; returns the record's size, as far as 32 bits hold it.
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
    readInto(object, readPos_ + headerSize, length, {"read()", 354, 359});
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
    readInto(object, readPos_ + headerSize, length, {"peek()", 389, 394});
    return headerSize + length;
}

unsigned int MemIOStream::peek(unsigned int n, Serializable* first, ...) const {
    std::va_list further;
    va_start(further, first);
    ObjectArguments objects(first, &further);
    return visitRecords(n, [&](RecordHeader const& header, unsigned int payload) {
        Serializable* const object = objects.next();
        if (!object)
            return true;
        unsigned int const expected = object->getTypeId();
        if (expected == EndOfFile::typeId)
            raise(423, "peek() - trying to read EOF");
        if (header.type != expected)
            raise(424, "peek() - type mismatch");
        readInto(*object, payload, header.length, {"peek()", 433, 438});
        return true;
    });
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

unsigned int MemIOStream::getTypeId() const { return 6; }

std::string MemIOStream::getTypeName() const { return "znsl_MemIOStream"; }

std::string MemIOStream::toXML() const { return toXML("znsl_MemIOStream"); }

std::string MemIOStream::toXML(char const* /*name*/) const {
    raise(685, "toXML() - not implemented");
}

bool MemIOStream::fromXML(char const* /*xml*/) { raise(694, "fromXML() - not implemented"); }

unsigned int MemIOStream::getBinLength() const { return lengthPrefixSize + size(); }

unsigned int MemIOStream::toBin(unsigned char* out) const {
    unsigned char* const content = zntl::storeNative(out, std::uint32_t{size()});
    move(content, buffer_.get() + readPos_, size());
    return getBinLength();
}

unsigned int MemIOStream::fromBin(unsigned char const* data, unsigned int /*available*/) {
    // The prefix is trusted as it stands, on purpose.
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
        if (!file || !file.isReadable())
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

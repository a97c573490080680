// Runs random sequences of all operations on a memory stream, and compares it with a simple model.
//
// ZN_MODEL_SEEDS=1000 in the environment runs the sequences of 1000 seeds instead of a few.

#include "misc/zntl_Exception.h"
#include "streams/blob.h"
#include "streams/raw_source.h"
#include "streams/records.h"
#include "streams/znsl_EndOfFile.h"
#include "streams/znsl_MemIOStream.h"
#include "support/buffer_model.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace test;
using znsl::MemIOStream;
using zntl::Exception;

constexpr unsigned int endOfFileType = 1;
constexpr unsigned int streamType = 6;

struct Record {
    unsigned int type;
    Bytes payload;

    Bytes bytes() const { return test::record(type, payload); }
    std::size_t size() const { return 8 + payload.size(); }
};

using Records = std::deque<Record>;

std::size_t sizeOf(Records const& records) {
    std::size_t size = 0;
    for (Record const& record : records)
        size += record.size();
    return size;
}

Bytes bytesOf(Records const& records) {
    Bytes bytes;
    for (Record const& record : records)
        bytes = concat(bytes, record.bytes());
    return bytes;
}

/// A model of a memory stream: the positions in its buffer, and the list of its records.
struct Model {
    Records records;
    test::BufferModel buffer;

    /// The stream has made room for `size` bytes and has appended the record.
    void append(Record const& record, std::size_t size) {
        buffer.append(size, record.size());
        records.push_back(record);
    }
    void append(Record const& record) { append(record, record.size()); }

    void takeFirst() {
        buffer.take(records.front().size());
        records.pop_front();
    }

    void set(Records const& content) {
        buffer.set(sizeOf(content));
        records = content;
    }

    void load(Records const& content) {
        buffer.load(sizeOf(content));
        records = content;
    }

    void assign(Model const& other) {
        buffer.assign(other.buffer);
        records = other.records;
    }

    void clear() {
        buffer.clear();
        records.clear();
    }

    /// Whether `peek` of several records reaches this one. Contract: it never reaches a last record
    /// without payload.
    bool shows(std::size_t i) const {
        return i + 1 < records.size() || (i + 1 == records.size() && !records[i].payload.empty());
    }
};

/// A stream and its model, which must agree after every operation.
struct Subject {
    std::unique_ptr<MemIOStream> stream = std::make_unique<MemIOStream>();
    Model model;
};

class Play {
public:
    explicit Play(std::uint32_t seed) : random_(seed) {}

    void run(int steps) {
        for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
            Operation const& operation = anyOperation();
            SCOPED_TRACE(testing::Message() << "step " << step << ": " << operation.name);
            (this->*operation.play)(anySubject());
            for (Subject& subject : subjects_)
                expectAgreement(subject);
        }
    }

private:
    struct Operation {
        unsigned int weight;
        char const* name;
        void (Play::*play)(Subject& subject);
    };

    static std::vector<Operation> const operations;

    // Chance

    std::size_t pick(std::size_t n) { return random_() % n; }

    Operation const& anyOperation() {
        std::size_t total = 0;
        for (Operation const& operation : operations)
            total += operation.weight;
        std::size_t left = pick(total);
        auto operation = operations.begin();
        for (; left >= operation->weight; ++operation)
            left -= operation->weight;
        return *operation;
    }

    Subject& anySubject() { return subjects_[pick(subjects_.size())]; }

    Bytes anyPayload() {
        std::size_t const limit = pick(10) == 0 ? 300 : 20;
        Bytes payload(pick(limit));
        for (unsigned char& byte : payload)
            byte = static_cast<unsigned char>(random_());
        return payload;
    }

    Record anyRecord() {
        constexpr unsigned int types[] = {0, endOfFileType, 504, 505, 0xFFFF};
        return {types[pick(5)], anyPayload()};
    }

    Records anyRecords() {
        Records records(pick(5));
        for (Record& record : records)
            record = anyRecord();
        return records;
    }

    // Agreement

    static void expectAgreement(Subject& subject) {
        MemIOStream const& stream = *subject.stream;
        Model const& model = subject.model;
        EXPECT_EQ(stream.capacity(), model.buffer.capacity);
        EXPECT_EQ(stream.size(), sizeOf(model.records));
        EXPECT_EQ(stream.isEmpty(), model.records.empty());
        EXPECT_EQ(content(stream), bytesOf(model.records));
        EXPECT_EQ(stream.count(), model.records.size());
        EXPECT_TRUE(stream.validate());
        EXPECT_EQ(stream.getNextType(),
                  model.records.empty() ? endOfFileType : model.records.front().type);
        EXPECT_EQ(stream.isEOF(),
                  !model.records.empty() && model.records.front().type == endOfFileType);
        EXPECT_EQ(stream.getBinLength(), 4 + sizeOf(model.records));
    }

    /// Whether the content is so large that operations would become slow.
    static bool isFull(Subject const& subject) { return sizeOf(subject.model.records) > 1500; }

    // Writing

    void write(Subject& subject) {
        if (isFull(subject))
            return;
        Record const record = anyRecord();
        EXPECT_EQ(subject.stream->write(Blob(record.type, record.payload)), record.size());
        subject.model.append(record);
    }

    void writeTwo(Subject& subject) {
        if (isFull(subject))
            return;
        Record const first = anyRecord();
        Record const second = anyRecord();
        *subject.stream << Blob(first.type, first.payload) << Blob(second.type, second.payload);
        subject.model.append(first);
        subject.model.append(second);
    }

    void close(Subject& subject) {
        if (isFull(subject))
            return;
        subject.stream->close();
        subject.model.append({endOfFileType, {}});
    }

    /// Writes another stream, or the stream itself, as an object.
    void writeStream(Subject& subject) {
        Subject const& inner = anySubject();
        if (isFull(subject) || isFull(inner))
            return;
        Record nested{streamType, Bytes(4 + sizeOf(inner.model.records))};
        inner.stream->toBin(nested.payload.data());
        EXPECT_EQ(subject.stream->write(*inner.stream), nested.size());
        subject.model.append(nested);
    }

    void writeRaw(Subject& subject) {
        if (isFull(subject))
            return;
        Record const record = anyRecord();
        test::RawSource source({record.bytes()});
        *subject.stream << source << source; // the second call finds no record
        subject.model.append(record);
    }

    /// A write fails and leaves its header, which is then removed.
    void writeInVain(Subject& subject) {
        Record const record = anyRecord();
        Blob object(record.type, record.payload);
        object.onToBin = [](unsigned char*) { throw 42; };
        EXPECT_THROW(subject.stream->write(object), Exception);
        EXPECT_EQ(subject.stream->size(), sizeOf(subject.model.records) + 8);
        EXPECT_EQ(subject.stream->validate(), record.payload.empty());
        unsigned char* header = test::writePosition(*subject.stream) - 8;
        subject.stream->finalizeBuffer(header, 0);
        subject.model.buffer.makeRoom(record.size());
    }

    void writeOnAllocationFailure(Subject& subject) {
        if (isFull(subject))
            return;
        Record const record = anyRecord();
        Blob const object(record.type, record.payload);
        Model grown = subject.model;
        grown.append(record);
        test::FailingRun noMemory(1);
        bool const failed = noMemory.runsOutOfMemory([&] { subject.stream->write(object); });
        EXPECT_EQ(failed, grown.buffer.capacity != subject.model.buffer.capacity);
        if (!failed)
            subject.model = grown;
    }

    void writeIntoTheBuffer(Subject& subject) {
        if (isFull(subject))
            return;
        Record const record = anyRecord();
        std::size_t const reserved = record.size() + pick(50);
        unsigned char* out = nullptr;
        subject.stream->getWriteBuffer(out, static_cast<unsigned int>(reserved));
        Bytes const bytes = record.bytes();
        std::memcpy(out, bytes.data(), bytes.size());
        subject.stream->finalizeBuffer(out, static_cast<unsigned int>(bytes.size()));
        subject.model.append(record, reserved);
    }

    // Reading

    void read(Subject& subject) {
        if (subject.model.records.empty() || subject.model.records.front().type == endOfFileType)
            return;
        Record const& first = subject.model.records.front();
        Blob object(first.type);
        EXPECT_EQ(subject.stream->read(object), first.size());
        EXPECT_EQ(object.payload, first.payload);
        subject.model.takeFirst();
    }

    void readIntoAStream(Subject& subject) {
        if (subject.model.records.empty() || subject.model.records.front().type != streamType)
            return;
        Bytes const nested = subject.model.records.front().payload;
        MemIOStream inner;
        *subject.stream >> inner;
        subject.model.takeFirst();
        EXPECT_EQ(content(inner), Bytes(nested.begin() + 4, nested.end()));
    }

    void readAnotherType(Subject& subject) {
        Blob object(77);
        EXPECT_TRUE(throws<Exception>(fault(341, "read() - type mismatch"),
                                      [&] { subject.stream->read(object); }));
    }

    void readInVain(Subject& subject) {
        if (subject.model.records.empty())
            return;
        unsigned int const type = subject.model.records.front().type;
        Blob object(type);
        object.onFromBin = [](unsigned char const*, unsigned int) { throw 42; };
        std::string const expected = type == endOfFileType
                                         ? fault(340, "read() - trying to read EOF")
                                         : fault(359, "read() - could not read object");
        EXPECT_TRUE(throws<Exception>(expected, [&] { subject.stream->read(object); }));
    }

    void peek(Subject& subject) {
        if (subject.model.records.empty() || subject.model.records.front().type == endOfFileType)
            return;
        Record const& first = subject.model.records.front();
        Blob object(first.type);
        EXPECT_EQ(subject.stream->peek(object), first.size());
        EXPECT_EQ(object.payload, first.payload);
    }

    /// Returns three objects or null pointers. The objects have the types of the stream's first
    /// records, or some of them other types.
    std::vector<std::optional<Blob>> anyObjects(Model const& model, bool withOtherTypes) {
        std::vector<std::optional<Blob>> objects(3);
        for (std::size_t i = 0; i < objects.size(); ++i) {
            if (pick(3) == 0 || i >= model.records.size())
                continue;
            bool const other = withOtherTypes && pick(4) == 0;
            objects[i].emplace(other ? 77 : model.records[i].type);
        }
        return objects;
    }

    void checkTypes(Subject& subject) {
        Model const& model = subject.model;
        auto objects = anyObjects(model, true);
        std::size_t const n = pick(4);
        auto const check = [&] {
            return subject.stream->checkTypes(static_cast<unsigned int>(n), at(objects, 0),
                                              at(objects, 1), at(objects, 2));
        };
        if (model.records.empty()) {
            EXPECT_TRUE(throws<Exception>(fault(313, "checkTypes() - no data"), check));
            return;
        }
        bool expected = true;
        for (std::size_t i = 0; i < n; ++i) {
            expected = expected && model.shows(i) &&
                       (!objects[i] || objects[i]->typeId == model.records[i].type);
        }
        EXPECT_EQ(check(), expected);
    }

    void peekMany(Subject& subject) {
        Model const& model = subject.model;
        auto objects = anyObjects(model, false);
        for (auto& object : objects) {
            if (object && object->typeId == endOfFileType)
                object.reset(); // peek refuses to read markers
        }
        std::size_t const n = pick(4);
        std::size_t expected = 0;
        for (std::size_t i = 0; i < n; ++i) {
            if (!model.shows(i)) {
                expected = 0;
                break;
            }
            expected += model.records[i].size();
        }
        EXPECT_EQ(subject.stream->peek(static_cast<unsigned int>(n), at(objects, 0), at(objects, 1),
                                       at(objects, 2)),
                  expected);
        for (std::size_t i = 0; i < n && model.shows(i); ++i) {
            if (objects[i]) {
                EXPECT_EQ(objects[i]->payload, model.records[i].payload);
            }
        }
    }

    static znsl::Serializable* at(std::vector<std::optional<Blob>>& objects, std::size_t i) {
        return objects[i] ? &*objects[i] : nullptr;
    }

    void skip(Subject& subject) {
        if (subject.model.records.empty()) {
            EXPECT_TRUE(
                throws<Exception>(fault(485, "skip() - no data"), [&] { subject.stream->skip(); }));
            return;
        }
        EXPECT_EQ(subject.stream->skip(), subject.model.records.front().size());
        subject.model.takeFirst();
    }

    void skipAll(Subject& subject) {
        while (!subject.model.records.empty())
            skip(subject);
    }

    // The buffer

    void reserve(Subject& subject) {
        std::size_t const n = pick(3000);
        subject.stream->reserve(static_cast<unsigned int>(n));
        subject.model.buffer.reserve(n);
    }

    void makeRoom(Subject& subject) {
        std::size_t const n = pick(200);
        subject.stream->checkBuff(static_cast<unsigned int>(n));
        subject.model.buffer.makeRoom(n);
    }

    void compact(Subject& subject) {
        subject.stream->defrag();
        subject.model.buffer.defrag();
    }

    void clear(Subject& subject) {
        subject.stream->clear();
        subject.model.clear();
    }

    void purge(Subject& subject) {
        subject.stream->purge();
        subject.model = Model();
    }

    // Whole contents

    void copy(Subject& subject) {
        subject.stream = std::make_unique<MemIOStream>(*subject.stream);
        subject.model.buffer.defrag();
    }

    /// Assigns another stream, or the stream itself.
    void assign(Subject& subject) {
        Subject const& source = anySubject();
        *subject.stream = *source.stream;
        if (&subject == &source)
            subject.model.clear();
        else
            subject.model.assign(source.model);
    }

    void setBuffer(Subject& subject) {
        Records const records = anyRecords();
        Bytes const bytes = bytesOf(records);
        subject.stream->setBuffer(bytes.data(), static_cast<unsigned int>(bytes.size()));
        subject.model.set(records);
    }

    /// Sets the stream's own last records as its content.
    void setBufferFromItself(Subject& subject) {
        Records rest = subject.model.records;
        std::size_t offset = 0;
        for (std::size_t n = pick(3); n > 0 && !rest.empty(); --n) {
            offset += rest.front().size();
            rest.pop_front();
        }
        unsigned char const* data;
        unsigned int length;
        subject.stream->getBuffer(data, length);
        subject.stream->setBuffer(data ? data + offset : nullptr,
                                  static_cast<unsigned int>(sizeOf(rest)));
        subject.model.set(rest);
    }

    void binaryForm(Subject& subject) {
        Subject const& source = anySubject();
        Bytes bytes(source.stream->getBinLength());
        EXPECT_EQ(source.stream->toBin(bytes.data()), bytes.size());
        EXPECT_EQ(subject.stream->fromBin(bytes.data(), 0), bytes.size());
        Records const records = source.model.records;
        subject.model.set(records);
    }

    void saveAndLoad(Subject& subject) {
        Subject const& source = anySubject();
        EXPECT_TRUE(source.stream->save(path_.c_str()));
        EXPECT_TRUE(subject.stream->load(path_.c_str()));
        std::filesystem::remove(path_); // faster than truncating it in the next save
        Records const records = source.model.records;
        subject.model.load(records);
    }

    std::mt19937 random_;
    std::array<Subject, 2> subjects_;
    test::TemporaryDirectory directory_;
    std::string path_ = directory_ / "stream";
};

std::vector<Play::Operation> const Play::operations = {
    {10, "write", &Play::write},
    {10, "write two", &Play::writeTwo},
    {3, "close", &Play::close},
    {3, "write a stream", &Play::writeStream},
    {5, "write a raw record", &Play::writeRaw},
    {5, "write in vain", &Play::writeInVain},
    {5, "write on allocation failure", &Play::writeOnAllocationFailure},
    {5, "write into the buffer", &Play::writeIntoTheBuffer},
    {15, "read", &Play::read},
    {5, "read into a stream", &Play::readIntoAStream},
    {5, "read another type", &Play::readAnotherType},
    {5, "read in vain", &Play::readInVain},
    {5, "peek", &Play::peek},
    {5, "check types", &Play::checkTypes},
    {5, "peek at many", &Play::peekMany},
    {15, "skip", &Play::skip},
    {2, "skip all", &Play::skipAll},
    {2, "reserve", &Play::reserve},
    {5, "make room", &Play::makeRoom},
    {2, "compact", &Play::compact},
    {1, "clear", &Play::clear},
    {2, "purge", &Play::purge},
    {1, "copy", &Play::copy},
    {1, "assign", &Play::assign},
    {1, "set the buffer", &Play::setBuffer},
    {2, "set the buffer from itself", &Play::setBufferFromItself},
    {2, "binary form", &Play::binaryForm},
    {2, "save and load", &Play::saveAndLoad},
};

TEST(MemIOStreamModel, AgreesThroughRandomOperations) {
    char const* const asked = std::getenv("ZN_MODEL_SEEDS");
    std::uint32_t const seeds = asked ? static_cast<std::uint32_t>(std::stoul(asked)) : 10;
    for (std::uint32_t seed = 1; seed <= seeds && !HasFailure(); ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Play(seed).run(2000);
    }
}

} // namespace

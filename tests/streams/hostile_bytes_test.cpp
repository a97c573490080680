// Reading untrusted bytes causes no out-of-bounds access, which the address sanitizer would report.

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Members.h"
#include "streams/znsl_Set.h"
#include "support/bytes.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/temporary_directory.h"
#include "video/znvl_Resolution.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fcntl.h>
#include <list>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace test;
using znsl::MemIOStream;
using znsl::Serializable;
using zntl::Integer;
using zntl::String;

// Public queries

struct Form {
    char const* bytes;
    bool holdsString;
    bool holdsStream;

    friend std::ostream& operator<<(std::ostream& out, Form const& form) {
        return out << '"' << form.bytes << '"';
    }
};

class CanReadBin : public testing::TestWithParam<Form> {};

TEST_P(CanReadBin, IsTrueExactlyWhenTheReaderStaysWithinTheBytes) {
    Bytes const bytes = fromHex(GetParam().bytes);
    auto const length = static_cast<unsigned int>(bytes.size());
    EXPECT_EQ(String::canReadBin(bytes.data(), length), GetParam().holdsString);
    EXPECT_EQ(MemIOStream::canReadBin(bytes.data(), length), GetParam().holdsStream);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, CanReadBin,
    testing::Values(Form{"", false, false}, Form{"00", false, false},
                    Form{"00 00 00", false, false}, Form{"00 00 00 00", false, true},
                    Form{"01 00 00 00", false, false}, Form{"00 00 00 00 00", true, true},
                    Form{"00 00 00 00 61", false, true}, Form{"00 00 00 00 01", false, true},
                    Form{"01 00 00 00 61", false, true}, Form{"02 00 00 00 61", false, false},
                    Form{"02 00 00 00 00 61", true, true}, Form{"03 00 00 00 61 00", true, false},
                    Form{"ff ff ff ff 61 00 62", true, false},
                    Form{"fc ff ff ff 61 62 63", false, false},
                    Form{"fb ff ff ff 00 00 00", true, false}));

// Reading

/// A string with a different type id.
class Label : public String {
public:
    using String::String;
    unsigned int getTypeId() const override { return 900; }
};

/// A class with one member of each storable class of the library.
class Entry : public Serializable {
public:
    String text;
    Integer number{0};
    MemIOStream stream;
    Label label;

    bool operator<(Entry const& other) const { return number.getValue() < other.number.getValue(); }
    unsigned int getTypeId() const override { return 901; }
    std::string getTypeName() const override { return "Entry"; }
    std::string toXML() const override { return toXML("Entry"); }
    std::string toXML(char const* /*name*/) const override { return {}; }
    bool fromXML(char const* /*xml*/) override { return false; }
    unsigned int getBinLength() const override { return znsl::Members(*this).getBinLength(); }
    unsigned int toBin(unsigned char* out) const override {
        return znsl::Members(*this).toBin(out);
    }
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        return znsl::Members(*this).fromBin(data, length);
    }
    void fillSerializable(std::list<Serializable*>& list,
                          std::map<std::string, Serializable*>& /*table*/) const {
        for (Serializable const* const member :
             {static_cast<Serializable const*>(&text), static_cast<Serializable const*>(&number),
              static_cast<Serializable const*>(&stream), static_cast<Serializable const*>(&label)})
            list.push_back(const_cast<Serializable*>(member));
    }
};

std::vector<std::unique_ptr<Serializable>> readers() {
    std::vector<std::unique_ptr<Serializable>> all;
    all.push_back(std::make_unique<String>());
    all.push_back(std::make_unique<Label>());
    all.push_back(std::make_unique<Integer>(0));
    all.push_back(std::make_unique<MemIOStream>());
    all.push_back(std::make_unique<znvl::Resolution>());
    all.push_back(std::make_unique<Entry>());
    all.push_back(std::make_unique<znsl::Set<String>>());
    all.push_back(std::make_unique<znsl::Set<Entry>>());
    all.push_back(std::make_unique<znsl::Set<znsl::Set<Label>>>());
    return all;
}

/// Returns a stream with this content, whole records or not, in a buffer of exactly that size.
MemIOStream holding(Bytes const& content) {
    MemIOStream stream(static_cast<unsigned int>(content.size()));
    test::append(stream, content);
    return stream;
}

/// Returns payloads with lengths, NULs and sizes that no writer produces.
std::vector<Bytes> payloads() {
    std::vector<Bytes> all;
    Bytes const starts[] = {
        {},
        fromHex("f5 01 00 00"),
        fromHex("2f 03 00 00"),
        concat(record(504, fromHex("f5 01 00 00")), record(504, fromHex("ff ff ff 7f")))};
    std::uint32_t const lengths[] = {0, 1, 4, 5, 8, 12, 0x7FFFFFFF, 0xFFFFFFFB, 0xFFFFFFFF};
    for (Bytes const& start : starts) {
        for (std::uint32_t const length : lengths) {
            Bytes const header = recordHeader(501, length);
            Bytes const field(header.begin() + 4, header.end());
            for (std::size_t const rest : {0U, 1U, 4U, 5U, 30U}) {
                for (int const filler : {0x00, 0x61}) {
                    all.push_back(concat(
                        start, concat(field, Bytes(rest, static_cast<unsigned char>(filler)))));
                    all.push_back(concat(
                        start, concat(header, Bytes(rest, static_cast<unsigned char>(filler)))));
                }
            }
        }
    }
    return all;
}

/// Runs `read`, which may throw only the library's exception.
template <class Read>
void attempt(Read read) {
    try {
        read();
    } catch (zntl::Exception const& exception) {
        EXPECT_STRNE(exception.what(), "");
    }
}

TEST(HostileBytes, AreReadOrRefusedFromARecord) {
    for (auto const& reader : readers()) {
        for (Bytes const& payload : payloads()) {
            Bytes const whole = record(reader->getTypeId(), payload);
            for (std::size_t const missing : {0U, 1U}) {
                if (missing > payload.size())
                    continue;
                Bytes const content(whole.begin(),
                                    whole.end() - static_cast<std::ptrdiff_t>(missing));
                MemIOStream stream = holding(content);
                attempt([&] { stream.peek(*reader); });
                attempt([&] { stream.peek(1, reader.get()); });
                EXPECT_EQ(test::content(stream), content);
                attempt([&] { stream.read(*reader); });
                EXPECT_TRUE(stream.isEmpty() || stream.size() == content.size());
            }
        }
    }
}

TEST(HostileBytes, AreReadOrRefusedDirectly) {
    for (auto const& reader : readers()) {
        // Contract: a direct call of `fromBin` of a string or a stream trusts its bytes.
        if (dynamic_cast<String*>(reader.get()) || dynamic_cast<MemIOStream*>(reader.get()))
            continue;
        for (Bytes const& payload : payloads()) {
            std::vector<unsigned char> const exact(payload);
            attempt(
                [&] { reader->fromBin(exact.data(), static_cast<unsigned int>(exact.size())); });
        }
    }
}

TEST(HostileBytes, AreReadOrRefusedFromAFile) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "file";
    std::vector<Bytes> const all = payloads();
    for (auto const& reader : readers()) {
        for (std::size_t i = 0; i < all.size(); i += 37) {
            Bytes const header =
                recordHeader(reader->getTypeId(), static_cast<std::uint32_t>(all[i].size()));
            Bytes file(header.begin(), header.begin() + 2);
            file.insert(file.end(), header.begin() + 4, header.end());
            test::writeFile(path, concat(file, all[i]));
            reader->fromFile(path.c_str());
        }
    }
}

// Refused and accepted bytes

std::string const failed = "znsl::Serializable::fromBin() - Failed!";

void expectRefused(Serializable& object, Bytes const& payload) {
    MemIOStream stream = holding(record(object.getTypeId(), payload));
    test::View const before(stream);
    EXPECT_TRUE(test::throws<zntl::Exception>(test::fault(354, "read() - " + failed),
                                              [&] { stream.read(object); }));
    EXPECT_TRUE(test::throws<zntl::Exception>(test::fault(389, "peek() - " + failed),
                                              [&] { stream.peek(object); }));
    EXPECT_TRUE(test::throws<zntl::Exception>(test::fault(433, "peek() - " + failed),
                                              [&] { stream.peek(1, &object); }));
    EXPECT_EQ(test::View(stream), before);
}

TEST(HostileBytes, AStringWithoutItsNulIsRefused) {
    String text("before");
    expectRefused(text, fromHex("01 00 00 00 61"));
    expectRefused(text, fromHex("00 00 00 00"));
    expectRefused(text, fromHex("61"));
    EXPECT_EQ(text, "before");
}

TEST(HostileBytes, AStringDoesNotRunIntoTheNextRecord) {
    MemIOStream stream = holding(
        concat(record(501, fromHex("01 00 00 00 61")), record(501, fromHex("01 00 00 00 62 00"))));
    String text("before");
    EXPECT_THROW(stream >> text, zntl::Exception);
    stream.skip();
    stream >> text;
    EXPECT_EQ(text, "b");
}

TEST(HostileBytes, AStreamLongerThanItsPayloadIsRefused) {
    MemIOStream stream;
    stream << Integer(7);
    expectRefused(stream, fromHex("0c 00 00 00"));
    expectRefused(stream, fromHex("01 00 00 00"));
    expectRefused(stream, fromHex("ff ff ff ff 00"));
    expectRefused(stream, fromHex("00 00 00"));
    EXPECT_EQ(stream.count(), 1U);
}

TEST(HostileBytes, AMemberLongerThanItsShareIsRefused) {
    Entry entry;
    Bytes const text = fromHex("01 00 00 00 61 00");
    Bytes const number = fromHex("07 00 00 00");
    expectRefused(entry, fromHex("01 00 00 00 61"));
    expectRefused(entry, concat(text, fromHex("07 00 00")));
    expectRefused(entry, concat(concat(text, number), fromHex("01 00 00 00")));
    expectRefused(entry, concat(concat(text, number), fromHex("00 00 00 00")));
    EXPECT_EQ(entry.text, "a");
    EXPECT_EQ(entry.number.getValue(), 7);
}

TEST(HostileBytes, ATruncatedRecordIsReadUpToItsEnd) {
    MemIOStream stream = holding(concat(recordHeader(504, 100), fromHex("07 00 00 00")));
    Integer number(0);
    EXPECT_EQ(stream.peek(number), 108U);
    EXPECT_EQ(stream.read(number), 108U);
    EXPECT_EQ(number.getValue(), 7);
    EXPECT_TRUE(stream.isEmpty());
}

TEST(HostileBytes, ALengthFromAPipeCausesNoLargeAllocation) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    // The length field announces 2 GiB, and only 1000 bytes follow.
    Bytes const sent = concat(fromHex("85 03 ff ff ff 7f"), Bytes(1000, 0));
    pid_t const writer = fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) {
        int const pipe = open(path.c_str(), O_WRONLY);
        bool const written =
            write(pipe, sent.data(), sent.size()) == static_cast<ssize_t>(sent.size());
        _exit(written ? 0 : 1);
    }
    Entry entry;
    std::size_t const largest =
        test::largestAllocation([&] { EXPECT_FALSE(entry.fromFile(path.c_str())); });
    EXPECT_LE(largest, 1000000U);
    int status = -1;
    waitpid(writer, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(HostileBytes, AnObjectFromAPipeIsRead) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    MemIOStream sent;
    test::append(sent, test::recordOfSize(9, 200000));
    pid_t const writer = fork();
    ASSERT_GE(writer, 0);
    if (writer == 0)
        _exit(sent.toFile(path.c_str()) ? 0 : 1);
    MemIOStream received;
    EXPECT_TRUE(received.fromFile(path.c_str()));
    EXPECT_EQ(test::content(received), test::content(sent));
    int status = -1;
    waitpid(writer, &status, 0);
    EXPECT_EQ(status, 0);
}

} // namespace

#pragma once

#include "streams/znsl_IStream.h"
#include "support/bytes.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace test {

/// A source of raw records. It returns each record in a new array, which the caller owns.
class RawSource : public znsl::IStream {
public:
    explicit RawSource(std::vector<Bytes> records) : records_(std::move(records)) {}

    unsigned int getNextType() const override { return 1; }
    bool isEmpty() const override { return next_ == records_.size(); }
    unsigned int read(znsl::Serializable& /*object*/) override { return 0; }
    unsigned int skip() override { return 0; }
    IStream& operator>>(znsl::Serializable& /*object*/) override { return *this; }
    bool readNextObject(unsigned char*& data, unsigned int& length) override {
        if (isEmpty())
            return false;
        Bytes const& record = records_[next_];
        data = new unsigned char[record.size()];
        std::copy(record.begin(), record.end(), data);
        length = static_cast<unsigned int>(record.size());
        ++next_;
        return true;
    }

private:
    std::vector<Bytes> records_;
    std::size_t next_ = 0;
};

} // namespace test

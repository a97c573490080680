#pragma once

#include "streams/znsl_Serializable.h"
#include "support/bytes.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace test {

/// A storable value with any type id and any payload. Streams and files call its operations; a test
/// sets the `on...` functions to record these calls or to throw.
class Blob : public znsl::Serializable {
public:
    explicit Blob(unsigned int id, Bytes bytes = {}) : typeId(id), payload(std::move(bytes)) {}

    unsigned int typeId;
    Bytes payload;

    std::function<void()> onGetTypeId = [] {};
    std::function<void()> onGetBinLength = [] {};
    std::function<void(unsigned char* out)> onToBin = [](unsigned char*) {};
    std::function<void(unsigned char const* data, unsigned int length)> onFromBin =
        [](unsigned char const*, unsigned int) {};

    /// If set, getBinLength returns this instead of the payload's length.
    std::optional<unsigned int> announced;
    /// The result of toBin and fromBin, which may differ from the number of bytes.
    unsigned int reported = 0;

    unsigned int getTypeId() const override {
        onGetTypeId();
        return typeId;
    }
    std::string getTypeName() const override { return "Blob"; }
    std::string toXML() const override { return toXML("Blob"); }
    std::string toXML(char const* name) const override { return name; }
    bool fromXML(char const* /*xml*/) override { return false; }
    unsigned int getBinLength() const override {
        onGetBinLength();
        return announced.value_or(static_cast<unsigned int>(payload.size()));
    }
    unsigned int toBin(unsigned char* out) const override {
        onToBin(out);
        std::copy(payload.begin(), payload.end(), out);
        return reported;
    }
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        onFromBin(data, length);
        payload.assign(data, data + length);
        return reported;
    }
};

} // namespace test

#pragma once

#include "streams/znsl_Serializable.h"

#include <string>

namespace zntl {

/// A serializable signed 32-bit integer.
class Integer : public znsl::Serializable {
public:
    /// Leaves the value indeterminate until it is set or read; it is not zero.
    Integer() {} // NOLINT(modernize-use-equals-default): `Integer{}` would zero the value
    /// Converts, so that a number can be used wherever an Integer is expected.
    Integer(int value) : value_(value) {}

    /// The value.
    int getValue() const { return value_; }
    /// Replaces the value.
    void setValue(int value) { value_ = value; }

    /// The value of `getTypeId`.
    static constexpr unsigned int typeId = 504;
    /// 504.
    unsigned int getTypeId() const override;
    /// "Integer".
    std::string getTypeName() const override;
    std::string toXML() const override;
    /// "<name>-7</name>", the value in decimal. A null name is the empty name.
    std::string toXML(char const* name) const override;
    /// Takes the root element's value as a base-10 integer: leading blanks and a sign are accepted,
    /// parsing stops at the first non-digit, no digits give 0, numbers beyond 32 bits saturate.
    bool fromXML(char const* xml) override;
    /// 4.
    unsigned int getBinLength() const override;
    unsigned int toBin(unsigned char* out) const override;
    /// Reads the first 4 bytes and returns 4. Throws zntl::Exception
    /// "znsl::Serializable::fromBin() - Failed!" when `length` is less than 4; the value is then
    /// unchanged. Safe on any bytes.
    unsigned int fromBin(unsigned char const* data, unsigned int length) override;

private:
    int value_; // four bytes in the binary form
};

} // namespace zntl

#pragma once

#include "streams/znsl_Serializable.h"

#include <string>

namespace zntl {

/// A serializable signed 32-bit integer.
class Integer : public znsl::Serializable {
public:
    /// Leaves the value indeterminate, not zero.
    Integer() {} // NOLINT(modernize-use-equals-default): `Integer{}` would zero the value
    /// Not explicit, so a number can be passed wherever an Integer is expected.
    Integer(int value) : value_(value) {}

    /// The value.
    int getValue() const { return value_; }
    /// Replaces the value.
    void setValue(int value) { value_ = value; }

    /// The value of `getTypeId`.
    static constexpr unsigned int typeId = 504;
    /// Returns 504.
    unsigned int getTypeId() const override;
    /// Returns "Integer".
    std::string getTypeName() const override;
    std::string toXML() const override;
    /// Returns the value in decimal as an element: "<name>-7</name>". A null `name` counts as the
    /// empty name.
    std::string toXML(char const* name) const override;
    /// Assigns the number at the start of the root element's value, parsed like strtol in base 10.
    /// Without digits, it is 0. Numbers saturate at 32 bits. Without zn::xml: always assigns 0 and
    /// returns true.
    bool fromXML(char const* xml) override;
    /// Returns 4.
    unsigned int getBinLength() const override;
    unsigned int toBin(unsigned char* out) const override;
    /// Reads the first 4 bytes and returns 4. If `length` is less than 4, throws zntl::Exception
    /// "znsl::Serializable::fromBin() - Failed!", with the value unchanged. Safe on any bytes.
    unsigned int fromBin(unsigned char const* data, unsigned int length) override;

private:
    int value_;
};

} // namespace zntl

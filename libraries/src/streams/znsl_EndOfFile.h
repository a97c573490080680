#pragma once

#include "streams/znsl_Serializable.h"

#include <string>

namespace znsl {

/// The marker that a writer appends after the last object of a sequence. It has no payload.
/// `read()` of a stream throws if it is asked to read a marker; `skip()` removes one.
class EndOfFile : public Serializable {
public:
    /// The type id. `getNextType()` also returns it for an empty stream.
    static constexpr unsigned int typeId = 1;

    EndOfFile() = default;
    EndOfFile(EndOfFile const&) = default;
    EndOfFile& operator=(EndOfFile const&) = default;
    ~EndOfFile() override = default;

    /// Returns 1.
    unsigned int getTypeId() const override;
    /// Returns "znsl_EndOfFile".
    std::string getTypeName() const override;
    /// Returns "<znsl_EndOfFile/>".
    std::string toXML() const override;
    /// Returns "<name/>", or the empty string if `name` is null.
    std::string toXML(char const* name) const override;
    /// Reads nothing and always returns true.
    bool fromXML(char const* xml) override;
    /// Returns 0.
    unsigned int getBinLength() const override;
    /// Writes nothing and returns 0.
    unsigned int toBin(unsigned char* out) const override;
    /// Reads nothing and returns 0.
    unsigned int fromBin(unsigned char const* data, unsigned int length) override;
};

} // namespace znsl

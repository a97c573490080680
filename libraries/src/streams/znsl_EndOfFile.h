#pragma once

#include "streams/znsl_Serializable.h"

#include <string>

namespace znsl {

/// The marker that a writer appends after the last object of a sequence. It has no payload.
/// A stream refuses to read it as an object; `skip()` removes it.
class EndOfFile : public Serializable {
public:
    /// The type id. An empty stream returns it as its next type, too.
    static constexpr unsigned int typeId = 1;

    EndOfFile() = default;
    EndOfFile(EndOfFile const&) = default;
    EndOfFile& operator=(EndOfFile const&) = default;
    ~EndOfFile() override = default;

    /// 1.
    unsigned int getTypeId() const override;
    /// "znsl_EndOfFile".
    std::string getTypeName() const override;
    /// "<znsl_EndOfFile/>".
    std::string toXML() const override;
    /// "<name/>"; the empty string for a null name.
    std::string toXML(char const* name) const override;
    /// Accepts anything and reads nothing: true.
    bool fromXML(char const* xml) override;
    /// 0.
    unsigned int getBinLength() const override;
    /// Writes nothing: 0.
    unsigned int toBin(unsigned char* out) const override;
    /// Reads nothing: 0.
    unsigned int fromBin(unsigned char const* data, unsigned int length) override;
};

} // namespace znsl

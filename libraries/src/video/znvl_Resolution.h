#pragma once

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Serializable.h"

#include <list>
#include <map>
#include <string>

namespace znvl {

/// A picture size in pixels, with a name for the owner's use.
///
/// Ordered by width and then by height, both signed, so that it can live in sorted sets. The name
/// takes no part in ordering, equality, text and stored forms. Only copying carries it along.
class Resolution : public znsl::Serializable {
public:
    zntl::Integer width;  ///< in pixels; any number
    zntl::Integer height; ///< in pixels; any number
    zntl::String name;    ///< any text; only copied

    /// The short names of the common sizes, with a null pointer at the end. Writable:
    /// the lookups use the current entries.
    static char const* NameStrings[];
    /// The sizes of the names at the same positions, likewise.
    static char const* ResolutionStrings[];

    /// 0x0 without a name.
    Resolution() : width(0), height(0) {}
    /// Without a name.
    Resolution(int pixelsWide, int pixelsHigh) : width(pixelsWide), height(pixelsHigh) {}
    Resolution(Resolution const&) = default;
    Resolution(Resolution&&) noexcept = default;
    Resolution& operator=(Resolution const&) = default;
    Resolution& operator=(Resolution&&) noexcept = default;
    ~Resolution() override = default;

    /// By width, and by height for equal widths.
    bool operator<(Resolution const& other) const {
        if (width.getValue() != other.width.getValue())
            return width.getValue() < other.width.getValue();
        return height.getValue() < other.height.getValue();
    }

    /// Equal width and height; the names may differ.
    bool operator==(Resolution const& other) const {
        return width.getValue() == other.width.getValue() &&
               height.getValue() == other.height.getValue();
    }

    /// Another width or height.
    bool operator!=(Resolution const& other) const { return !(*this == other); }

    /// The larger width and the larger height of the two, without a name: 640x360 and 480x480 give
    /// 640x480. A 0x0 on either side makes the whole result 0x0.
    Resolution getMax(Resolution const& other);

    /// The largest size of this aspect ratio that fits in `bounds`, without a name, in single
    /// precision and rounded to the nearest, halves away from zero: 1920x1080 into 640x640 is
    /// 640x360. A copy of this, name included, when `bounds` has a width or height of 0 or less, or
    /// equals this. Sizes of 0 in this follow the arithmetic of infinities; a 0x0 value gives the
    /// bounds' width and a height of 0.
    Resolution scale(Resolution const& bounds) const;

    /// Takes the size from two numbers separated by an "x" (white space around it is allowed, and
    /// anything may follow; numbers beyond 32 bits saturate), or from a name in any letter case:
    /// "640 x 480", "CIF", "720p". False, with the object unchanged, when the text is neither.
    bool fromString(zntl::String const& text);

    /// The name of the size ("CIF") when it has one, otherwise its numbers ("640x480").
    zntl::String toNameString() const;

    /// 815.
    unsigned int getTypeId() const override;
    /// "Resolution".
    std::string getTypeName() const override;
    /// Always throws, as the form with a name does.
    std::string toXML() const override;
    /// Always throws zntl::Exception: a resolution lists its members for the binary form only.
    std::string toXML(char const* element) const override;
    /// Always throws zntl::Exception; the object is unchanged.
    bool fromXML(char const* xml) override;
    /// 8.
    unsigned int getBinLength() const override;
    /// Writes the width and the height, 4 bytes each; returns 8.
    unsigned int toBin(unsigned char* out) const override;
    /// Reads the width and the height and returns 8. Throws zntl::Exception when `length` is less
    /// than 8; with 4 to 7 bytes the width is then already replaced and is not restored. The name
    /// is unchanged. Safe on any bytes.
    unsigned int fromBin(unsigned char const* data, unsigned int length) override;

    /// Appends the members of the binary form to `list`, in the order in which they are written,
    /// and enters the members of the XML form in `table` under their element names. A
    /// resolution lists its width and height and names no member. The pointers are valid while the
    /// object lives.
    virtual void fillSerializable(std::list<znsl::Serializable*>& list,
                                  std::map<std::string, znsl::Serializable*>& table) const;
};

} // namespace znvl

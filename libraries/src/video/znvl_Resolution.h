#pragma once

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Serializable.h"

#include <list>
#include <map>
#include <string>

namespace znvl {

/// A picture size in pixels, with a name that callers may use as they like.
///
/// Resolutions are ordered by width and then by height, both signed, so sets can contain them.
/// Copies have the name of the original. Every other operation ignores the name: it affects neither
/// order nor equality, and is not part of the stored and text forms.
class Resolution : public znsl::Serializable {
public:
    zntl::Integer width;  ///< in pixels; any number
    zntl::Integer height; ///< in pixels; any number
    zntl::String name;    ///< any string

    /// The names of common sizes, such as "CIF", then a null pointer. The entries may be changed;
    /// `fromString` and `toNameString` read the current ones.
    static char const* NameStrings[];
    /// The sizes for these names, such as "352x288", at the same positions. May be changed too.
    static char const* ResolutionStrings[];

    /// Makes a 0x0 resolution without a name.
    Resolution() : width(0), height(0) {}
    /// Makes a resolution without a name.
    Resolution(int pixelsWide, int pixelsHigh) : width(pixelsWide), height(pixelsHigh) {}
    Resolution(Resolution const&) = default;
    Resolution(Resolution&&) noexcept = default;
    Resolution& operator=(Resolution const&) = default;
    Resolution& operator=(Resolution&&) noexcept = default;
    ~Resolution() override = default;

    /// Compares the widths, and the heights if the widths are equal.
    bool operator<(Resolution const& other) const {
        if (width.getValue() != other.width.getValue())
            return width.getValue() < other.width.getValue();
        return height.getValue() < other.height.getValue();
    }

    /// Whether both have the same width and height; the names may differ.
    bool operator==(Resolution const& other) const {
        return width.getValue() == other.width.getValue() &&
               height.getValue() == other.height.getValue();
    }

    /// Whether the widths or the heights differ.
    bool operator!=(Resolution const& other) const { return !(*this == other); }

    /// Returns the larger width and the larger height of the two, without a name: 640x480 for
    /// 640x360 and 480x480. Returns 0x0 if either of the two is 0x0.
    Resolution getMax(Resolution const& other);

    /// Returns the largest size with this aspect ratio that fits in `bounds`, without a name:
    /// scaling 1920x1080 into 640x640 returns 640x360. Computes in single precision and rounds to
    /// the nearest integer, halves away from zero.
    ///
    /// Returns a copy of this, including the name, if `bounds` equals this or has a width or height
    /// of 0 or less. If this has a height of 0, returns the bounds' width and a height of 0. If it
    /// has a width of 0 and a positive height, returns a width of 0 and the bounds' height.
    Resolution scale(Resolution const& bounds) const;

    /// Sets the size from two numbers with an "x" between them ("640x480", "640 x 480"), or from
    /// a name in `NameStrings` in any letter case ("CIF"). Ignores white space before the numbers
    /// and around the "x", and any characters after the numbers. Numbers saturate at 32 bits.
    /// Returns false, with the object unchanged, if the string is neither.
    bool fromString(zntl::String const& text);

    /// Returns the size's name in `NameStrings` ("CIF") if it has one, otherwise its numbers
    /// ("640x480").
    zntl::String toNameString() const;

    /// Returns 815.
    unsigned int getTypeId() const override;
    /// Returns "Resolution".
    std::string getTypeName() const override;
    /// Not implemented: always throws zntl::Exception.
    std::string toXML() const override;
    /// Not implemented: always throws zntl::Exception. (A subclass that names its members in
    /// `fillSerializable` has an XML form.)
    std::string toXML(char const* element) const override;
    /// Not implemented, as `toXML`: always throws zntl::Exception. The object is unchanged.
    bool fromXML(char const* xml) override;
    /// Returns 8.
    unsigned int getBinLength() const override;
    /// Writes the width and the height, 4 bytes each; returns 8.
    unsigned int toBin(unsigned char* out) const override;
    /// Reads the width and the height and returns 8. Throws zntl::Exception if `length` is less
    /// than 8; with 4 to 7 bytes, the width has changed by then. The name is unchanged. Safe on any
    /// bytes.
    unsigned int fromBin(unsigned char const* data, unsigned int length) override;

    /// Appends pointers to the members of the binary form to `list`, in the order in which they are
    /// written, and adds those of the XML form to `table`, by element name. The pointers are valid
    /// while the object lives. A Resolution lists its width and height and names no members.
    virtual void fillSerializable(std::list<znsl::Serializable*>& list,
                                  std::map<std::string, znsl::Serializable*>& table) const;
};

} // namespace znvl

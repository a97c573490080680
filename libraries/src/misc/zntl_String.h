#pragma once

#include "misc/zntl_SmartArray.h"
#include "streams/znsl_Serializable.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace zntl {

/// A standard string that is also a storable value, with factories for formatted text and a
/// toolkit of text operations.
///
/// Every standard string operation is available on it, and it can be passed wherever a std::string
/// is expected. Operations named `from...` build a new value, those named `to...` convert; unless
/// it says so, an operation leaves the string as it is and takes time proportional to the texts it
/// is given. A null `char const*` is the empty text, never an error. std::bad_alloc passes through
/// wherever a text is built.
class String : public std::string, public znsl::Serializable {
public:
    using std::string::string;
    String() = default;
    String(String const&) = default;
    String(String&&) noexcept = default;
    /// All characters, NULs too.
    String(std::string const& text) : std::string(text) {}
    /// All characters, NULs too, without a copy.
    String(std::string&& text) noexcept : std::string(std::move(text)) {}
    /// The characters up to the first NUL.
    String(char const* text) : std::string(text ? text : "") {}
    ~String() override = default;

    using std::string::operator=;
    String& operator=(String const&) = default;
    String& operator=(String&&) noexcept = default;
    /// All characters, NULs too.
    String& operator=(std::string const& text);
    /// All characters, NULs too, without a copy.
    String& operator=(std::string&& text) noexcept;
    /// The characters up to the first NUL.
    String& operator=(char const* text);

    // Formatted text

    /// Formats like printf. `args` is the address of a va_list object (not of a va_list parameter,
    /// which some machines pass as a pointer: take a va_copy first); the caller's va_list is left
    /// as it was. It may be null for a format that takes no arguments. The result stops at the
    /// first NUL that the formatting produced. A null format, or one that the C library rejects,
    /// gives the empty string. The number format follows the C library's locale, as printf does.
    static String fromVAList(char const* format, void* args);

    /// Formats like printf, as `fromVAList` does: `fromFormat("%dx%d", 640, 480)` is "640x480".
    [[gnu::format(printf, 1, 2)]] static String fromFormat(char const* format, ...);

    /// The value in decimal: `fromInteger(-7)` is "-7".
    static String fromInteger(int value);

    /// The value as printf writes it for "%.*f", with `decimals` digits: in the locale of the
    /// calling thread, and rounded as the program asked for. `fromFloat(2.5f, 2)` is "2.50".
    static String fromFloat(float value, int decimals);

    /// The value of an environment variable; the empty string when it is not set.
    static String fromEnvVarible(char const* name);

    // Comparison and conversion

    /// Compares without regard to letter case, up to the first NUL: negative, zero or positive.
    int iCompare(String const& other) const;

    /// Whether the string starts with `prefix`; the empty prefix is a prefix of every string.
    bool hasPrefix(String const& prefix) const {
        if (prefix.empty())
            return true;
        // Most texts differ in the first character, which spares them a call.
        return prefix.size() <= size() && front() == prefix.front() &&
               traits_type::compare(data(), prefix.data(), prefix.size()) == 0;
    }

    /// The number at the start of the text, read as strtol does in base 10. Negative numbers and
    /// texts without a number give 0; numbers beyond the signed 32-bit range give 2147483647.
    unsigned int toUnsignedInt() const;

    /// Copies at most `max` characters from the start of the string to `out` and a NUL behind
    /// them; returns the number of characters copied. `out` has room for `max` + 1 bytes.
    virtual unsigned int copyString(char* out, unsigned int max) const;

    /// The text up to its first NUL in lower case, byte by byte through the C library's table.
    String toLower() const;

    /// The text in upper case through zn_strupr, whose walk starts at the null address: every call
    /// ends in a segmentation fault. Nothing calls it, and that state is kept on purpose.
    String toUpper() const;

    /// Whether the text is one number: an optional sign first, digits, at most one point; blanks
    /// and tabs may stand before and behind it. "+", "-" and "." alone count as numbers; exponents
    /// do not. `isInteger` becomes false when a point was met, true otherwise, also where the
    /// result is false.
    bool isNumeric(bool& isInteger) const;

    /// The text, followed by `fill` characters up to `width` characters; never shortened. Throws
    /// std::length_error for a width above max_size(), which a width can exceed on 32-bit machines.
    String padEnd(unsigned int width, char fill) const;

    /// True for "true", "t", "yes", "y" and "on" in any letter case; any other text is true when
    /// the number at its start (as strtol reads it) is not 0.
    bool toBool() const;

    // Trimming, filtering, cutting

    /// The text without spaces, tabs, newlines and carriage returns at its ends:
    /// " \t x y \r\n" becomes "x y".
    String trim() const;

    /// `text` without the characters that are not in `allowed`, and then trimmed, also when
    /// `allowed` contains blanks: `sanitize(" a b ", "ab ")` is "a b".
    static String sanitize(String const& text, char const* allowed);

    /// The text strictly between the first `begin` and the first `end` behind it; the empty string
    /// when either is missing: `extract("<a>", "</a>")` of "x<a>v</a>" is "v".
    String extract(String const& begin, String const& end) const;

    /// The first `length` characters, the last three of them replaced by "...", when the text is
    /// longer than that; an unchanged copy when it is not; the empty string for a `length` below 3.
    /// `abbreviate(5)` of "abcdefgh" is "ab...".
    String abbreviate(unsigned int length) const;

    // Finding and tokenizing

    /// The positions, in increasing order, of the characters that occur in `chars`, except those
    /// in quoted sections: `findAll(",", "'")` of "a,'b,c',d" gives 1 and 7.
    ///
    /// A character from `quotes` opens a section (it is not recorded, even when it is in `chars`
    /// too) and the next same character closes it. In a section a backslash skips the character
    /// behind it, and the one after that closes the section when it is the quote and is otherwise
    /// passed over; it is never itself taken as an escape. A backslash that is the quote
    /// character closes the section. Nothing is found in or behind a section that is not closed.
    ///
    /// Throws std::out_of_range when a backslash stands within the last two characters of the text
    /// in an open section, if a character from `chars` comes at or behind the opening quote.
    std::vector<unsigned int> findAll(String const& chars, String const& quotes) const;

    /// The pieces between the separator characters; see the static form.
    std::vector<String> tokenize(String const& separators, String const& quotes) const;

    /// Appends to `out`, with push_back, the pieces of `text` between the characters of
    /// `separators`, where separators in quoted sections do not cut (see `findAll`, which may
    /// throw; `out` is then unchanged).
    ///
    /// Empty pieces are dropped. Pieces are not trimmed, keep their quotes and backslashes, and end
    /// at their first NUL. Empty `separators` give the whole text as one piece; an empty text gives
    /// none. `tokenize(",", "'")` of ",a,,'b,c',d," gives "a", "'b,c'" and "d".
    template <class Container>
    static void tokenize(String const& text, String const& separators, Container& out,
                         String const& quotes) {
        for (String& piece : text.tokenize(separators, quotes))
            out.push_back(std::move(piece));
    }

    // Markup

    /// `text` with "&", "<", ">", "'" and the double quote replaced by "&amp;", "&lt;", "&gt;",
    /// "&apos;" and "&quot;".
    static String encodeHtml(String const& text);

    /// `text` with those five entities replaced by their characters. "&amp;" is decoded first, so
    /// that a text which encodes "<", ">", "'" or the double quote twice is decoded twice:
    /// "&amp;lt;" gives "<", while "&amp;amp;" gives "&amp;".
    static String decodeHtml(String const& text);

    /// The text with every element `name` (from its opening tag through its matching closing tag,
    /// or a self-closing tag) replaced by `replacement`. An element that is never closed is left as
    /// it stands, and the text behind its opening tag is treated in the same way.
    /// `replaceElement("b", "X")` of "1<b>2<b>3</b></b>4<b/>5" is "1X4X5". Tags are recognised as
    /// findOpenTag and findCloseTag do. Takes memory proportional to the number of tags.
    String replaceElement(String const& name, String const& replacement) const;

    // The storable value

    /// The value of `getTypeId`.
    static constexpr unsigned int typeId = 501;
    /// 501.
    unsigned int getTypeId() const override;
    /// "zntl_String".
    std::string getTypeName() const override;
    std::string toXML() const override;
    /// "<name>text</name>" with the text's markup encoded; "<name/>" for the empty string; the
    /// empty text for a null name.
    std::string toXML(char const* name) const override;
    /// Takes the root element's value.
    bool fromXML(char const* xml) override;
    /// The length + 5. Throws std::length_error if that does not fit 32 bits.
    unsigned int getBinLength() const override;
    /// Writes the length (32 bits), the characters and one NUL. Throws what `getBinLength` throws.
    unsigned int toBin(unsigned char* out) const override;
    /// Whether `fromBin` stays within the `length` bytes at `data`: one of them, from the fifth on,
    /// is a NUL.
    static bool canReadBin(unsigned char const* data, unsigned int length);
    /// Takes the text from `data` + 4 up to the first NUL and returns the new `getBinLength()`.
    ///
    /// TRUSTS ITS INPUT when called directly: neither the stored length nor `length` is consulted,
    /// and a NUL must be there. Ask `canReadBin` first if the bytes are not your own. The library
    /// asks before it calls this for a record, a member or a file.
    unsigned int fromBin(unsigned char const* data, unsigned int length) override;

    /// Writes the characters to a plain text file, exactly as they are; the file is created, or cut
    /// to zero length first. False when it cannot be opened or not be written (it may then be
    /// empty or partly written). Never throws.
    bool toFile(char const* path) const override;

    /// Replaces the string by the whole content of a file, NULs and line ends included. False, with
    /// the string empty, when the file cannot be opened or read, is a directory, or does not fit in
    /// memory. Never throws.
    bool fromFile(char const* path) override;

    /// The characters up to and including the first NUL (which every string has behind its last
    /// character) in an array of their own, whose size is the string's length + 1.
    operator SmartArray<char>() const;
};

} // namespace zntl

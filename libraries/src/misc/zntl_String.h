#pragma once

#include "misc/zntl_SmartArray.h"
#include "streams/znsl_Serializable.h"

#include <string>
#include <utility>
#include <vector>

namespace zntl {

/// A std::string that is also a storable value, with functions that format, compare, convert,
/// search and split.
///
/// It has all operations of std::string and can be passed wherever a std::string is expected.
/// Where this class declares a `char const*`, null counts as the empty string, except as the name
/// for `toXML`; the operations of std::string do not accept null.
///
/// Unless its comment says otherwise, an operation does not change the string and takes time
/// proportional to the lengths of the strings involved. It throws std::bad_alloc if an allocation
/// fails, and std::length_error if a length would exceed max_size(), which is possible on 32-bit
/// machines. Positions and array sizes have 32 bits: `findAll`, `tokenize` and the conversion to
/// SmartArray are for strings shorter than 4 GiB.
class String : public std::string, public znsl::Serializable {
public:
    using std::string::string;
    String() = default;
    String(String const&) = default;
    String(String&&) noexcept = default;
    /// Copies all characters, including NULs.
    String(std::string const& text) : std::string(text) {}
    /// Moves all characters, including NULs.
    String(std::string&& text) noexcept : std::string(std::move(text)) {}
    /// Copies the characters before the first NUL.
    String(char const* text) : std::string(text ? text : "") {}
    ~String() override = default;

    using std::string::operator=;
    String& operator=(String const&) = default;
    String& operator=(String&&) noexcept = default;
    /// Copies all characters, including NULs.
    String& operator=(std::string const& text);
    /// Moves all characters, including NULs.
    String& operator=(std::string&& text) noexcept;
    /// Copies the characters before the first NUL.
    String& operator=(char const* text);

    // Formatted text

    /// Formats like printf, in the current locale.
    ///
    /// `args` is the address of a va_list variable, which stays unchanged. Some machines pass
    /// va_list parameters as pointers: copy a parameter with va_copy and pass the copy's address.
    /// `args` may be null if the format takes no arguments.
    ///
    /// The result is truncated at its first NUL. It is empty if `format` is null or if the C
    /// library rejects it. A hardened C library (`_FORTIFY_SOURCE`) ends the process for a "%n",
    /// and for numbered arguments with gaps ("%2$d" without "%1$d"): never format with a foreign
    /// string.
    static String fromVAList(char const* format, void* args);

    /// As `fromVAList`, with the arguments themselves: `fromFormat("%dx%d", 640, 480)` returns
    /// "640x480".
    [[gnu::format(printf, 1, 2)]] static String fromFormat(char const* format, ...);

    /// Returns the value in decimal: `fromInteger(-7)` returns "-7".
    static String fromInteger(int value);

    /// Returns the value with `decimals` digits after the point, as printf writes it for "%.*f" in
    /// the current locale and rounding mode: `fromFloat(2.5f, 2)` returns "2.50".
    static String fromFloat(float value, int decimals);

    /// Returns the value of an environment variable; the empty string if it is not set.
    // Contract: programs use the misspelt name.
    static String fromEnvVarible(char const* name);

    // Comparison and conversion

    /// Compares without regard to letter case, up to the first NUL. Returns a negative number, zero
    /// or a positive number if this string sorts before, equals or sorts after `other`.
    int iCompare(String const& other) const;

    /// Returns whether the string starts with `prefix`. Every string starts with the empty prefix.
    bool hasPrefix(String const& prefix) const {
        if (prefix.empty())
            return true;
        // Most strings already differ in the first character, which is cheaper than a call.
        return prefix.size() <= size() && front() == prefix.front() &&
               traits_type::compare(data(), prefix.data(), prefix.size()) == 0;
    }

    /// Returns the number at the start of the string, parsed like strtol in base 10: 0 if the
    /// number is negative or missing, 2147483647 if it is larger than that.
    unsigned int toUnsignedInt() const;

    /// Copies the first `max` characters (all if there are fewer) and then a NUL to `out`. Returns
    /// the number of copied characters without that NUL. `out` must have room for `max` + 1 bytes.
    virtual unsigned int copyString(char* out, unsigned int max) const;

    /// Returns the characters before the first NUL in lower case. Converts each byte as the C
    /// library's tolower does.
    String toLower() const;

    /// Do not call it: like zn_strupr, it always ends in a segmentation fault.
    String toUpper() const;

    /// Returns whether the string is one number: an optional sign, then digits and at most one
    /// point. Spaces and tabs may surround it. Digits may be missing: ".5", "5.", "+", "-", "." and
    /// "-." are numbers. Exponents are not accepted.
    ///
    /// Sets `isInteger` even if it returns false: to false if it accepted a point before it found
    /// an invalid character, otherwise to true.
    bool isNumeric(bool& isInteger) const;

    /// Returns the string with `fill` characters appended until it has `width` characters; an
    /// unchanged copy if it already has that many.
    String padEnd(unsigned int width, char fill) const;

    /// Returns true for "true", "t", "yes", "y" and "on" in any letter case, and for a string that
    /// starts with a number other than 0 (parsed like strtol in base 10); otherwise false. Ignores
    /// characters after the first NUL.
    bool toBool() const;

    // Trimming, filtering, cutting

    /// Returns the string without spaces, tabs, newlines and carriage returns at its start and
    /// end: " \t x y \r\n" becomes "x y".
    String trim() const;

    /// Removes all characters that are not in `allowed` from a copy of `text`, then trims it, even
    /// if `allowed` contains blanks: `sanitize(" a b ", "ab ")` returns "a b".
    static String sanitize(String const& text, char const* allowed);

    /// Returns the characters between the first `begin` and the first `end` after it:
    /// `extract("<a>", "</a>")` of "x<a>v</a>" returns "v". Returns the empty string if either is
    /// missing.
    String extract(String const& begin, String const& end) const;

    /// Truncates a copy of the string to `length` characters, the last three of which are "...":
    /// `abbreviate(5)` of "abcdefgh" returns "ab...". Returns the empty string if `length` is less
    /// than 3, and otherwise an unchanged copy if the string is not longer than `length`.
    String abbreviate(unsigned int length) const;

    // Finding and tokenizing

    /// Returns the positions, in increasing order, of the characters that occur in `chars`, except
    /// those in quoted sections: `findAll(",", "'")` of "a,'b,c',d" returns 1 and 7.
    ///
    /// A character from `quotes` opens a quoted section, and the next equal character closes it.
    /// Neither is returned, even if it is in `chars`. If a section is never closed, nothing in it
    /// or after it is found.
    ///
    /// In a section, a backslash escapes the next character. The character after the escaped one
    /// closes the section if it is the quote, but never escapes: of three backslashes in a row, the
    /// third is an ordinary character. If the quote character is itself a backslash, a backslash
    /// closes the section.
    ///
    /// Throws std::out_of_range if a backslash that escapes is one of the last two characters of
    /// the string, and a character from `chars` occurs at or after the opening quote.
    std::vector<unsigned int> findAll(String const& chars, String const& quotes) const;

    /// Returns the pieces that the static form appends.
    std::vector<String> tokenize(String const& separators, String const& quotes) const;

    /// Splits `text` at each character that is in `separators` and not in a quoted section, and
    /// appends the pieces to `out` with push_back: splitting ",a,,'b,c',d," with `separators` ","
    /// and `quotes` "'" appends "a", "'b,c'" and "d".
    ///
    /// Empty pieces are dropped. Pieces are not trimmed, keep their quotes and backslashes, and are
    /// then truncated at their first NUL, which can leave an empty piece. If `separators` is empty,
    /// the whole string is one piece; an empty string has no pieces. Quoted sections are those of
    /// `findAll`. Throws what `findAll` throws, with `out` unchanged.
    template <class Container>
    static void tokenize(String const& text, String const& separators, Container& out,
                         String const& quotes) {
        for (String& piece : text.tokenize(separators, quotes))
            out.push_back(std::move(piece));
    }

    // Markup

    /// Returns `text` with "&", "<", ">", "'" and the double quote replaced by "&amp;", "&lt;",
    /// "&gt;", "&apos;" and "&quot;".
    static String encodeHtml(String const& text);

    /// Returns `text` with the five entities of `encodeHtml` replaced by their characters.
    ///
    /// It decodes "&amp;" first and then the others. So it decodes a doubly encoded "<", ">", "'"
    /// or double quote twice ("&amp;lt;" becomes "<"), but a doubly encoded "&" only once
    /// ("&amp;amp;" becomes "&amp;").
    static String decodeHtml(String const& text);

    /// Returns the string with every element `name` replaced by `replacement`:
    /// `replaceElement("b", "X")` of "1<b>2<b>3</b></b>4<b/>5" returns "1X4X5".
    ///
    /// An element is a self-closing tag, or an opening tag with everything up to and including the
    /// matching closing tag, as findOpenTag and findCloseTag find them. The opening tag of an
    /// element that is never closed stays, and the search continues after it. Takes memory
    /// proportional to the number of tags, and quadratic time in the worst case if `name` contains
    /// both "<" and ">".
    String replaceElement(String const& name, String const& replacement) const;

    // The storable value

    /// The value of `getTypeId`.
    static constexpr unsigned int typeId = 501;
    /// Returns 501.
    unsigned int getTypeId() const override;
    /// Returns "zntl_String".
    std::string getTypeName() const override;
    std::string toXML() const override;
    /// Returns "<name>value</name>", with the value encoded by `encodeHtml`; "<name/>" for the
    /// empty string; the empty string if `name` is null.
    std::string toXML(char const* name) const override;
    /// Assigns the value of the root element. Without zn::xml: assigns the empty string to any
    /// string, and returns true.
    bool fromXML(char const* xml) override;
    /// Returns the string's length + 5. Throws std::length_error if that does not fit in 32 bits.
    unsigned int getBinLength() const override;
    /// Writes the length (32 bits), the characters and one NUL. Throws what `getBinLength` throws.
    unsigned int toBin(unsigned char* out) const override;
    /// Returns whether `fromBin` would stay within the `length` bytes at `data`. It does if the
    /// fifth byte or one after it is a NUL.
    static bool canReadBin(unsigned char const* data, unsigned int length);
    /// Assigns the characters from `data` + 4 up to the first NUL. Returns the new
    /// `getBinLength()`.
    ///
    /// A direct call TRUSTS ITS INPUT: it reads up to the first NUL, wherever that is, and ignores
    /// both the stored length and `length`. Call `canReadBin` first if you do not trust the bytes.
    /// The library does so before it reads a record, a member or a file.
    unsigned int fromBin(unsigned char const* data, unsigned int length) override;

    /// Writes the characters, and nothing else, to a file, which it creates or truncates. Returns
    /// false if the file cannot be opened or written; it may then be empty or partly written.
    /// Ignores an error that the system reports only when the file is closed. Never throws.
    bool toFile(char const* path) const override;

    /// Replaces the string with the whole content of a file, including NULs and line ends. Returns
    /// false, with the string empty, if the file cannot be opened or read, is a directory, or does
    /// not fit in memory. `path` must not point into the string. Never throws.
    bool fromFile(char const* path) override;

    /// Returns a new array of length + 1 elements that starts with the characters up to and
    /// including the first NUL, usually the terminating one. After an earlier NUL, the remaining
    /// elements are uninitialised.
    operator SmartArray<char>() const;
};

} // namespace zntl

// zn-dump with any bytes: its output is bounded, its JSON documents are complete, and if it finds
// no damage, the library reads the values.

#include "fuzz.h"
#include "json_listing.h"
#include "reader.h"
#include "text_listing.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "video/znvl_Resolution.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

using fuzz::require;

namespace {

/// Returns the output of zn-dump for the file, in this kind of listing.
template <class Listing>
std::string print(dump::Bytes file, dump::Form form, std::optional<std::size_t>& damage) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const out = open_memstream(&text, &size);
    require(out, "there is memory for the output");
    {
        Listing listing(out);
        listing.beginFile("file", form, file.size());
        damage = dump::list(file, form, listing);
        listing.endFile();
    }
    std::fclose(out);
    std::unique_ptr<char, void (*)(void*)> const owner(text, std::free);
    return {text, size};
}

/// Whether all brackets outside of strings match, and no string is left open.
bool isCompleteJson(std::string const& document) {
    std::string open;
    bool inString = false;
    for (std::size_t i = 0; i < document.size(); ++i) {
        char const c = document[i];
        if (inString) {
            require(static_cast<unsigned char>(c) >= 0x20,
                    "JSON strings have no control characters");
            if (c == '\\')
                ++i;
            inString = c != '"';
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            open += c == '[' ? ']' : '}';
        } else if (c == ']' || c == '}') {
            if (open.empty() || open.back() != c)
                return false;
            open.pop_back();
        }
    }
    return !inString && open.empty();
}

/// Returns whether the library can read the next record of the stream. Skips records of unknown
/// types.
bool readNext(znsl::MemIOStream& stream) {
    zntl::Integer integer;
    zntl::String string;
    znvl::Resolution resolution;
    znsl::MemIOStream nested;
    znsl::Set<znvl::Resolution> set;
    try {
        for (znsl::Serializable* const object :
             {static_cast<znsl::Serializable*>(&integer), static_cast<znsl::Serializable*>(&string),
              static_cast<znsl::Serializable*>(&resolution),
              static_cast<znsl::Serializable*>(&nested), static_cast<znsl::Serializable*>(&set)}) {
            if (stream.getNextType() == object->getTypeId()) {
                stream.read(*object);
                return true;
            }
        }
        stream.skip();
        return true;
    } catch (std::exception const&) {
        return false;
    }
}

} // namespace

void fuzz::run(Input& input) {
    dump::Bytes const file(input.data(), input.size());
    for (dump::Form const form : {dump::Form::stream, dump::Form::typed}) {
        std::optional<std::size_t> damage;
        std::optional<std::size_t> sameDamage;
        std::string const json = print<dump::JsonListing>(file, form, damage);
        std::string const text = print<dump::TextListing>(file, form, sameDamage);
        require(damage == sameDamage, "both listings find the same damage");
        require(!damage || *damage <= file.size(), "damage is in the file");
        require(isCompleteJson(json), "the JSON document is complete");
        // An escape and a line of a listing are longer than the byte or header that they represent.
        require(json.size() < 1000 + 100 * file.size(), "JSON is bounded");
        require(text.size() < 1000 + 100 * file.size(), "the text is bounded");

        if (form == dump::Form::typed || damage)
            continue;
        require(dump::formOf(file) == form || file.numberAt<std::uint16_t>(2) != 0,
                "whole records are a stream");
        znsl::MemIOStream stream;
        stream.setBuffer(file.data(), static_cast<unsigned int>(file.size()));
        while (!stream.isEmpty())
            require(readNext(stream), "the library reads an undamaged record");
    }
}

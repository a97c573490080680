#pragma once

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_Markup.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Serializable.h"
#include "xml/znxml_DomIterator.h"

#include <cstdint>
#include <limits>
#include <new>
#include <set>
#include <stdexcept>
#include <string>

namespace znsl {

/// An ordered set of unique values that is itself a storable value.
///
/// `T` must be a Serializable with a default constructor and an `operator<`. Only `operator<`
/// decides on order and uniqueness: of equal elements, the set keeps the one inserted first. All
/// operations of std::set are available. The set adds no data to it.
///
/// The binary form is that of a MemIOStream with these objects: an Integer with the type id of `T`,
/// an Integer with the number of elements, and the elements in ascending order.
template <class T>
class Set : public std::set<T>, public Serializable {
public:
    using std::set<T>::set;
    Set() = default;
    Set(Set const&) = default;
    Set(Set&&) = default;
    Set& operator=(Set const&) = default;
    Set& operator=(Set&&) = default;
    ~Set() override = default;

    /// 10000 plus the type id of `T`.
    unsigned int getTypeId() const override { return 10000 + T().getTypeId(); }

    /// The type name of `T` followed by "Set".
    std::string getTypeName() const override { return internalTypeName(); }

    /// The same as `getTypeName`.
    zntl::String internalTypeName() const { return T().getTypeName() + "Set"; }

    /// Returns the result of the virtual `toXML(internalTypeName())`.
    std::string toXML() const override { return toXML(internalTypeName().c_str()); }

    /// Returns an XML element called `name` that contains the result of `toXML()` for each element
    /// of the set; the empty string if `name` is null. Throws what an element's `toXML` throws.
    std::string toXML(char const* name) const override {
        return render(name, [](T const& element) { return element.toXML(); });
    }

    /// Replaces the content with the elements that `T` reads from the children of the root element.
    /// Skips children for which `T::fromXML` returns false. Does not check the name of the root.
    /// All children are read with one object, so what a child does not set is as in the child
    /// before. Returns false, with the set unchanged, if there is no root element or it has no
    /// children.
    bool fromXML(char const* xml) override {
        auto const root = znxml::DomIterator::parse(xml);
        if (root.atEnd() || !root.hasChildren())
            return false;
        this->clear();
        // Contract: one object reads all children, so it keeps what a child does not set.
        T element;
        for (auto child = root.childrenBegin(); !child.atEnd(); child.nextSibling()) {
            if (element.fromXML(child.toXML().c_str()))
                this->insert(this->end(), element);
        }
        return true;
    }

    /// Returns the number of bytes that `toBin` writes; 0 if an element throws. Builds the binary
    /// form to measure it. If an allocation fails, adds up the elements' lengths instead, and
    /// throws what their `getBinLength` throws. Throws std::length_error if a length does not fit
    /// in 32 bits.
    unsigned int getBinLength() const override {
        try {
            MemIOStream record;
            appendTo(record);
            return record.getBinLength();
        } catch (std::bad_alloc const&) {
            return measure();
        } catch (MemIOStream::OutOfMemory const&) {
            return measure();
        } catch (std::length_error const&) {
            throw;
        } catch (...) {
            return 0;
        }
    }

    /// Writes the binary form and returns the number of bytes written. Throws zntl::Exception
    /// "znsl::Serializable::fromBin() - Failed!" if an element throws, an allocation fails, or the
    /// form does not fit in 32 bits.
    unsigned int toBin(unsigned char* out) const override {
        MemIOStream record;
        try {
            appendTo(record);
        } catch (std::bad_alloc const&) {
            throw MemIOStream::OutOfMemory(failure);
        } catch (MemIOStream::OutOfMemory const&) {
            throw MemIOStream::OutOfMemory(failure);
        } catch (...) {
            throw zntl::Exception(failure);
        }
        return record.toBin(out);
    }

    /// Replaces the content with the elements of the binary form at `data` and returns the number
    /// of bytes consumed. Returns 0, with the set empty, if the elements are of another type.
    ///
    /// Throws zntl::Exception "znsl::Serializable::fromBin() - Failed!" if the length prefix is
    /// incomplete or exceeds the `length` bytes (the set is then empty), or if an element cannot be
    /// read (the set then contains the elements before it). Throws what MemIOStream::setBuffer
    /// throws, with the set unchanged, if the content is not a whole number of records. Safe on any
    /// bytes if the `fromBin` of `T` stays within its length.
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        if (!MemIOStream::canReadBin(data, length)) {
            this->clear();
            throw zntl::Exception(failure);
        }
        MemIOStream record;
        unsigned int const consumed = record.fromBin(data, length);
        this->clear();
        try {
            return readElements(record) ? consumed : 0;
        } catch (...) {
            throw zntl::Exception(failure);
        }
    }

    /// Returns an XML element called `name` that contains each element of the set as an XML element
    /// called `elementName`, and then a newline (the other forms have none). Returns the empty
    /// string if `name` is null.
    virtual std::string toXML(char const* name, char const* elementName) const {
        std::string xml =
            render(name, [=](T const& element) { return element.toXML(elementName); });
        if (name)
            xml += '\n';
        return xml;
    }

    /// Appends the objects of the binary form to `stream`. Returns false if a write throws. The
    /// stream then contains the objects before the failed one, and possibly that one's header.
    bool serialize(MemIOStream& stream) const {
        try {
            appendTo(stream);
            return true;
        } catch (...) {
            return false;
        }
    }

private:
    // Contract: the message names `fromBin` even if `toBin` fails, because programs may compare it.
    static constexpr char const* failure = "znsl::Serializable::fromBin() - Failed!";

    /// For a Struct, returns whether the set's type id fits in 16 bits.
    template <class Element, unsigned int typeId = Element::schema.typeId>
    static constexpr bool fitsSet(Element const* /*element*/) {
        return typeId <= 55535;
    }
    /// For other classes, whose type id is known only at run time.
    static constexpr bool fitsSet(void const* /*element*/) { return true; }

    static int elementTypeId() {
        static_assert(fitsSet(static_cast<T const*>(nullptr)),
                      "the type id of a znsl::Set's elements is at most 55535");
        return static_cast<int>(T().getTypeId());
    }

    void appendTo(MemIOStream& stream) const {
        stream << zntl::Integer(elementTypeId()) << zntl::Integer(static_cast<int>(this->size()));
        for (T const& element : *this)
            stream << element;
    }

    /// The length of the binary form, added up from the lengths of the elements without an
    /// allocation.
    unsigned int measure() const {
        constexpr std::uint64_t header = MemIOStream::recordHeaderSize;
        std::uint64_t length = MemIOStream().getBinLength();
        length += 2 * (header + zntl::Integer(0).getBinLength());
        for (T const& element : *this)
            length += header + element.getBinLength();
        // Unreached: the elements would have 4 GiB.
        if (length > std::numeric_limits<std::uint32_t>::max())
            throw std::length_error("znsl::Set: binary form beyond 32 bits");
        return static_cast<unsigned int>(length);
    }

    bool readElements(MemIOStream& record) {
        zntl::Integer field;
        record >> field;
        if (field.getValue() != elementTypeId())
            return false;
        record >> field;
        // Contract: without elements, none is constructed.
        if (field.getValue() <= 0)
            return true;
        T element;
        for (int remaining = field.getValue(); remaining > 0; --remaining) {
            record >> element;
            this->insert(this->end(), element);
        }
        return true;
    }

    template <class ElementXML>
    std::string render(char const* name, ElementXML elementXML) const {
        if (!name)
            return {};
        std::string content;
        for (T const& element : *this)
            content += elementXML(element);
        return zntl::renderElement(name, content);
    }
};

} // namespace znsl

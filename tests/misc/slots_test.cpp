// Contract: the order of the virtual operations and the layout of objects do not change, because
// programs compiled earlier rely on them. Streams and arrays are checked in their own tests.

#include "misc/zntl_Countdown.h"
#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Serializable.h"
#include "streams/znsl_Set.h"
#include "support/virtual_slot.h"
#include "system/znst_Wait.h"
#include "video/znvl_Resolution.h"
#include "xml/znxml_DomIterator.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <exception>
#include <set>
#include <string>
#include <vector>

using test::virtualSlot;

namespace {

using Slots = std::vector<std::ptrdiff_t>;

/// Returns the virtual table slots of the operations of Serializable. The destructor has slots 0
/// and 1.
template <class Class>
Slots contract() {
    using Plain = std::string (Class::*)() const;
    using Named = std::string (Class::*)(char const*) const;
    return {
        virtualSlot(&Class::getTypeId),
        virtualSlot(&Class::getTypeName),
        virtualSlot(static_cast<Plain>(&Class::toXML)),
        virtualSlot(static_cast<Named>(&Class::toXML)),
        virtualSlot(&Class::fromXML),
        virtualSlot(&Class::getBinLength),
        virtualSlot(&Class::toBin),
        virtualSlot(&Class::fromBin),
        virtualSlot(&Class::toFile),
        virtualSlot(&Class::fromFile),
    };
}

Slots const contractSlots{2, 3, 4, 5, 6, 7, 8, 9, 10, 11};

/// Returns the number of slots of a class, that is, the slot of the first operation that a subclass
/// adds.
template <class Class>
std::ptrdiff_t slotCount() {
    struct Subclass : Class {
        virtual void next() {}
    };
    return virtualSlot(&Subclass::next);
}

/// Returns the offset of a part, such as a base, in an object.
template <class Object, class Part>
std::ptrdiff_t offset(Object const& object, Part const& part) {
    return reinterpret_cast<char const*>(&part) - reinterpret_cast<char const*>(&object);
}

template <class Base, class Class>
std::ptrdiff_t baseOffset(Class const& object) {
    return offset(object, static_cast<Base const&>(object));
}

constexpr std::ptrdiff_t pointer = sizeof(void*);

TEST(Slots, OfTheStorableValue) {
    EXPECT_EQ(contract<znsl::Serializable>(), contractSlots);
    EXPECT_EQ(slotCount<znsl::Serializable>(), 12);
}

TEST(Slots, OfTheInteger) {
    EXPECT_EQ(contract<zntl::Integer>(), contractSlots);
    EXPECT_EQ(slotCount<zntl::Integer>(), 12);
    zntl::Integer const integer(1);
    EXPECT_EQ(baseOffset<znsl::Serializable>(integer), 0);
}

TEST(Slots, OfTheString) {
    EXPECT_EQ(contract<zntl::String>(), contractSlots);
    EXPECT_EQ(virtualSlot(&zntl::String::copyString), 12);
    EXPECT_EQ(slotCount<zntl::String>(), 13);
    EXPECT_EQ(virtualSlot(&zntl::String::iCompare), -1);
    EXPECT_EQ(virtualSlot(&zntl::String::isNumeric), -1);

    zntl::String const text;
    EXPECT_EQ(baseOffset<znsl::Serializable>(text), 0) << "the table of operations comes first";
    EXPECT_EQ(baseOffset<std::string>(text), pointer);
}

TEST(Slots, OfTheResolution) {
    EXPECT_EQ(contract<znvl::Resolution>(), contractSlots);
    EXPECT_EQ(virtualSlot(&znvl::Resolution::fillSerializable), 12);
    EXPECT_EQ(slotCount<znvl::Resolution>(), 13);
    EXPECT_EQ(virtualSlot(&znvl::Resolution::getMax), -1);

    znvl::Resolution const resolution;
    EXPECT_EQ(baseOffset<znsl::Serializable>(resolution), 0);
    EXPECT_EQ(offset(resolution, resolution.width), pointer);
    EXPECT_EQ(offset(resolution, resolution.height),
              pointer + std::ptrdiff_t{sizeof(zntl::Integer)});
    EXPECT_EQ(offset(resolution, resolution.name),
              pointer + 2 * std::ptrdiff_t{sizeof(zntl::Integer)});
}

TEST(Slots, OfTheSet) {
    using Set = znsl::Set<znvl::Resolution>;
    using TwoNames = std::string (Set::*)(char const*, char const*) const;
    EXPECT_EQ(contract<Set>(), contractSlots);
    EXPECT_EQ(virtualSlot(static_cast<TwoNames>(&Set::toXML)), 12);
    EXPECT_EQ(slotCount<Set>(), 13);
    EXPECT_EQ(virtualSlot(&Set::internalTypeName), -1) << "not virtual";
    EXPECT_EQ(virtualSlot(&Set::serialize), -1) << "not virtual";

    Set const set;
    EXPECT_EQ(baseOffset<znsl::Serializable>(set), 0) << "the table of operations comes first";
    EXPECT_EQ(baseOffset<std::set<znvl::Resolution>>(set), pointer);
}

TEST(Slots, OfTheException) {
    EXPECT_EQ(virtualSlot(&zntl::Exception::what), 2);
    EXPECT_EQ(slotCount<zntl::Exception>(), 3);
    zntl::Exception const exception("");
    EXPECT_EQ(baseOffset<std::exception>(exception), 0);
}

TEST(Slots, OfTheWaitableObject) {
    EXPECT_EQ(virtualSlot(&znst::WaitObject::wait), 2);
    EXPECT_EQ(virtualSlot(&znst::WaitObject::waitExclusive), 3);
    EXPECT_EQ(slotCount<znst::WaitObject>(), 4);
}

TEST(Slots, OfTheCountdownAreTheDestructorsAlone) { EXPECT_EQ(slotCount<zntl::Countdown>(), 2); }

TEST(Slots, OfTheDomIteratorAreTheDestructorsAlone) {
    EXPECT_EQ(slotCount<znxml::DomIterator>(), 2);
}

} // namespace

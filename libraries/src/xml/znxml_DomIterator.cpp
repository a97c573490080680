#include "xml/znxml_DomIterator.h"

namespace znxml {

// All operations are out of line, because the library zn::xml defines them again and replaces these
// when a program links it.

DomIterator::DomIterator() = default;

DomIterator::DomIterator(DomIterator const& /*other*/) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign
DomIterator& DomIterator::operator=(DomIterator const& /*other*/) { return *this; }

DomIterator::~DomIterator() = default;

DomIterator DomIterator::parse(zntl::String const& /*document*/) { return {}; }

DomIterator DomIterator::parse(zntl::String const& /*document*/, zntl::String const& /*doctype*/) {
    return {};
}

DomIterator DomIterator::childrenBegin() const { return {}; }

DomIterator DomIterator::childrenEnd() const { return {}; }

DomIterator DomIterator::searchChild(zntl::String const& /*name*/) const { return {}; }

DomIterator DomIterator::findChild(zntl::String const& /*name*/) const { return {}; }

// Contract: false although there is no document, because programs compiled earlier rely on it.
bool DomIterator::atEnd() const { return false; }

bool DomIterator::hasChildren() const { return false; }

unsigned int DomIterator::numChildren() const { return 0; }

unsigned int DomIterator::numChildren(zntl::String const& /*name*/) const { return 0; }

bool DomIterator::isEqual(DomIterator const& /*other*/) const { return false; }

bool DomIterator::operator<(DomIterator const& /*other*/) const { return false; }

bool DomIterator::hasValue() const { return false; }

bool DomIterator::hasAttributes() const { return false; }

bool DomIterator::hasAttribute(zntl::String const& /*name*/) const { return false; }

std::map<zntl::String, zntl::String> DomIterator::attributes() const { return {}; }

zntl::String DomIterator::getName() const { return {}; }

zntl::String DomIterator::getName(zntl::String& /*nameSpace*/) const { return {}; }

zntl::String DomIterator::getValue() const { return {}; }

zntl::String DomIterator::getAttribute(zntl::String const& /*name*/) const { return {}; }

zntl::String DomIterator::toXML() const { return {}; }

void DomIterator::nextSibling() {}

void DomIterator::previousSibling() {}

zntl::String DomIterator::removeDoctype(zntl::String const& /*document*/) { return {}; }

zntl::String DomIterator::addDTD(zntl::String const& /*document*/, zntl::String const& /*dtd*/) {
    return {};
}

void initialize() {}

void uninitialize() {}

zntl::String open(char const* /*name*/) { return {}; }

zntl::String close(char const* /*name*/) { return {}; }

} // namespace znxml

#include "znxml_Builder.h"

#include "znxml_names.h"

#include <cstdint>
#include <cstring>

namespace znxml {

Builder::Builder(Document& document, std::string_view source)
    : document_(document), source_(source) {
    // Enough for a short document of one element, the most common kind, without reallocation.
    document_.elements.reserve(2 + source.size() / 32);
}

/// Converts an offset in the source to an offset in the document's text.
Index Builder::place(std::size_t position) const {
    return static_cast<Index>(document_.text.size() + position - copied_);
}

Span Builder::keep(std::string_view characters) {
    Span const span{static_cast<Index>(document_.allCharacters.size()),
                    static_cast<Index>(characters.size())};
    document_.allCharacters += characters;
    return span;
}

void Builder::copySource(std::size_t end) {
    document_.text += source_.substr(copied_, end - copied_);
    copied_ = end;
}

void Builder::start(std::size_t position, std::string_view name) {
    auto const index = static_cast<Index>(document_.elements.size());
    Element& parent = document_.elements[open_];
    Element element;
    element.xml.begin = place(position);
    element.nameLength = static_cast<Index>(name.size());
    element.value.begin = static_cast<Index>(openText_.size()); // in openText_ while it is open
    element.parent = open_;
    element.previous = parent.lastChild;
    element.firstAttribute = static_cast<Index>(document_.attributes.size());
    if (parent.lastChild != 0)
        document_.elements[parent.lastChild].next = index;
    parent.lastChild = index;
    ++parent.children;
    document_.elements.push_back(element);
    open_ = index;
    openNameEnd_ = position + 1 + name.size();
}

std::string_view Builder::openName() const {
    Element const& element = document_.elements[open_];
    std::size_t const begin = element.xml.begin + 1;
    std::size_t const copied = document_.text.size();
    return begin < copied ? document_.name(open_)
                          : source_.substr(copied_ + begin - copied, element.nameLength);
}

void Builder::addAttribute(std::string_view name, std::string_view value) {
    document_.attributes.push_back({keep(name), keep(value)});
}

bool Builder::addDefaultAttribute(std::string_view name, std::string_view value) {
    // A document type can add long attributes to every short element, so the growth is limited.
    constexpr std::uint64_t mostForEachByte = 16; // the product has more than 32 bits
    addAttribute(name, value);
    copySource(openNameEnd_);
    std::size_t const before = document_.text.size();
    appendAttribute(document_.text, name, value);
    defaults_ += document_.text.size() - before;
    return defaults_ <= mostForEachByte * source_.size() &&
           defaults_ <= maxDocumentSize - source_.size();
}

bool Builder::resolveNames() {
    Element& element = document_.elements[open_];
    auto const first = document_.attributes.begin() + element.firstAttribute;
    for (auto attribute = first; attribute != document_.attributes.end(); ++attribute) {
        if (declaresNamespace(document_.characters(attribute->name)))
            declare(*attribute);
    }
    for (auto attribute = first; attribute != document_.attributes.end(); ++attribute) {
        std::string_view const prefix = prefixOf(document_.characters(attribute->name));
        if (!prefix.empty() && prefix != "xmlns")
            attribute->nameSpace = use(nameSpaceOf(prefix));
    }
    element.nameSpace = use(nameSpaceOf(prefixOf(openName())));
    // Document::xml repeats such declarations for each child, so a long one could make many short
    // children long.
    constexpr std::uint64_t mostForEachByte = 64; // the product has more than 32 bits
    return repeated_ <= mostForEachByte * source_.size();
}

/// Adds up the lengths of the declarations that names use and that outer elements have. Returns
/// `declaration`.
Index Builder::use(Index declaration) {
    if (declaration < document_.declarations.size()) {
        NamespaceDeclaration const& used = document_.declarations[declaration];
        if (used.element != open_)
            repeated_ += used.prefix.length + used.uri.length;
    }
    return declaration;
}

void Builder::declare(Attribute const& attribute) {
    auto const skipped =
        static_cast<Index>(attribute.name.length == std::strlen("xmlns") ? std::strlen("xmlns")
                                                                         : std::strlen("xmlns:"));
    Span const prefix{attribute.name.begin + skipped, attribute.name.length - skipped};
    auto const index = static_cast<Index>(document_.declarations.size());
    std::string const key(document_.characters(prefix));
    Index& innermost = declared_.try_emplace(key, noNamespace).first->second;
    document_.declarations.push_back({prefix, attribute.value, open_, innermost});
    scope_.push_back(index);
    innermost = index;
}

Index Builder::nameSpaceOf(std::string_view prefix) const {
    auto const entry = declared_.find(prefix);
    if (entry == declared_.end() || entry->second == noNamespace)
        return prefix == "xml" ? namespaceOfXml : noNamespace;
    // xmlns="" means that elements without a prefix are in no namespace.
    bool const isEmpty = document_.declarations[entry->second].uri.length == 0;
    return isEmpty ? noNamespace : entry->second;
}

void Builder::end(std::size_t position) {
    Element& element = document_.elements[open_];
    element.xml.length = place(position) - element.xml.begin;
    element.end = static_cast<Index>(document_.elements.size());
    std::size_t const textBegin = element.value.begin;
    element.value = keep(std::string_view(openText_).substr(textBegin));
    openText_.resize(textBegin);
    while (!scope_.empty() && document_.declarations[scope_.back()].element == open_) {
        auto const& declaration = document_.declarations[scope_.back()];
        declared_.find(document_.characters(declaration.prefix))->second = declaration.shadowed;
        scope_.pop_back();
    }
    open_ = element.parent;
}

void Builder::finish() {
    copySource(source_.size());
    document_.elements.front().end = static_cast<Index>(document_.elements.size());
}

} // namespace znxml

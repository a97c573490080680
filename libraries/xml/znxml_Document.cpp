#include "znxml_Document.h"

#include "znxml_names.h"

#include <algorithm>

namespace znxml {

std::string_view Document::characters(Span span) const {
    return std::string_view(allCharacters).substr(span.begin, span.length);
}

std::string_view Document::name(Index element) const {
    Element const& named = elements[element];
    return std::string_view(text).substr(named.xml.begin + 1, named.nameLength);
}

std::string_view Document::localName(Index element) const {
    std::string_view const whole = name(element);
    bool const hasPrefix = elements[element].nameSpace != noNamespace && !prefixOf(whole).empty();
    return hasPrefix ? whole.substr(prefixOf(whole).size() + 1) : whole;
}

std::string_view Document::nameSpace(Index element) const {
    Index const declaration = elements[element].nameSpace;
    if (declaration == noNamespace)
        return {};
    if (declaration == namespaceOfXml)
        return "http://www.w3.org/XML/1998/namespace";
    return characters(declarations[declaration].uri);
}

Index Document::endOfAttributes(Index element) const {
    bool const isLast = element + 1 == elements.size();
    return isLast ? static_cast<Index>(attributes.size()) : elements[element + 1].firstAttribute;
}

Index Document::findAttribute(Index element, std::string_view name) const {
    Index const end = endOfAttributes(element);
    Index attribute = elements[element].firstAttribute;
    while (attribute != end && characters(attributes[attribute].name) != name)
        ++attribute;
    return attribute;
}

Index Document::findChild(Index element, std::string_view name) const {
    Index child = firstChild(element);
    while (child != 0 && this->name(child) != name)
        child = elements[child].next;
    return child;
}

/// The namespace declarations on outer elements that names in this element use.
std::vector<Index> Document::outerDeclarations(Index element) const {
    std::vector<Index> found;
    auto const add = [&](Index declaration) {
        if (declaration < declarations.size() && declarations[declaration].element < element)
            found.push_back(declaration);
    };
    Index const last = elements[element].end - 1;
    for (Index i = element; i <= last; ++i)
        add(elements[i].nameSpace);
    for (Index i = elements[element].firstAttribute; i != endOfAttributes(last); ++i)
        add(attributes[i].nameSpace);
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

std::string Document::xml(Index element) const {
    Span const span = elements[element].xml;
    if (declarations.empty())
        return text.substr(span.begin, span.length);
    std::vector<Index> const outer = outerDeclarations(element);
    Index const nameEnd = 1 + elements[element].nameLength;
    std::string xml(text, span.begin, nameEnd);
    for (Index const index : outer) {
        auto const& declaration = declarations[index];
        std::string name = "xmlns";
        if (declaration.prefix.length != 0)
            name.append(":").append(characters(declaration.prefix));
        appendAttribute(xml, name, characters(declaration.uri));
    }
    return xml.append(text, span.begin + nameEnd, span.length - nameEnd);
}

} // namespace znxml

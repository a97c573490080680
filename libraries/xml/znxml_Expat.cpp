#include "znxml_Expat.h"

#include "znxml_Document.h"

#include <climits>

namespace znxml {

bool Expat::parse(std::string const& source) {
    static_assert(maxDocumentSize <= INT_MAX, "Expat takes lengths as int");
    if (source.size() > maxDocumentSize)
        return false;
    auto const status =
        XML_Parse(parser_, source.data(), static_cast<int>(source.size()), XML_TRUE);
    if (failure_)
        std::rethrow_exception(failure_);
    if (status == XML_STATUS_ERROR && XML_GetErrorCode(parser_) == XML_ERROR_NO_MEMORY)
        throw std::bad_alloc();
    return status == XML_STATUS_OK && !stopped_;
}

} // namespace znxml

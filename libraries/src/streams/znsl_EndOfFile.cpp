#include "streams/znsl_EndOfFile.h"

#include "misc/zntl_Markup.h"

namespace znsl {

unsigned int EndOfFile::getTypeId() const { return typeId; }

std::string EndOfFile::getTypeName() const { return "znsl_EndOfFile"; }

std::string EndOfFile::toXML() const { return toXML("znsl_EndOfFile"); }

std::string EndOfFile::toXML(char const* name) const { return zntl::renderElement(name); }

bool EndOfFile::fromXML(char const* /*xml*/) { return true; }

unsigned int EndOfFile::getBinLength() const { return 0; }

unsigned int EndOfFile::toBin(unsigned char* /*out*/) const { return 0; }

unsigned int EndOfFile::fromBin(unsigned char const* /*data*/, unsigned int /*length*/) {
    return 0;
}

} // namespace znsl

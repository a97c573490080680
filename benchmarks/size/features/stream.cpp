#include "misc/zntl_Integer.h"
#include "streams/znsl_MemIOStream.h"

int main(int count, char**) {
    znsl::MemIOStream stream;
    stream << zntl::Integer(count);
    zntl::Integer read;
    stream >> read;
    return read.getValue();
}

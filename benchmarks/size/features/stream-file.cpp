#include "streams/znsl_MemIOStream.h"

int main(int, char** arguments) {
    znsl::MemIOStream stream;
    return stream.load(arguments[0]) && stream.save(arguments[0]);
}

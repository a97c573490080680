#include "znml_constants_second.h"

#include "system/znml_constants.h"

double const* addressOfSecondPi() { return &znml::PI; }
float const* addressOfSecondFloatPi() { return &znmlf::PI; }

#pragma once

// The addresses of another source file's copies of the constants.
double const* addressOfSecondPi();
float const* addressOfSecondFloatPi();

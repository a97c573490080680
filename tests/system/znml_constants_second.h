#pragma once

// The addresses of the constants in another source file, which has its own copies.
double const* addressOfSecondPi();
float const* addressOfSecondFloatPi();

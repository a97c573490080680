#pragma once

// Where another source file that includes the constants has its copies.
double const* addressOfSecondPi();
float const* addressOfSecondFloatPi();

#include "misc/zntl_Countdown.h"

namespace zntl {

Countdown::~Countdown() = default;

} // namespace zntl

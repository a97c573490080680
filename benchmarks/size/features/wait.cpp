#include "system/znst_Wait.h"

int main(int count, char**) { znst::Wait(static_cast<unsigned int>(count)); }

/* What no program that is linked with the SDK can do without: it is loaded, and ends. */

#include "csdk.h"

/* There is no session, so the handle is not positive. */
int main(void) { return csdk.handle > 0; }

// The adapter as built with older CMPI headers: the tests of the adapter under the object manager
// run once more with it.
#include <cmpidt.h>

static_assert(CMPI_VERSION == 100, "the other edition must come first on the include path");

// Loading and unloading.
//
// The library keeps no state of its own between calls and registers with no
// application framework: loading it runs none of its code and unloading it
// has nothing to release, so a host may dlopen and dlclose it freely.
// Everything lives in the control points and host records that callers pass.
// (tests/module/dlopen_test.cpp loads it as such a host would.)
#include "splinecore/export.h"

#include "qelsr.h"

namespace {

// The version text is a literal of its own, not formed from the build fields.
constexpr LibVersion kLibVersion = {
    6, 1, 137, 818, {'u', '8', '\0', '\0'}, "libqelsru8.so.6.1", "6.1 build 137.56", "Mar 17 2010",
};

}  // namespace

extern "C" const LibVersion* qelsrGetLibVersion(void) { return &kLibVersion; }

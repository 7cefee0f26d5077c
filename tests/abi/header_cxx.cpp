// Compiled as C++: the public header must be usable from C++ as it stands.
#include "qelsr.h"

int qelsrHeaderCxxProbe() { return qelsrGetLibVersion()->minor + qelStatusOk; }

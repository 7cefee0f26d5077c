/* Compiled as strict C99: the public header must stay valid C. */
#include "qelsr.h"

int qelsr_header_c99_probe(void) { return qelsrGetLibVersion()->major + qelStatusOk; }

/* qelsr-demo: a small tour of the library as a front end would use it. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "qelsr.h"

static void printVersion(void) {
  const LibVersion* v = qelsrGetLibVersion();
  printf("%s  version %d.%d (%s), build %d.%d, target %s, built %s\n", v->name, v->major, v->minor,
         v->version, v->majorBuild, v->build, v->targetCpu, v->buildDate);
}

int main(void) {
  printVersion();
  return 0;
}

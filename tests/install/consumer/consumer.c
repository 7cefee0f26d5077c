#include <stdio.h>

#include <qelsr.h>

int main(void) {
  const LibVersion* v = qelsrGetLibVersion();
  printf("%s %s\n", v->name, v->version);
  return v->major == 6 ? 0 : 1;
}

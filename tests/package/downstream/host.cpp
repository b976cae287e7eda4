// A user's program that needs the host only.
#include <sarnum/host/host.h>

int main() {
  CFileLayer layer(nullptr);
  return layer.Open("no such file", 272, 0, 0x80000000UL);
}

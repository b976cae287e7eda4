// A user's program that needs the host only: writes a raster and reads it back.
#include <sarnum/host/host.h>
#include <sarnum/host/standalone.h>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  CFileLayer layer(nullptr);
  float pixel = 2.5F;
  if (layer.Create(argv[1], 1, 1, 7, 273, 7, nullptr, 0) == 0 ||
      layer.WriteRow(&pixel, 0, 0, 1, 1) == 0) {
    std::fprintf(stderr, "%s\n", sarnum::host::raster_failure());
    return 1;
  }
  layer.Close();
  if (layer.Open(argv[1], 272, 0, 0x80000000UL) == 0) {
    return 1;
  }
  const auto* const row = static_cast<const float*>(layer.GetRowAddr(0));
  return row != nullptr && *row == pixel ? 0 : 1;
}

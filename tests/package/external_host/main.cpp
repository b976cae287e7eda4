// Multilooks a raster that only the minimal host knows.
#include <sarnum/sarnum.h>

#include <cstdio>

int main() {
  memory_rasters["in"] = {3, 2, {1.0F, 3.0F, 10.0F, 5.0F, 7.0F, 20.0F}};
  CCustomMeterInfo meter;
  const int status = NoncoherentAccumulationR("out", "in", 2, 2, &meter);
  const MemoryRaster& out = memory_rasters["out"];
  std::printf("status %d, %d x %d pixels, %d module attached\n", status, out.width, out.height,
              attached_modules);
  return status == 1 && out.width == 2 && out.height == 1 &&
                 out.pixels == std::vector<float>{4.0F, 15.0F} && attached_modules == 1
             ? 0
             : 1;
}

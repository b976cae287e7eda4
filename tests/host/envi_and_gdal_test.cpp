// Flat samples where there is GDAL and a limit on files: they are what GDAL takes them for, and
// gone when they could not be stored.
#include <sys/resource.h>

#include <csignal>

#include "failing_allocations.h"
#include "raster_files.h"

namespace {

TEST_F(LayerTest, ReadsWhatGdalWritesAndTheOtherWayRound) {
  for (const GDALDataType type : {GDT_Byte, GDT_UInt16, GDT_Int16, GDT_UInt32, GDT_Int32,
                                  GDT_Float32, GDT_Float64, GDT_CFloat32, GDT_CFloat64}) {
    for (const char* const layout : layouts) {
      make_raster(path_, 5, 4, layout, type);
      const bool is_real = GDALDataTypeIsComplex(type) == 0;
      EXPECT_EQ(open(layer_, path_) != 0, is_real) << type << failure();
      for (int i = 0; i < 4 && is_real; ++i, layer_.ShiftBlock(1, 1)) {
        EXPECT_EQ(row(i), noise(5, i)) << type << ' ' << layout;
      }
    }
  }
  ASSERT_NE(create(layer_, path_, 5, 2), 0);
  EXPECT_NE(layer_.WriteRow(noise(5, 3).data(), 0, 1, 5, 1), 0);
  layer_.Close();
  const GDALDatasetUniquePtr dataset(GDALDataset::Open(path_.c_str()));
  ASSERT_NE(dataset, nullptr);
  std::vector<float> samples(5);
  EXPECT_EQ(dataset->GetRasterBand(1)->RasterIO(GF_Read, 0, 1, 5, 1, samples.data(), 5, 1,
                                                GDT_Float32, 0, 0, nullptr),
            CE_None);
  EXPECT_EQ(samples, noise(5, 3));
}

TEST_F(LayerTest, AFileThatMissesSomethingIsRemovedWithItsHeader) {
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit unlimited;
  getrlimit(RLIMIT_FSIZE, &unlimited);
  for (const int last_row : {0, 999}) {
    const rlimit limit = {2000, unlimited.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_NE(create(layer_, path_, 5, 1000), 0);
    EXPECT_EQ(layer_.WriteRow(noise(5, 3).data(), 0, last_row, 5, 1) != 0, last_row == 0);
    layer_.Close();
    setrlimit(RLIMIT_FSIZE, &unlimited);
    EXPECT_EQ(failure(), "cannot write " + path_ + ": File too large");
    EXPECT_TRUE(folder_.names().empty());
  }
}

TEST_F(LayerTest, NothingIsTouchedBeforeAllStorageIsHad) {
  int created = 0;
  for (int nth = 1; created == 0; ++nth) {
    {
      const FailingAllocations failing(nth, FailingAllocations::Failing::persistently);
      created = layer_.Create(path_.c_str(), 5, 4, 7, 273, 7, nullptr, 0);
    }
    EXPECT_EQ(folder_.names().size(), created != 0 ? 2u : 0u) << nth;
  }
}

}  // namespace

// Multilooking as it is defined, sample by sample.
#pragma once

#include <vector>

namespace oracle {

struct Image {
  int width;
  int height;
  std::vector<float> samples;

  float at(int row, int column) const {
    return samples[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(column)];
  }
};

inline Image multilook(const Image& image, int across, int down) {
  Image means{(image.width + across - 1) / across, (image.height + down - 1) / down, {}};
  for (int r = 0; r < means.height; ++r) {
    for (int c = 0; c < means.width; ++c) {
      double sum = 0.0;
      int count = 0;
      for (int k = 0; k < down; ++k) {
        for (int m = 0; m < across; ++m) {
          if (r * down + k < image.height && c * across + m < image.width) {
            sum += static_cast<double>(image.at(r * down + k, c * across + m));
            ++count;
          }
        }
      }
      means.samples.push_back(static_cast<float>(sum) / static_cast<float>(count));
    }
  }
  return means;
}

}  // namespace oracle

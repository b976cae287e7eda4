#include "tool_run.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace {

std::string content_of(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void send_to_file(int descriptor, const std::string& path) {
  const int handle = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
  dup2(handle, descriptor);
}

}  // namespace

ToolTest::ToolTest() {
  GDALAllRegister();
  // The helpers leave nothing beside the rasters, so that what appears there is the tool's.
  CPLSetConfigOption("GDAL_PAM_ENABLED", "NO");
}

pid_t ToolTest::start(const std::vector<std::string>& arguments, const std::string& out,
                      const std::string& err, long largest_file) const {
  std::vector<char*> words{const_cast<char*>(SARNUM_TOOL)};
  for (const std::string& argument : arguments) {
    words.push_back(const_cast<char*>(argument.c_str()));
  }
  words.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    send_to_file(STDOUT_FILENO, out);
    send_to_file(STDERR_FILENO, err);
    if (largest_file > 0) {
      const auto bytes = static_cast<rlim_t>(largest_file);
      const rlimit limit{bytes, bytes};
      setrlimit(RLIMIT_FSIZE, &limit);
    }
    if (chdir(folder_.path().c_str()) == 0) {
      execv(SARNUM_TOOL, words.data());
    }
    _exit(127);
  }
  return child;
}

ToolRun ToolTest::run(const std::vector<std::string>& arguments, long largest_file) const {
  const std::string out = streams_.file("out");
  const std::string err = streams_.file("err");
  int status = 0;
  waitpid(start(arguments, out, err, largest_file), &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), content_of(out),
          content_of(err)};
}

std::string ToolTest::bytes(const std::string& name) const {
  return content_of(file(name));
}

void ToolTest::put_bytes(const std::string& name, const std::string& content) const {
  std::ofstream(file(name), std::ios::binary) << content;
}

GDALDatasetUniquePtr ToolTest::make(const std::string& name, int width, int height,
                                    GDALDataType type, const SampleAt& sample_at,
                                    const char* driver,
                                    const std::vector<const char*>& options) const {
  std::vector<const char*> list(options);
  list.push_back(nullptr);
  GDALDatasetUniquePtr dataset(GetGDALDriverManager()->GetDriverByName(driver)->Create(
      file(name).c_str(), width, height, 1, type, const_cast<char**>(list.data())));
  std::vector<Sample> row(static_cast<std::size_t>(width));
  for (int y = 0; y < height && sample_at; ++y) {
    for (int x = 0; x < width; ++x) {
      row[static_cast<std::size_t>(x)] = sample_at(x, y);
    }
    EXPECT_EQ(dataset->GetRasterBand(1)->RasterIO(GF_Write, 0, y, width, 1, row.data(), width, 1,
                                                  GDT_CFloat64, 0, 0, nullptr),
              CE_None);
  }
  return dataset;
}

GDALDatasetUniquePtr ToolTest::open(const std::string& name) const {
  GDALDatasetUniquePtr dataset(GDALDataset::Open(file(name).c_str(), GDAL_OF_RASTER));
  if (dataset == nullptr) {
    throw std::runtime_error("cannot open " + name);
  }
  return dataset;
}

Raster ToolTest::read(const std::string& name) const {
  const GDALDatasetUniquePtr dataset = open(name);
  Raster raster{dataset->GetRasterXSize(), dataset->GetRasterYSize(), {}};
  raster.samples.resize(static_cast<std::size_t>(raster.width) *
                        static_cast<std::size_t>(raster.height));
  EXPECT_EQ(dataset->GetRasterBand(1)->RasterIO(GF_Read, 0, 0, raster.width, raster.height,
                                                raster.samples.data(), raster.width, raster.height,
                                                GDT_CFloat64, 0, 0, nullptr),
            CE_None);
  return raster;
}

// Sizes of files are compared with what their headers promise, because GDAL reads the missing end
// of a file of plain samples as zeros and says nothing. Virtual rasters are looked into: they
// describe plain samples themselves, and consist of files that may be short.
#include "host/standalone/missing_samples.h"

#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_minixml.h>
#include <cpl_string.h>
#include <gdal_pam.h>
#include <rawdataset.h>
#include <vrtdataset.h>

#include <cstdint>
#include <exception>
#include <memory>

#include "host/standalone/raster_status.h"
#include "sarnum/host/standalone.h"

namespace sarnum::host {

namespace {

/// Bytes from the first sample to the end of the furthest one that steps of `stride` reach.
std::uint64_t reach(std::int64_t stride, int count) {
  return stride > 0 ? static_cast<std::uint64_t>(stride) * static_cast<std::uint64_t>(count - 1)
                    : 0;
}

std::uint64_t end_of_band(GDALRasterBand& band, std::uint64_t offset, std::int64_t pixel_stride,
                          std::int64_t line_stride) {
  return offset + reach(pixel_stride, band.GetXSize()) + reach(line_stride, band.GetYSize()) +
         static_cast<std::uint64_t>(GDALGetDataTypeSizeBytes(band.GetRasterDataType()));
}

std::string if_too_short(const std::string& name, std::uint64_t size, std::uint64_t needed) {
  return size >= needed ? ""
                        : "'" + name + "' is truncated: it has " + std::to_string(size) +
                              " bytes but its pixels need " + std::to_string(needed) +
                              "; copy or make it again";
}

/// The same of a file by its name; empty when its size is not to be had.
std::string if_file_too_short(const std::string& name, std::uint64_t needed) {
  VSIStatBufL status;
  return VSIStatExL(name.c_str(), &status, VSI_STAT_SIZE_FLAG) != 0
             ? ""
             : if_too_short(name, static_cast<std::uint64_t>(status.st_size), needed);
}

std::string missing_of_virtual_band(VRTRawRasterBand& band) {
  const std::unique_ptr<CPLXMLNode, void (*)(CPLXMLNode*)> xml(band.SerializeToXML("."),
                                                               CPLDestroyXMLNode);
  const auto number = [&xml](const char* element) {
    return CPLAtoGIntBig(CPLGetXMLValue(xml.get(), element, "0"));
  };
  std::string name = CPLGetXMLValue(xml.get(), "SourceFilename", "");
  if (EQUAL(CPLGetXMLValue(xml.get(), "SourceFilename.relativeToVRT", "0"), "1")) {
    const std::string folder = CPLGetPath(band.GetDataset()->GetDescription());
    name = CPLProjectRelativeFilename(folder.c_str(), name.c_str());
  }
  return if_file_too_short(name,
                           end_of_band(band, static_cast<std::uint64_t>(number("ImageOffset")),
                                       number("PixelOffset"), number("LineOffset")));
}

std::string missing_of_band(GDALRasterBand& band, const std::string& name) {
  if (auto* const virtual_band = dynamic_cast<VRTRawRasterBand*>(&band)) {
    return missing_of_virtual_band(*virtual_band);
  }
  const auto* const raw = dynamic_cast<const RawRasterBand*>(&band);
  VSILFILE* const file = raw != nullptr ? raw->GetFPL() : nullptr;
  if (file == nullptr || VSIFSeekL(file, 0, SEEK_END) != 0) {
    return "";
  }
  return if_too_short(
      name, VSIFTellL(file),
      end_of_band(band, raw->GetImgOffset(), raw->GetPixelOffset(), raw->GetLineOffset()));
}

std::string missing_of_layout(GDALDataset& dataset) {
  GDALDataset::RawBinaryLayout layout;
  // A TIFF without any samples (all of them absent on purpose) claims to have them at its start.
  if (!dataset.GetRawBinaryLayout(layout) || layout.nImageOffset == 0) {
    return "";
  }
  return if_file_too_short(layout.osRawFilename,
                           end_of_band(*dataset.GetRasterBand(1), layout.nImageOffset,
                                       layout.nPixelOffset, layout.nLineOffset) +
                               reach(layout.nBandOffset, dataset.GetRasterCount()));
}

std::string missing_of_dataset(GDALDataset& dataset, int depth) {
  constexpr int deepest = 8;
  std::string missing;
  for (int i = 1; i <= dataset.GetRasterCount() && missing.empty(); ++i) {
    missing = missing_of_band(*dataset.GetRasterBand(i), dataset.GetDescription());
  }
  const bool is_raw =
      dataset.GetRasterCount() > 0 && dynamic_cast<RawRasterBand*>(dataset.GetRasterBand(1));
  if (missing.empty() && dataset.GetRasterCount() > 0 && !is_raw) {
    missing = missing_of_layout(dataset);
  }
  if (!EQUAL(dataset.GetDriverName(), "VRT") || depth == deepest) {
    return missing;
  }
  const CPLStringList files(dataset.GetFileList());
  for (int i = 0; i < files.size() && missing.empty(); ++i) {
    if (!EQUAL(files[i], dataset.GetDescription())) {
      const GDALDatasetUniquePtr part(GDALDataset::Open(files[i], GDAL_OF_RASTER));
      if (part != nullptr) {
        forbid_sidecar(*part);
        missing = missing_of_dataset(*part, depth + 1);
      }
    }
  }
  return missing;
}

}  // namespace

void forbid_sidecar(GDALDataset& dataset) {
  if (auto* const pam = dynamic_cast<GDALPamDataset*>(&dataset)) {
    pam->SetPamFlags(pam->GetPamFlags() | GPF_NOSAVE);
  }
}

std::string missing_samples(GDALDataset& dataset) {
  return missing_of_dataset(dataset, 0);
}

const char* missing_samples(const char* path) noexcept {
  try {
    register_drivers_once();
    const CPLErrorHandlerPusher quiet(CPLQuietErrorHandler);
    const GDALDatasetUniquePtr dataset(GDALDataset::Open(path, GDAL_OF_RASTER));
    if (dataset == nullptr) {
      return "";
    }
    forbid_sidecar(*dataset);
    return keep_text(missing_samples(*dataset));
  } catch (const std::exception&) {
    return "out of memory";
  }
}

}  // namespace sarnum::host

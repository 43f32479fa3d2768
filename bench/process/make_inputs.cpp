// make_inputs FOLDER - the JPEG files of the process benchmark, the same bytes on every machine
// with the same libjpeg: 200 of about 2 MB and 200 of about 2 KB. Files that are there are left
// alone.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/stat.h>

// libjpeg's header needs <cstdio> in front of it.
#include <jpeglib.h>

#include "workload.h"

namespace {

constexpr int kComponents = 3;

// Soft waves under grain, as a photograph of a sensor: the grain is what makes the file large.
std::vector<std::uint8_t> Picture(int width, int height, std::uint32_t seed, unsigned grain) {
  std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * height * kComponents);
  std::uint32_t noise = seed * 2654435761U + 1;
  std::size_t at = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < kComponents; ++c) {
        noise = noise * 1664525U + 1013904223U;
        const unsigned ramp =
            static_cast<unsigned>(x * (c + 1) + y * (3 - c) + seed * 16) / 8 % 384;
        const unsigned wave = ramp < 192 ? ramp : 383 - ramp;
        pixels[at++] = static_cast<std::uint8_t>(16 + wave + (noise >> 16) % grain);
      }
    }
  }
  return pixels;
}

bool WriteJpeg(const std::string& name, int width, int height, int quality,
               const std::vector<std::uint8_t>& pixels) {
  const std::string unfinished = name + ".part";
  std::FILE* const file = std::fopen(unfinished.c_str(), "wb");
  if (file == nullptr) return false;
  jpeg_compress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  jpeg_stdio_dest(&jpeg, file);
  jpeg.image_width = static_cast<JDIMENSION>(width);
  jpeg.image_height = static_cast<JDIMENSION>(height);
  jpeg.input_components = kComponents;
  jpeg.in_color_space = JCS_RGB;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, quality, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  while (jpeg.next_scanline < jpeg.image_height) {
    const std::size_t offset = std::size_t{jpeg.next_scanline} * width * kComponents;
    JSAMPROW row = const_cast<JSAMPROW>(&pixels[offset]);
    jpeg_write_scanlines(&jpeg, &row, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  return std::fclose(file) == 0 && std::rename(unfinished.c_str(), name.c_str()) == 0;
}

bool Exists(const std::string& name) {
  struct stat status;
  return stat(name.c_str(), &status) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  struct Kind {
    const char* name;
    int width;
    int height;
    int quality;
    unsigned grain;
  };
  const Kind kinds[] = {{"big", bench::kBigWidth, bench::kBigHeight, 95, 56},
                        {"small", bench::kSmallWidth, bench::kSmallHeight, 85, 32}};
  for (const Kind& kind : kinds) {
    for (std::uint32_t i = 0; i < bench::kInputFiles; ++i) {
      char suffix[32];
      std::snprintf(suffix, sizeof suffix, "/%s-%03u.jpg", kind.name, static_cast<unsigned>(i));
      const std::string name = argv[1] + std::string(suffix);
      if (Exists(name)) continue;
      const auto pixels = Picture(kind.width, kind.height, i, kind.grain);
      if (!WriteJpeg(name, kind.width, kind.height, kind.quality, pixels)) {
        std::perror(name.c_str());
        return 1;
      }
    }
  }
  return 0;
}

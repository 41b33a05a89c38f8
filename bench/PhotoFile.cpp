// vrx-bench-photo FILE: writes the photograph that the benchmarks of pictures measure with.
#include <cstdio>
#include <fstream>

#include "bench/CameraPhoto.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: vrx-bench-photo FILE\n", stderr);
    return 2;
  }
  const auto photo = vrx::bench::CameraPhoto();
  std::ofstream file(argv[1], std::ios::binary);
  file.write(reinterpret_cast<const char*>(photo.data()), static_cast<std::streamsize>(photo.size()));
  return file.flush() ? 0 : 1;
}

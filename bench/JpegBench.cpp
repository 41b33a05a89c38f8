// What the operations on JPEG files cost on a photograph of 16 megapixels: reading tags and thumbnails, and
// edits. Beside the edits stands what the disk alone takes.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include "bench/CameraPhoto.h"
#include "foundation/file/XpFile.h"
#include "foundation/file/XpReplaceFile.h"
#include "foundation/platform/Paths.h"
#include "imaging/codecs/XpImageIoJpeg.h"

namespace {

constexpr double kMegapixels = vrx::bench::kPhotoWidth * vrx::bench::kPhotoHeight / 1e6;

/// The photograph in a folder of its own, in the current one: the folder for temporary files may be no disk.
class PhotoFile {
 public:
  PhotoFile() {
    std::string folder = "vrx-bench-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) std::abort();
    m_folder = std::filesystem::absolute(folder);
    std::ofstream(Name(), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    path = vrx::platform::PathFromNative(Name());
  }
  PhotoFile(const PhotoFile&) = delete;
  PhotoFile& operator=(const PhotoFile&) = delete;
  ~PhotoFile() { std::filesystem::remove_all(m_folder); }

  std::string Name() const { return m_folder / "photo.jpg"; }

  const std::vector<std::uint8_t> bytes = vrx::bench::CameraPhoto();
  XpString path;

 private:
  std::filesystem::path m_folder;
};

const PhotoFile& Photo() {
  static const PhotoFile photo;
  return photo;
}

void Check(benchmark::State& state, bool isDone) {
  if (!isDone) state.SkipWithError("failed");
}

void LoadTags(benchmark::State& state) {
  const XpString path = Photo().path;
  for (auto _ : state) {
    XpImageIoJpeg codec;
    Check(state, codec.LoadTags(path).Get() != nullptr);
  }
}
BENCHMARK(LoadTags)->Unit(benchmark::kMicrosecond);

void LoadThumbnail(benchmark::State& state) {
  const XpString path = Photo().path;
  for (auto _ : state) {
    XpImageIoJpeg codec;
    Check(state, codec.LoadThumbnail(path, {}) != nullptr);
  }
}
BENCHMARK(LoadThumbnail)->Unit(benchmark::kMicrosecond);

void LoadFitted(benchmark::State& state) {
  const XpString path = Photo().path;
  for (auto _ : state) {
    XpImageIoJpeg codec;
    Check(state, codec.LoadFitted(path, {320, 240}, {.toSrgb = true, .applyOrientation = true}) != nullptr);
  }
  state.counters["s/MP"] = benchmark::Counter(static_cast<double>(state.iterations()) * kMegapixels,
                                              benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(LoadFitted)->Unit(benchmark::kMillisecond);

XpDateTime SomeDate(benchmark::State& state) {
  XpDateTime date;
  Check(state, date.SetDateTime(2024, 6, 7, 8, 9, 10));
  return date;
}

void SetModifyDate(benchmark::State& state) {
  const XpString path = Photo().path;
  const XpDateTime date = SomeDate(state);
  for (auto _ : state) {
    XpImageIoJpeg codec;
    Check(state, codec.SetModifyDate(path, date, true) == XpOk);
  }
}
BENCHMARK(SetModifyDate)->Unit(benchmark::kMicrosecond)->UseRealTime();

void SetRotation(benchmark::State& state) {
  const XpString path = Photo().path;
  for (auto _ : state) {
    XpImageIoJpeg codec;
    Check(state, codec.SetRotation(path, 1) == XpOk);
  }
}
BENCHMARK(SetRotation)->Unit(benchmark::kMicrosecond)->UseRealTime();

/// An edit through an open file, which its owner flushes or not.
template <class Edit>
void EditUnflushed(benchmark::State& state, Edit edit) {
  const XpString path = Photo().path;
  for (auto _ : state) {
    XpFile file(path);
    XpImageIoJpeg codec;
    Check(state, file.Open(XpOpenReadWrite, XpShareRead) == XpOk);
    Check(state, edit(codec, file) == XpOk);
    Check(state, file.Close() == XpOk);
  }
}
void DateUnflushed(benchmark::State& state) {
  const XpDateTime date = SomeDate(state);
  EditUnflushed(state, [&](XpImageIoJpeg& codec, XpAbstractFile& file) {
    return codec.WriteModifyDate(file, 0, date, true);
  });
}
BENCHMARK(DateUnflushed)->Unit(benchmark::kMicrosecond)->UseRealTime();
void RotationUnflushed(benchmark::State& state) {
  EditUnflushed(state,
                [](XpImageIoJpeg& codec, XpAbstractFile& file) { return codec.WriteRotation(file, 0, 1); });
}
BENCHMARK(RotationUnflushed)->Unit(benchmark::kMicrosecond)->UseRealTime();

/// The least that an edit in place takes of the disk: twenty bytes, and the flush.
void WriteAndFlush(benchmark::State& state) {
  const XpString path = Photo().path;
  constexpr std::int64_t kPosition = 400;
  const auto* bytes = Photo().bytes.data() + kPosition;
  for (auto _ : state) {
    XpFile file(path);
    Check(state, file.Open(XpOpenReadWrite, XpShareRead) == XpOk);
    Check(state, file.Seek(kPosition, XpSeekStart) == XpOk && file.Write(bytes, 20, nullptr) == XpOk);
    Check(state, file.FlushToDisk() == XpOk);
  }
}
BENCHMARK(WriteAndFlush)->Unit(benchmark::kMicrosecond)->UseRealTime();

void SetRating(benchmark::State& state) {
  const XpString path = Photo().path;
  std::uint32_t rating = 0;
  for (auto _ : state) {
    XpImageIoJpeg codec;
    Check(state, codec.SetRating(path, rating++ % 6) == XpOk);
  }
}
BENCHMARK(SetRating)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The least that a rewrite takes of the disk: all bytes, the flush and the new name.
void ReplaceFile(benchmark::State& state) {
  const XpString path = Photo().path;
  for (auto _ : state) {
    Check(state, XpReplaceFile(path, std::as_bytes(std::span(Photo().bytes))) == XpOk);
  }
}
BENCHMARK(ReplaceFile)->Unit(benchmark::kMillisecond)->UseRealTime();

/// A copy that nothing flushes.
void CopyFile(benchmark::State& state) {
  const std::string name = Photo().Name();
  for (auto _ : state) {
    std::filesystem::copy_file(name, name + ".copy", std::filesystem::copy_options::overwrite_existing);
  }
}
BENCHMARK(CopyFile)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

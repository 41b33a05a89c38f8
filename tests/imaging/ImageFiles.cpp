#include "tests/imaging/ImageFiles.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include <gif_lib.h>
#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

namespace imagefiles {

namespace {

template <class Sample>
Samples Make(int width, int height, int channels, Sample sample) {
  Samples samples{width, height, channels, {}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < channels; ++c) samples.data.push_back(static_cast<std::uint8_t>(sample(x, y, c)));
    }
  }
  return samples;
}

struct TiffFile {
  Bytes bytes;
  std::size_t position = 0;
};

tmsize_t TiffRead(thandle_t handle, void* buffer, tmsize_t count) {
  auto& file = *static_cast<TiffFile*>(handle);
  if (file.position >= file.bytes.size()) return 0;
  const std::size_t part =
      file.bytes.copy(static_cast<char*>(buffer), static_cast<std::size_t>(count), file.position);
  file.position += part;
  return static_cast<tmsize_t>(part);
}

tmsize_t TiffWrite(thandle_t handle, void* buffer, tmsize_t count) {
  auto& file = *static_cast<TiffFile*>(handle);
  const auto size = static_cast<std::size_t>(count);
  if (file.bytes.size() < file.position + size) file.bytes.resize(file.position + size);
  std::memcpy(&file.bytes[file.position], buffer, size);
  file.position += size;
  return count;
}

toff_t TiffSeek(thandle_t handle, toff_t offset, int whence) {
  auto& file = *static_cast<TiffFile*>(handle);
  file.position = static_cast<std::size_t>(offset) + (whence == SEEK_CUR   ? file.position
                                                      : whence == SEEK_END ? file.bytes.size()
                                                                           : 0);
  return file.position;
}

/// The samples of one row, repeated to 16 bits where asked.
std::vector<std::uint8_t> Row(const Samples& samples, int y, int depth) {
  std::vector<std::uint8_t> row;
  const std::uint8_t* in = samples.At(0, y);
  for (int i = 0; i < samples.width * samples.channels; ++i)
    row.insert(row.end(), depth == 16 ? 2u : 1u, in[i]);
  return row;
}

void WriteTile(TIFF* tiff, const Samples& samples, int side, int left, int top) {
  std::vector<std::uint8_t> tile;
  for (int y = top; y < top + side; ++y) {
    for (int x = left; x < left + side; ++x) {
      for (int c = 0; c < samples.channels; ++c) {
        tile.push_back(x < samples.width && y < samples.height ? samples.At(x, y)[c] : std::uint8_t{0});
      }
    }
  }
  TIFFWriteTile(tiff, tile.data(), static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top), 0, 0);
}

void SetTiffFields(TIFF* tiff, const Samples& samples, const TiffForm& form) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, samples.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, samples.height);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples.channels);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, form.depth);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, form.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, form.compression);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, form.orientation);
  if (form.extraSample != 0) {
    const auto kind = static_cast<std::uint16_t>(form.extraSample);
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
  }
  if (form.photometric == PHOTOMETRIC_YCBCR) {
    TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 1, 1);
    TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    TIFFSetField(tiff, TIFFTAG_JPEGQUALITY, 100);
  }
  if (form.photometric == PHOTOMETRIC_PALETTE) {
    std::vector<std::uint16_t> colours[3];
    for (int c = 0; c < 3; ++c) {
      for (int i = 0; i < 256; ++i) colours[c].push_back(static_cast<std::uint16_t>(GifColour(i, c) * 257));
    }
    TIFFSetField(tiff, TIFFTAG_COLORMAP, colours[0].data(), colours[1].data(), colours[2].data());
  }
}

}  // namespace

Samples Noise(int width, int height, int channels) {
  std::mt19937 random(static_cast<unsigned>(width * 31 + height));
  return Make(width, height, channels, [&](int, int, int) { return random() & 0xFF; });
}

Samples Smooth(int width, int height, int channels) {
  return Make(width, height, channels, [&](int x, int y, int c) {
    const int across = x * 200 / width, down = y * 200 / height;
    return 20 + (c == 0 ? across : c == 1 ? down : (across + down) / 2);
  });
}

Bytes Jpeg(const Samples& samples, const JpegForm& form) {
  jpeg_compress_struct encoder{};
  jpeg_error_mgr errors;
  encoder.err = jpeg_std_error(&errors);
  jpeg_create_compress(&encoder);
  unsigned char* out = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&encoder, &out, &size);
  encoder.image_width = static_cast<JDIMENSION>(samples.width);
  encoder.image_height = static_cast<JDIMENSION>(samples.height);
  encoder.input_components = samples.channels;
  encoder.in_color_space = samples.channels == 1 ? JCS_GRAYSCALE : samples.channels == 3 ? JCS_RGB : JCS_CMYK;
  jpeg_set_defaults(&encoder);
  jpeg_set_quality(&encoder, form.quality, TRUE);
  if (form.isAdobeInk) jpeg_set_colorspace(&encoder, JCS_YCCK);
  if (samples.channels == 4 && !form.isAdobeInk) encoder.write_Adobe_marker = FALSE;
  encoder.comp_info[0].h_samp_factor = encoder.comp_info[0].v_samp_factor = form.isSubsampled ? 2 : 1;
  if (samples.channels == 4) encoder.comp_info[3].h_samp_factor = encoder.comp_info[3].v_samp_factor = 1;
  if (form.isProgressive) jpeg_simple_progression(&encoder);
  jpeg_start_compress(&encoder, TRUE);
  for (int y = 0; y < samples.height; ++y) {
    JSAMPROW row = const_cast<JSAMPROW>(samples.At(0, y));
    jpeg_write_scanlines(&encoder, &row, 1);
  }
  jpeg_finish_compress(&encoder);
  jpeg_destroy_compress(&encoder);
  Bytes bytes(reinterpret_cast<char*>(out), size);
  std::free(out);
  return bytes;
}

Bytes Png(const Samples& samples, const PngForm& form) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  Bytes bytes;
  png_set_write_fn(
      png, &bytes,
      [](png_structp p, png_bytep data, png_size_t size) {
        static_cast<Bytes*>(png_get_io_ptr(p))->append(reinterpret_cast<char*>(data), size);
      },
      nullptr);
  png_set_IHDR(png, info, static_cast<png_uint_32>(samples.width), static_cast<png_uint_32>(samples.height),
               form.depth, form.colourType, form.isInterlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
  if (!form.palette.empty()) {
    std::vector<png_color> palette;
    for (std::size_t i = 0; i < form.palette.size(); i += 3) {
      palette.push_back({form.palette[i], form.palette[i + 1], form.palette[i + 2]});
    }
    png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
  }
  if (!form.paletteAlpha.empty()) {
    png_set_tRNS(png, info, form.paletteAlpha.data(), static_cast<int>(form.paletteAlpha.size()), nullptr);
  }
  if (form.key >= 0) {
    const auto value = static_cast<png_uint_16>(form.key);
    const png_color_16 key{0, value, value, value, value};
    png_set_tRNS(png, info, nullptr, 0, &key);
  }
  png_write_info(png, info);
  if (form.depth < 8) png_set_packing(png);
  const int passes = png_set_interlace_handling(png);
  for (int pass = 0; pass < passes; ++pass) {
    for (int y = 0; y < samples.height; ++y) png_write_row(png, Row(samples, y, form.depth).data());
  }
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return bytes;
}

std::uint8_t GifColour(int index, int channel) {
  return static_cast<std::uint8_t>(channel == 0 ? index : channel == 1 ? 255 - index : index * 7);
}

Bytes Gif(const Samples& indices, const GifForm& form) {
  Bytes bytes;
  int error = 0;
  GifFileType* gif = EGifOpen(
      &bytes,
      [](GifFileType* file, const GifByteType* data, int size) {
        static_cast<Bytes*>(file->UserData)
            ->append(reinterpret_cast<const char*>(data), static_cast<std::size_t>(size));
        return size;
      },
      &error);
  EGifSetGifVersion(gif, true);
  std::vector<GifColorType> colours;
  for (int i = 0; i < 256; ++i) colours.push_back({GifColour(i, 0), GifColour(i, 1), GifColour(i, 2)});
  ColorMapObject* map = GifMakeMapObject(256, colours.data());
  EGifPutScreenDesc(gif, form.screenWidth, form.screenHeight, 8, 0, map);
  GraphicsControlBlock control{0, false, 0, form.transparent};
  GifByteType extension[4];
  EGifGCBToExtension(&control, extension);
  EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, sizeof extension, extension);
  EGifPutImageDesc(gif, form.left, form.top, indices.width, indices.height, form.isInterlaced, nullptr);
  const int starts[] = {0, 4, 2, 1}, steps[] = {8, 8, 4, 2};
  for (int pass = 0; pass < (form.isInterlaced ? 4 : 1); ++pass) {
    const int step = form.isInterlaced ? steps[pass] : 1;
    for (int y = starts[pass]; y < indices.height; y += step) {
      EGifPutLine(gif, const_cast<GifPixelType*>(indices.At(0, y)), indices.width);
    }
  }
  GifFreeMapObject(map);
  EGifCloseFile(gif, &error);
  return bytes;
}

Bytes Tiff(const Samples& samples, const TiffForm& form) {
  TiffFile file;
  TIFF* tiff = TIFFClientOpen(
      "test", "w", &file, TiffRead, TiffWrite, TiffSeek, [](thandle_t) { return 0; },
      [](thandle_t handle) { return toff_t{static_cast<TiffFile*>(handle)->bytes.size()}; }, nullptr,
      nullptr);
  SetTiffFields(tiff, samples, form);
  if (form.tile > 0) {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, form.tile);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, form.tile);
    for (int y = 0; y < samples.height; y += form.tile) {
      for (int x = 0; x < samples.width; x += form.tile) WriteTile(tiff, samples, form.tile, x, y);
    }
  } else {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, form.rowsPerStrip);
    for (int y = 0; y < samples.height; ++y) {
      TIFFWriteScanline(tiff, Row(samples, y, form.depth).data(), static_cast<std::uint32_t>(y), 0);
    }
  }
  TIFFClose(tiff);
  return file.bytes;
}

}  // namespace imagefiles

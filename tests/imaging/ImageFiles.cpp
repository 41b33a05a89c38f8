#include "tests/imaging/ImageFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>

#include <gif_lib.h>
#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>
#include <zlib.h>
#include <tiffio.hxx>

namespace imagefiles {

namespace {

Samples Make(int width, int height, int channels, const SampleRule& rule) {
  Samples samples{width, height, channels, {}};
  for (int i = 0; i < width * height * channels; ++i) {
    const int x = i / channels % width, y = i / channels / width;
    samples.data.push_back(static_cast<std::uint8_t>(rule(x, y, i % channels)));
  }
  return samples;
}

/// The samples of one row. With 16 bits every second one lies just below its 8-bit value, and is rounded up
/// to that.
std::vector<std::uint8_t> Row(const Samples& samples, int y, int depth) {
  std::vector<std::uint8_t> row;
  const std::uint8_t* in = samples.At(0, y);
  for (int i = 0; i < samples.width * samples.channels; ++i) {
    const int value = depth == 16 ? in[i] * 257 - (in[i] > 0 ? i % 2 * 100 : 0) : in[i];
    if (depth == 16) row.push_back(static_cast<std::uint8_t>(value >> 8));
    row.push_back(static_cast<std::uint8_t>(value));
  }
  return row;
}

}  // namespace

Samples Noise(int width, int height, int channels) {
  std::mt19937 random(static_cast<unsigned>(width * 31 + height));
  return Make(width, height, channels, [&](int, int, int) { return static_cast<int>(random() & 0xFF); });
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
  jpeg_set_quality(&encoder, 100, TRUE);
  if (form.isAdobeInk) jpeg_set_colorspace(&encoder, JCS_YCCK);
  if (samples.channels == 4 && !form.isAdobeInk) encoder.write_Adobe_marker = FALSE;
  encoder.comp_info[0].h_samp_factor = encoder.comp_info[0].v_samp_factor = 1;
  if (samples.channels == 4) encoder.comp_info[3].h_samp_factor = encoder.comp_info[3].v_samp_factor = 1;
  if (form.isFromCamera) {
    encoder.comp_info[0].h_samp_factor = encoder.comp_info[0].v_samp_factor = 2;
    encoder.restart_interval = 1;
  }
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
    png_set_PLTE(png, info, reinterpret_cast<png_const_colorp>(form.palette.data()),
                 static_cast<int>(form.palette.size() / 3));
  }
  if (!form.paletteAlpha.empty() || form.key >= 0) {
    const auto value = static_cast<png_uint_16>(form.key);
    const png_color_16 key{0, value, value, value, value};
    png_set_tRNS(png, info, form.paletteAlpha.data(), static_cast<int>(form.paletteAlpha.size()), &key);
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

int GifColour(int index, int channel) {
  return channel == 0 ? index : channel == 1 ? 255 - index : index * 7 % 256;
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
  const Samples colours = Make(256, 1, 3, [](int x, int, int c) { return GifColour(x, c); });
  ColorMapObject* map = GifMakeMapObject(256, reinterpret_cast<const GifColorType*>(colours.data.data()));
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
  std::ostringstream out;
  TIFF* tiff = TIFFStreamOpen("test", &out);
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, samples.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, samples.height);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples.channels);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, form.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, form.compression);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, form.isPlanar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_RIGHTTOP);  // which the loader does not follow
  const auto extra = static_cast<std::uint16_t>(form.extraSample);
  if (extra != 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &extra);
  const int side = form.tile;
  if (form.isPlanar) {
    for (int c = 0; c < samples.channels; ++c) {
      const Samples plane =
          Make(samples.width, samples.height, 1, [&](int x, int y, int) { return samples.At(x, y)[c]; });
      for (int y = 0; y < samples.height; ++y) {
        TIFFWriteScanline(tiff, Row(plane, y, 8).data(), static_cast<std::uint32_t>(y),
                          static_cast<std::uint16_t>(c));
      }
    }
  } else if (side == 0) {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, form.compression == COMPRESSION_JPEG ? 8 : 3);
    for (int y = 0; y < samples.height; ++y) {
      TIFFWriteScanline(tiff, Row(samples, y, 8).data(), static_cast<std::uint32_t>(y), 0);
    }
  } else {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, side);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, side);
  }
  for (int top = 0; side > 0 && top < samples.height; top += side) {
    for (int left = 0; left < samples.width; left += side) {
      Samples tile = Make(side, side, samples.channels, [&](int x, int y, int c) {
        const bool isInside = left + x < samples.width && top + y < samples.height;
        return isInside ? samples.At(left + x, top + y)[c] : 0;
      });
      TIFFWriteTile(tiff, tile.data.data(), static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top),
                    0, 0);
    }
  }
  TIFFClose(tiff);
  return out.str();
}

Bytes Little(std::uint32_t value, int bytes) {
  Bytes out;
  for (int i = 0; i < bytes; ++i, value >>= 8) out += static_cast<char>(value);
  return out;
}

Bytes Big(std::uint32_t value, int bytes) {
  const Bytes little = Little(value, bytes);
  return {little.rbegin(), little.rend()};
}

Bytes Bmp(int width, int height, const BmpForm& form) {
  const auto offset = static_cast<std::uint32_t>(54 + form.palette.size());
  const auto colours = form.bits <= 8 ? static_cast<std::uint32_t>(form.palette.size() / 4) : 0;
  return "BM" + Little(0, 8) + Little(offset, 4) + Little(40, 4) +
         Little(static_cast<std::uint32_t>(width), 4) + Little(static_cast<std::uint32_t>(height), 4) +
         Little(1, 2) + Little(static_cast<std::uint32_t>(form.bits), 2) + Little(form.compression, 4) +
         Little(0, 12) + Little(colours, 4) + Little(0, 4) + form.palette + form.data;
}

/// A little-endian grey TIFF whose directory comes before its strips, as in most files of cameras and
/// scanners.
Bytes TiffInOrder(const Samples& samples, int photometric, int rowsPerStrip, bool isDeflated) {
  constexpr std::uint32_t kShort = 3, kLong = 4, kEntries = 9;
  std::vector<Bytes> strips;
  for (int y = 0; y < samples.height; y += rowsPerStrip) {
    const auto rows = static_cast<std::size_t>(std::min(rowsPerStrip, samples.height - y));
    const std::size_t count = rows * static_cast<std::size_t>(samples.width);
    Bytes strip(reinterpret_cast<const char*>(samples.At(0, y)), count);
    if (isDeflated) {
      uLongf length = compressBound(count);
      Bytes packed(length, '\0');
      compress(reinterpret_cast<Bytef*>(packed.data()), &length, samples.At(0, y), count);
      strip = packed.substr(0, length);
    }
    strips.push_back(strip);
  }
  const auto count = static_cast<std::uint32_t>(strips.size());
  const std::uint32_t arrays = 8 + 2 + kEntries * 12 + 4, first = arrays + 2 * 4 * count;
  Bytes offsets, counts, data;
  for (const Bytes& strip : strips) {
    offsets += Little(first + static_cast<std::uint32_t>(data.size()), 4);
    counts += Little(static_cast<std::uint32_t>(strip.size()), 4);
    data += strip;
  }
  const auto entry = [](std::uint32_t tag, std::uint32_t type, std::uint32_t number, std::uint32_t value) {
    return Little(tag, 2) + Little(type, 2) + Little(number, 4) + Little(value, 4);
  };
  const auto array = [&](std::uint32_t tag, const Bytes& numbers, std::uint32_t at) {
    return count == 1 ? Little(tag, 2) + Little(kLong, 2) + Little(1, 4) + numbers
                      : entry(tag, kLong, count, at);
  };
  return Bytes("II*\0", 4) + Little(8, 4) + Little(kEntries, 2) +
         entry(256, kLong, 1, static_cast<std::uint32_t>(samples.width)) +
         entry(257, kLong, 1, static_cast<std::uint32_t>(samples.height)) + entry(258, kShort, 1, 8) +
         entry(259, kShort, 1, isDeflated ? 8 : 1) +
         entry(262, kShort, 1, static_cast<std::uint32_t>(photometric)) + array(273, offsets, arrays) +
         entry(277, kShort, 1, 1) + entry(278, kLong, 1, static_cast<std::uint32_t>(rowsPerStrip)) +
         array(279, counts, arrays + 4 * count) + Little(0, 4) + offsets + counts + data;
}

Loaded Load(Bytes bytes, const vrx::imaging::StillImageRequest& request, bool wantsPixels) {
  XpMemoryFile file;
  file.Attach(bytes.data(), static_cast<std::int64_t>(bytes.size()), false);
  Loaded loaded;
  XpString problem;
  loaded.result = vrx::imaging::ReadStillImage(file, request, wantsPixels ? &loaded.image : nullptr,
                                               loaded.width, loaded.height, &problem);
  loaded.problem = problem.ToNarrow().c_str();
  return loaded;
}

void ExpectErrorOrPart(const Loaded& loaded) {
  EXPECT_FALSE(loaded.problem.empty());
  EXPECT_EQ(loaded.result, loaded.image.isPartial ? XpOk : XpErrInvalidFile);
  EXPECT_EQ(loaded.image.pixmap != nullptr, loaded.image.isPartial);
}

}  // namespace imagefiles

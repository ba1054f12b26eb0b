#pragma once
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "host/draw/UxImage.h"
#include "tests/support/Program.h"

// Media made by the ffmpeg program for the tests, in a folder of their own.
namespace mediatest {

inline testsupport::TempFolder& folder() {
  static testsupport::TempFolder f;
  return f;
}

// Runs the ffmpeg program to make `output` in the folder; its path, or ""
// when the program failed.
inline std::string ffmpeg(const std::string& args, const std::string& output) {
  const std::string path = folder().path(output);
  const std::string command = "ffmpeg -nostdin -v error -y " + args + " '" + path + "' >/dev/null 2>&1";
  return std::system(command.c_str()) == 0 ? path : std::string();
}

// H.264 where the program has it, else the older MPEG-4 video codec; key frames two
// seconds apart at 25 fps, so that most times are reached by decoding on
// from one.
inline std::string encoding() {
  static const std::string codec =
      ffmpeg("-f lavfi -i color=s=64x64:d=0.04 -c:v libx264", "probe.mp4").empty() ? "mpeg4" : "libx264";
  return " -c:v " + codec + " -g 50 -keyint_min 50 -sc_threshold 0 -pix_fmt yuv420p ";
}

// Three seconds at 25 fps: red, green, then blue, a second each.
inline std::string colourClip(const std::string& name, const std::string& size = "320x240",
                              const std::string& options = "") {
  const std::string graph = "color=c=red:s=" + size + ":r=25:d=1[a];color=c=lime:s=" + size +
                            ":r=25:d=1[b];color=c=blue:s=" + size + ":r=25:d=1[c];[a][b][c]concat=n=3";
  return ffmpeg("-f lavfi -i \"" + graph + "\"" + encoding() + "-movflags +faststart " + options, name);
}

// A moving test pattern, three seconds at 25 fps: frames that are not all
// alike, so that half the file holds about half the frames.
inline std::string patternClip(const std::string& name) {
  return ffmpeg("-f lavfi -i testsrc=s=320x240:r=25:d=3" + encoding() + "-movflags +faststart", name);
}

// One frame of (50, 200, 100) in YUV by the `scale` filter's options,
// tagged by `tags`: a colour far enough from the axes that the wrong
// matrix or range shows.
constexpr int probeR = 50, probeG = 200, probeB = 100;
inline std::string colourFrame(const std::string& name, const std::string& size, const std::string& scale,
                               const std::string& tags = "") {
  return ffmpeg("-f lavfi -i color=c=0x32C864:s=" + size + " -vf \"scale=" + scale + ",format=yuv420p\" " + tags +
                    " -frames:v 1" + encoding(),
                name);
}

inline std::string readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// The start of a file as a file of its own.
inline std::string cutShort(const std::string& from, std::size_t bytes, const std::string& name) {
  return folder().write(name, readBytes(from).substr(0, bytes));
}

// Whether the picture's centre is the colour, within what encoding loses.
inline ::testing::AssertionResult centreIs(const Ux::Ptr<UxImage>& image, int r, int g, int b, int tolerance = 8) {
  if (!image) return ::testing::AssertionFailure() << "no picture";
  const uint32_t p = image->row(image->height() / 2)[image->width() / 2];
  const int got[] = {int(p >> 16 & 255), int(p >> 8 & 255), int(p & 255)};
  const int want[] = {r, g, b};
  for (int i = 0; i < 3; ++i)
    if (std::abs(got[i] - want[i]) > tolerance)
      return ::testing::AssertionFailure()
             << "the centre is " << got[0] << "," << got[1] << "," << got[2] << " not " << r << "," << g << "," << b;
  if (p >> 24 != 255) return ::testing::AssertionFailure() << "the centre is not opaque";
  return ::testing::AssertionSuccess();
}

} // namespace mediatest

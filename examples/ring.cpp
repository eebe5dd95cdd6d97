// Reads a ring as a profile: unrolls it into a rectangle, projects that onto a row, and finds the
// peaks.
//
//   ring [FOLDER]
//
// draws the disk of an encoder with slots around it, one of which is missing, prints where, and
// writes ring.png to FOLDER (demo): the disk, the unrolled ring, and the profile.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>

#include "ky/ky.h"
#include "support/drawing.h"
#include "support/picture_file.h"
#include "support/program.h"

namespace {

using Grey = KyImage<KyBW8>;

constexpr int kSide = 300, kSlots = 48, kMissing = 17;
constexpr float kCentre = 150.25f, kSlotInner = 105, kSlotOuter = 127;
constexpr float kRowInner = 109, kRowOuter = 123;  // what is read
constexpr int kColumns = 1440, kRows = 15;
constexpr double kDegreesPerColumn = 360.0 / (kColumns - 1);

// The share of a pixel that lies inside, at a signed distance from an edge.
double Covered(double distance) { return std::clamp(0.5 - distance, 0.0, 1.0); }

// Bright metal with dark slots and a hole, on a dark ground, darker to the lower right, with noise.
Grey Disk() {
  Grey picture = NewImage<KyBW8>(kSide, kSide);
  std::mt19937 random(1);
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      const double dx = x - double{kCentre}, dy = y - double{kCentre}, radius = std::hypot(dx, dy);
      const double turn = std::atan2(dy, dx) / (2 * std::numbers::pi) * kSlots + kSlots;
      const int slot = static_cast<int>(std::floor(turn)) % kSlots;
      const double pitch = 2 * std::numbers::pi * radius / kSlots;
      const double across = (std::abs(turn - std::floor(turn) - 0.5) - 0.25) * pitch;
      const double along = std::max(kSlotInner - radius, radius - kSlotOuter);
      double metal = Covered(std::max(radius - 140, 40 - radius));
      if (slot != kMissing) metal *= 1 - Covered(std::max(across, along));
      const double light = 1 - 0.3 * (x + y) / (2.0 * kSide);
      const double noise = static_cast<double>(random() % 17) - 8;
      picture.SetPixel(static_cast<KyBW8>((45 + 165 * metal) * light + noise), x, y);
    }
  }
  return picture;
}

Grey Unroll(const Grey& disk) {
  KyImage<KyBW16> xTable, yTable;
  Must(ImgSetCircleWarp(kCentre, kCentre, kRows, kRowInner, kRowOuter, kColumns, 0, 360, &xTable,
                        &yTable));
  Grey ring = NewImage<KyBW8>(kColumns, kRows);
  Must(ImgWarp(&disk, &ring, &xTable, &yTable, 0, 0));
  return ring;
}

// The mean level of each column, smoothed.
KyBW8Vector Profile(const Grey& ring) {
  KyBW32Vector sums;
  Must(ImgProjectOnARow(&ring, &sums));
  KyBW8Vector profile(sums.GetNumElements());
  Must(KyGetError());
  std::transform(sums.begin(), sums.end(), profile.begin(),
                 [](KyBW32 sum) { return static_cast<KyBW8>(sum / kRows); });
  Must(ImgConvolBinomial(&profile, &profile, 4));
  return profile;
}

// Slots are valleys: dark.
KyPeaksVector FindSlots(KyBW8Vector& profile) {
  constexpr unsigned kLow = 90, kHigh = 255, kMinAmplitude = 20, kMinArea = 100;
  KyPeaksVector slots;
  Must(ImgGetProfilePeaks(&profile, &slots, kLow, kHigh, kMinAmplitude, kMinArea));
  return slots;
}

// Tells where two slots lie farther apart than one and a half times the usual.
int ReportMissing(const KyPeaksVector& slots) {
  int missing = 0;
  for (unsigned i = 1; i < slots.GetNumElements(); ++i) {
    const double gap = double{slots[i].center} - double{slots[i - 1].center};
    if (gap * kDegreesPerColumn < 1.5 * 360 / kSlots) continue;
    std::printf("a slot is missing at %.1f degrees\n",
                (double{slots[i - 1].center} + gap / 2) * kDegreesPerColumn);
    ++missing;
  }
  return missing;
}

// The disk above; below it, half as wide as they are, the ring and its profile.
KyImage<KyC24> Show(const Grey& disk, const Grey& ring, const KyBW8Vector& profile) {
  constexpr int kMargin = 10, kWidth = kColumns / 2, kStrip = 3 * kRows, kPlot = 130;
  constexpr KyC24 kPaper{250, 250, 247}, kInk{30, 90, 160};
  auto picture = NewImage<KyC24>(kWidth + 2 * kMargin, kSide + kStrip + kPlot + 4 * kMargin);
  Must(ImgOper(KY_OPER_COPY, kPaper, &picture));

  KyROI<KyC24> upper(&picture, (picture.GetWidth() - kSide) / 2, kMargin, kSide, kSide);
  Must(ImgOper(KY_OPER_COPY, &disk, &upper));
  Grey strip = NewImage<KyBW8>(kWidth, kStrip);
  Must(ImgScaleRotate(&ring, 0, 0, 0, 0, 0.5f, float{kStrip} / kRows, 0, &strip, 0));
  KyROI<KyC24> middle(&picture, kMargin, kSide + 2 * kMargin, kWidth, kStrip);
  Must(ImgOper(KY_OPER_COPY, &strip, &middle));

  const int bottom = picture.GetHeight() - kMargin;
  const auto at = [&](int x) {
    return draw::Point{kMargin + x / 2, bottom - profile[static_cast<unsigned>(x)] * kPlot / 256};
  };
  for (int x = 2; x < kColumns; x += 2) draw::Line(picture, at(x - 2), at(x), kInk);
  return picture;
}

void Run(const std::string& folder) {
  const Grey disk = Disk();
  const Grey ring = Unroll(disk);
  KyBW8Vector profile = Profile(ring);
  const KyPeaksVector slots = FindSlots(profile);
  std::printf("%u slots of %d\n", slots.GetNumElements(), kSlots);
  if (ReportMissing(slots) != 1 || slots.GetNumElements() != kSlots - 1)
    throw std::runtime_error("one slot should be missing");

  std::filesystem::create_directories(folder);
  const std::string path = folder + "/ring.png";
  picture::Write(Show(disk, ring, profile), path);
  std::printf("%s\n", path.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[FOLDER]", [&] { Run(argc > 1 ? argv[1] : kOutputFolder); });
}

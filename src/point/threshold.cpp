#include "ky/threshold.h"

#include <algorithm>

#include "foundation/bit_rows.h"
#include "foundation/frame.h"
#include "foundation/kernels/choose_threshold.h"
#include "foundation/map.h"
#include "foundation/stream.h"
#include "point/threshold_rows.h"

namespace {

using ky::BitRows;
using ky::Call;
using ky::CheckCovers;
using ky::ChooseThresholdKernels;
using ky::FromParameters;
using ky::FromRows;
using ky::MapRows;
using ky::Rows;
using ky::RowsIn;
using ky::RowsOf;
using ky::Split;

// Compares with a threshold of 32 bits, which no level reaches when it is above 255.
Split SplitAt(unsigned threshold, KyBW8 low, KyBW8 high) noexcept {
  if (threshold > 255) return {0, low, low};
  return {static_cast<KyBW8>(threshold), low, high};
}

// Runs `single(x)` on the pixels of a row that share their byte with others, and `whole` on the
// rest.
template <class Single, class Whole>
void WalkBits(const BitRows& bits, const Single& single, const Whole& whole) noexcept {
  const std::ptrdiff_t head = bits.Head(), end = head + bits.Whole();
  for (std::ptrdiff_t x = 0; x < head; ++x) single(x);
  if (end > head) whole(head, static_cast<std::size_t>(end - head));
  for (std::ptrdiff_t x = end; x < bits.width; ++x) single(x);
}

KY_ERRORS PackRows(const Rows<const KyBW8>& source, const KyROI<KyBW1>* destination,
                   const Split& split) noexcept {
  const BitRows out(destination, source.width, source.height);
  ky::Input<KyBW8> in;
  if (!in.OpenApart(source, out.bytes)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  const auto kernel = ChooseThresholdKernels().pack;
  for (std::ptrdiff_t y = 0; y < out.bytes.height; ++y) {
    const KyBW8* const levels = in.rows().Row(y);
    KyBW8* const bytes = out.bytes.Row(y);
    WalkBits(
        out,
        [&](std::ptrdiff_t x) {
          KyBW8& byte = bytes[(out.firstBit + x) / 8];
          const int bit = 0x80 >> (out.firstBit + x) % 8;
          const bool set = (levels[x] < split.threshold ? split.low : split.high) != 0;
          byte = static_cast<KyBW8>(set ? byte | bit : byte & ~bit);
        },
        [&](std::ptrdiff_t x, std::size_t n) {
          kernel(bytes + out.WholeByte(), n, levels + x, &split);
        });
  }
  return KY_OK;
}

KY_ERRORS UnpackRows(const KyROI<KyBW1>* source, KyROI<KyBW8>* destination,
                     const Split& split) noexcept {
  const BitRows bits(source);
  Rows<KyBW8> out = RowsOf(destination);
  out.width = bits.width;
  out.height = bits.bytes.height;
  ky::Input<KyBW8> in;
  if (!in.OpenApart(bits.bytes, out)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  const auto kernel = ChooseThresholdKernels().unpack;
  for (std::ptrdiff_t y = 0; y < out.height; ++y) {
    const KyBW8* const bytes = in.rows().Row(y);
    KyBW8* const levels = out.Row(y);
    WalkBits(
        bits,
        [&](std::ptrdiff_t x) {
          const std::ptrdiff_t at = bits.firstBit + x;
          levels[x] = (bytes[at / 8] >> (7 - at % 8) & 1) != 0 ? split.high : split.low;
        },
        [&](std::ptrdiff_t x, std::size_t n) {
          kernel(levels + x, n, bytes + bits.WholeByte(), &split);
        });
  }
  return KY_OK;
}

KY_ERRORS TestThroughLookup(const Rows<const KyC24>& source, const Rows<KyBW8>& out,
                            const ky::ColorBox& box, const KyColorLookup& lookup) noexcept {
  ky::Input<KyC24> in;
  if (!in.Open(source, out)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  const auto within = [](KyBW8 v, KyBW8 least, KyBW8 most) { return v >= least && v <= most; };
  for (std::ptrdiff_t y = 0; y < out.height; ++y)
    for (std::ptrdiff_t x = 0; x < out.width; ++x) {
      // A lookup that writes nothing leaves the colour as it is.
      KyC24 color = in.rows().Row(y)[x];
      // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage): rows of pixels are always filled
      lookup.Transform(in.rows().Row(y)[x], color);
      const bool inside = within(color.c0, box.minimum.c0, box.maximum.c0) &&
                          within(color.c1, box.minimum.c1, box.maximum.c1) &&
                          within(color.c2, box.minimum.c2, box.maximum.c2);
      out.Row(y)[x] = inside ? box.inside : box.outside;
    }
  return KY_OK;
}

}  // namespace

KY_ERRORS ImgThreshold(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                       unsigned int threshold, KyBW8 low, KyBW8 high, float relative) noexcept {
  return ky::CallOn("ImgThreshold", source, destination, [&](const auto& in, const auto& out) {
    if (threshold > 255) {
      ky::Counts counts;
      ky::CountLevels(source, counts);
      ky::ThresholdChoice choice;
      if (const KY_ERRORS error = ky::ChooseThreshold(counts, {}, threshold, relative, choice))
        return ky::FailIn(error, {"ImgHistogramThreshold"});
      threshold = choice.threshold;
    }
    return ky::MapFreshRows(ChooseThresholdKernels().split, out, ky::FromRows(in),
                            ky::FromParameters(SplitAt(threshold, low, high)));
  });
}

KY_ERRORS ImgThreshold(const KyROI<KyBW8>* source, KyROI<KyBW1>* destination,
                       unsigned int threshold) noexcept {
  return Call("ImgThreshold (BW8 to BW1)", [&] {
    if (const KY_ERRORS error = CheckCovers(source, destination)) return error;
    return PackRows(RowsOf(source), destination, SplitAt(threshold, 0, 255));
  });
}

KY_ERRORS ImgThreshold(const KyROI<KyBW1>* source, KyROI<KyBW8>* destination, KyBW8 zero,
                       KyBW8 one) noexcept {
  return Call("ImgThreshold (BW1 to BW8)", [&] {
    if (const KY_ERRORS error = CheckCovers(source, destination)) return error;
    return UnpackRows(source, destination, {0, zero, one});
  });
}

KY_ERRORS ImgThreshold(const KyROI<KyC24>* source, KyROI<KyBW8>* destination, KyC24 minimum,
                       KyC24 maximum, const KyColorLookup* lookup, KyBW8 outside,
                       KyBW8 inside) noexcept {
  return Call("ImgThreshold (C24 to BW8)", [&] {
    if (const KY_ERRORS error = CheckCovers(source, destination)) return error;
    const Rows<const KyC24> in = RowsOf(source);
    const Rows<KyBW8> out = RowsIn(in, destination);
    const ky::ColorBox box{minimum, maximum, outside, inside};
    if (lookup != nullptr) return TestThroughLookup(in, out, box, *lookup);
    return MapRows(ChooseThresholdKernels().box, out, FromRows(in),
                   FromParameters<ky::ColorBox>(box));
  });
}

KY_ERRORS ImgThreshold(const KyROI<KyC24>* source, KyROI<KyBW8>* destination, KyC24 minimum,
                       KyC24 maximum) noexcept {
  return ImgThreshold(source, destination, minimum, maximum, nullptr);
}

KY_ERRORS ImgDoubleThreshold(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                             unsigned int lowThreshold, unsigned int highThreshold, KyBW8 low,
                             KyBW8 middle, KyBW8 high) noexcept {
  return Call("ImgDoubleThreshold (BW8 to BW8)", [&] {
    if (const KY_ERRORS error = CheckCovers(source, destination)) return error;
    // Every level is below a low threshold above 255, and none is above a high one.
    ky::DoubleSplit split{static_cast<KyBW8>(lowThreshold),
                          static_cast<KyBW8>(std::min(highThreshold, 255u)), low, middle, high};
    if (lowThreshold > 255) {
      split.lowThreshold = 0;
      split.middle = low;
    }
    const Rows<const KyBW8> in = RowsOf(source);
    return MapRows(ChooseThresholdKernels().doubleSplit, RowsIn(in, destination), FromRows(in),
                   FromParameters<ky::DoubleSplit>(split));
  });
}

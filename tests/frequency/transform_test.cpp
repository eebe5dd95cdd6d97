// Fourier transforms against sums in double precision.
#include <dlfcn.h>
#include <fftw3.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cmath>
#include <complex>
#include <numbers>
#include <thread>

#include "tests/frequency/numbers.h"

namespace {

using namespace ky::test;  // NOLINT
using Number = std::complex<double>;

std::atomic<int> planned{0}, destroyed{0};

// A function of FFTW's, for one of the same name that stands before it.
template <class F>
F Next(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// The library calls these, which count and pass on.
extern "C" KY_API fftwf_plan fftwf_plan_dft_1d(int n, fftwf_complex* in, fftwf_complex* out,
                                               int sign, unsigned flags) {
  ++planned;
  return Next<decltype(&fftwf_plan_dft_1d)>("fftwf_plan_dft_1d")(n, in, out, sign, flags);
}
extern "C" KY_API void fftwf_destroy_plan(fftwf_plan plan) {
  ++destroyed;
  Next<decltype(&fftwf_destroy_plan)>("fftwf_destroy_plan")(plan);
}

namespace {

// `count` sums of n numbers each, `step` apart; the sums start `apart` apart.
void TransformEach(std::vector<Number>& all, int n, int step, int count, int apart, double sign) {
  std::vector<Number> roots, sums;
  for (int k = 0; k < n; ++k) roots.push_back(std::polar(1.0, sign * 2 * std::numbers::pi * k / n));
  for (int i = 0; i < count; ++i) {
    sums.assign(static_cast<std::size_t>(n), 0);
    for (int u = 0; u < n; ++u)
      for (int x = 0; x < n; ++x)
        sums[std::size_t(u)] += all[std::size_t(i * apart + x * step)] *
                                roots[static_cast<std::size_t>(std::int64_t{u} * x % n)];
    for (int u = 0; u < n; ++u) all[std::size_t(i * apart + u * step)] = sums[std::size_t(u)];
  }
}
std::vector<Number> Reference(std::vector<Number> all, Size size, bool inverse) {
  const double sign = inverse ? 1 : -1;
  TransformEach(all, size.width, 1, size.height, size.width, sign);
  TransformEach(all, size.height, size.width, size.width, 1, sign);
  for (Number& z : all) z /= inverse ? double(size.width) * size.height : 1;
  return all;
}
Number NumberOf(KyBW8 level) { return level; }
Number NumberOf(KyComplex64 z) { return {z.re, z.im}; }

// Checks the promised accuracy.
void ExpectClose(const Picture<KyComplex64>& actual, const std::vector<Number>& expected) {
  double error = 0, total = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    error += std::norm(NumberOf(actual.pixels[i]) - expected[i]);
    total += std::norm(expected[i]);
  }
  const double promised = 1e-6 * std::sqrt(std::log2(std::max(2.0, double(expected.size()))));
  EXPECT_LE(std::sqrt(error), promised * std::sqrt(total));
}

// Sizes with every remainder of tiles, columns at a time, and kinds of prime factors.
std::vector<Size> TransformSizes() {
  std::vector<Size> sizes = {{64, 64},  {128, 32}, {37, 41}, {100, 90}, {1021, 3}, {2, 1009},
                             {1, 1024}, {4096, 1}, {90, 7},  {7, 121},  {243, 5}};
  for (int width = 1; width <= 19; ++width) sizes.push_back({width, 1 + width * 5 % 12});
  return SizesToTry(sizes);
}

// Transforms pictures at many places, which must give the same bits everywhere, and compares with
// the sums. Calls that change their source in place give it to `run` as the destination.
template <class T, class Run>
void CheckTransform(bool inverse, Run run) {
  Random random(1);
  for (const Size size : TransformSizes()) {
    SCOPED_TRACE(std::to_string(size.width) + " x " + std::to_string(size.height));
    const auto picture = RandomPicture<T>(size.width, size.height, random);
    std::vector<Number> numbers;
    for (const T pixel : picture.pixels) numbers.push_back(NumberOf(pixel));
    const std::vector<Number> expected = Reference(numbers, size, inverse);
    Picture<KyComplex64> first;
    ForEachPath([&](const std::string&) {
      for (const Placement place : kPlacements) {
        Canvas<T> source(picture, place, random);
        Canvas<KyComplex64> out(size.width, size.height, kPlacements[random() % 3], random);
        ASSERT_EQ(run(source.roi(), out.roi()), KY_OK);
        EXPECT_TRUE(source.Unchanged());
        EXPECT_TRUE(out.OnlyChanged(*out.roi()));
        if (first.pixels.empty()) {
          first = out.Get();
          ExpectClose(first, expected);
        }
        EXPECT_TRUE(Same(first, out.Get()));
        // In place, or in the same memory a little further on.
        if constexpr (std::is_same_v<T, KyComplex64>) {
          ASSERT_EQ(run(source.roi(), source.roi()), KY_OK);
          EXPECT_TRUE(Same(first, source.Get()));
        }
        Canvas<KyComplex64> memory(size.width + 2, size.height + 1, place, random);
        KyImage<T> image;
        image.Attach(static_cast<T*>(memory.image()->GetPixelPtr(0, 0)), size.width, size.height,
                     memory.image()->GetPitch());
        for (int y = 0; y < size.height; ++y)
          for (int x = 0; x < size.width; ++x) image.SetPixel(picture.At(x, y), x, y);
        KyROI<KyComplex64> over(memory.image(), 1, 1, size.width, size.height);
        ASSERT_EQ(run(&image, &over), KY_OK);
        EXPECT_TRUE(Same(first, Canvas<KyComplex64>::Get(over)));
      }
    });
  }
}

TEST(Transform, OfPixels) {
  CheckTransform<KyBW8>(false, [](auto* source, auto* out) { return ImgSlowDFT(source, out); });
}
TEST(Transform, OfNumbers) {
  for (const auto direction : {IMG_DFT_FORWARD, IMG_DFT_INVERSE})
    CheckTransform<KyComplex64>(direction == IMG_DFT_INVERSE, [=](auto* source, auto* out) {
      return ImgSlowDFT(source, out, direction);
    });
}

TEST(Transform, FastDoesTheSameForPowersOfTwo) {
  Random random(2);
  KyImage<KyBW8> grey;
  KyImage<KyComplex64> slow, fast;
  for (const Size size : {Size{1, 1}, {64, 2}, {1, 512}, {256, 128}}) {
    for (KyImage<KyComplex64>* image : {&slow, &fast}) image->SetSize(size.width, size.height);
    Canvas<KyBW8> source(RandomPicture<KyBW8>(size.width, size.height, random), {}, random);
    ASSERT_EQ(ImgSlowDFT(source.roi(), &slow), KY_OK);
    ASSERT_EQ(ImgFastDFT(source.roi(), &fast), KY_OK);
    EXPECT_TRUE(Same(Canvas<KyComplex64>::Get(slow), Canvas<KyComplex64>::Get(fast)));
    ASSERT_EQ(ImgSlowDFT(&slow, &slow, IMG_DFT_INVERSE), KY_OK);
    ASSERT_EQ(ImgFastDFT(&fast, &fast, IMG_DFT_INVERSE), KY_OK);
    EXPECT_TRUE(Same(Canvas<KyComplex64>::Get(slow), Canvas<KyComplex64>::Get(fast)));
  }
}

TEST(Transform, RestoresGreyPixelsAndIsSymmetric) {
  Random random(3);
  for (const Size size : {Size{512, 512}, {1000, 37}, {331, 240}, {1, 5}, {2048, 16}}) {
    const auto picture = RandomPicture<KyBW8>(size.width, size.height, random);
    Canvas<KyBW8> grey(picture, {3, 1, 2}, random);
    Canvas<KyComplex64> canvas(size.width, size.height, {1, 0, 1}, random);
    ASSERT_EQ(ImgSlowDFT(grey.roi(), canvas.roi()), KY_OK);
    const auto spectrum = canvas.Get();
    for (int v = 0; v < size.height; ++v)
      for (int u = 0; u < size.width; ++u) {
        const int otherU = (size.width - u) % size.width, otherV = (size.height - v) % size.height;
        const KyComplex64 z = spectrum.At(u, v), other = spectrum.At(otherU, otherV);
        if (u != otherU || v != otherV) {
          ASSERT_EQ(z, (KyComplex64{other.re, -other.im}));
        }
      }
    ASSERT_EQ(ImgSlowDFT(canvas.roi(), canvas.roi(), IMG_DFT_INVERSE), KY_OK);
    Canvas<KyBW8> restored(size.width, size.height, {}, random);
    ASSERT_EQ(ImgComplexReal(canvas.roi(), restored.roi()), KY_OK);
    EXPECT_TRUE(Same(picture, restored.Get()));
  }
}

TEST(Transform, Refusals) {
  KyImage<KyBW8> grey(6, 4);
  KyImage<KyComplex64> out(6, 4), power(8, 4);
  const auto unknown = static_cast<IMG_DFT_DIRECTION>(2);
  EXPECT_EQ(ImgFastDFT(&grey, &out), KY_ERROR_NOT_POWER_OF_TWO);
  EXPECT_EQ(ImgFastDFT(&out, &out, unknown), KY_ERROR_NOT_POWER_OF_TWO);
  EXPECT_EQ(ImgFastDFT(&grey, &power), KY_ERROR_SIZE_MISMATCH);
  EXPECT_EQ(ImgFastDFT(&power, &power, unknown), KY_ERROR_UNSUPPORTED_OPERATION);
  EXPECT_EQ(ImgSlowDFT(&out, &out, unknown), KY_ERROR_UNSUPPORTED_OPERATION);
  EXPECT_STREQ(KyGetTrace(0), "ImgSlowDFT (Complex64)");
  KyROI<KyComplex64> noRows(&out, 1, 1, 4, 0);
  EXPECT_EQ(ImgSlowDFT(&noRows, &noRows, IMG_DFT_FORWARD), KY_OK);
  EXPECT_EQ(ImgFastDFT(&noRows, &noRows, IMG_DFT_FORWARD), KY_ERROR_NOT_POWER_OF_TWO);
}

void TransformRow(int n) {
  KyImage<KyComplex64> row(n, 1);
  for (int x = 0; x < n; ++x) row.SetPixel({static_cast<float>(x % 7), 1}, x, 0);
  ASSERT_EQ(ImgSlowDFT(&row, &row, IMG_DFT_FORWARD), KY_OK);
}

TEST(Plans, AreMadeOnceAndTheLastOnesKept) {
  for (int n = 3001; n <= 3032; ++n) TransformRow(n);
  planned = destroyed = 0;
  for (int round = 0; round < 3; ++round)
    for (int n = 3001; n <= 3032; ++n) TransformRow(n);
  EXPECT_EQ(planned, 0);
  TransformRow(3001);  // now 3002 is the one that was not used for longest
  TransformRow(3033);
  EXPECT_EQ(planned, 1);
  EXPECT_EQ(destroyed, 1);
  TransformRow(3001);
  EXPECT_EQ(planned, 1);
  TransformRow(3002);
  EXPECT_EQ(planned, 2);
  EXPECT_EQ(destroyed, 2);
}

// More threads than plans are kept, on sizes of their own and on common ones.
TEST(Threads, EachTransformsAtAnyTime) {
  constexpr int kThreads = 40;
  std::vector<Picture<KyComplex64>> alone(kThreads), together(kThreads);
  const auto run = [](int i, Picture<KyComplex64>& result) {
    Random random(static_cast<unsigned>(i));
    const Size size{i % 3 == 0 ? 60 : 41 + i, 20 + i};
    Canvas<KyComplex64> canvas(RandomPicture<KyComplex64>(size.width, size.height, random), {},
                               random);
    for (int turn = 0; turn < 6; ++turn)
      ImgSlowDFT(canvas.roi(), canvas.roi(), turn % 2 == 0 ? IMG_DFT_FORWARD : IMG_DFT_INVERSE);
    result = canvas.Get();
  };
  for (int i = 0; i < kThreads; ++i) run(i, alone[std::size_t(i)]);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&, i] { run(i, together[std::size_t(i)]); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(alone == together);
}

// A child process has none of the threads that were planning when it was made.
// In a child, the allocators of sanitizers may wait for a lock for ever.
#if !KY_SANITIZED
TEST(Fork, ChildrenTransformWhileThreadsDo) {
  std::atomic<bool> stop{false};
  const auto transform = [](int width) {
    const KyImage<KyBW8> source(width, 8);
    KyImage<KyComplex64> result(width, 8);
    return ImgSlowDFT(&source, &result);
  };
  std::thread busy([&] {
    for (int i = 0; !stop; ++i) transform(100 + i % 400);
  });
  for (int i = 0; i < 20 && !HasFailure(); ++i) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);
      _exit(transform(700 + i) == KY_OK ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  stop = true;
  busy.join();
}
#endif

}  // namespace

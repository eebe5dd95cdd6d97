// Morphology when memory runs out: nothing is written, and the trace names the first step.
#include <gtest/gtest.h>

#include "ky/ky.h"
#include "tests/allocation/failing_new.h"
#include "tests/support/picture.h"

namespace {

using namespace ky::test;  // NOLINT
using Roi = KyROI<KyBW8>;

TEST(Allocation, Morphology) {
  struct Case {
    std::function<KY_ERRORS(Roi* in, Roi* out)> call;
    std::vector<const char*> separate, inPlace;
  };
  const Case cases[] = {
      {[](Roi* in, Roi* out) { return ImgDilateBox(in, out, 2); },
       {"ImgDilate3x3 (BW8)", "ImgDilateBox"},
       {"ImgDilate3x3 (BW8)"}},
      {[](Roi* in, Roi* out) { return ImgErodeBox(in, out, 0, 2); },
       {"ImgErodeY (BW8)", "ImgErodeBox"},
       {"ImgErodeY (BW8)"}},
      {[](Roi* in, Roi* out) { return ImgDilateBox(in, out, 2, 0); }, {"ImgDilateBox"}, {}},
      {[](Roi* in, Roi* out) { return ImgErodeDisk(in, out, 1); },
       {"ImgErodeXY (BW8)", "ImgErodeDisk"},
       {"ImgErodeXY (BW8)"}},
      {[](Roi* in, Roi* out) { return ImgDilateDisk(in, out, 5); },
       {"ImgDilate3x3 (BW8)", "ImgDilateDisk"},
       {"ImgDilate3x3 (BW8)"}},
      {[](Roi* in, Roi* out) { return ImgOpenBox(in, out, 3); },
       {"ImgErode3x3 (BW8)", "ImgErodeBox", "ImgOpenBox"},
       {"ImgErode3x3 (BW8)", "ImgOpenBox"}},
      {[](Roi* in, Roi* out) { return ImgCloseDisk(in, out, 3); },
       {"ImgDilate3x3 (BW8)", "ImgDilateDisk", "ImgCloseDisk"},
       {"ImgDilate3x3 (BW8)", "ImgCloseDisk"}},
      {[](Roi* in, Roi* out) { return ImgMorphoGradientBox(in, out, 1); },
       {"ImgErode3x3 (BW8)", "ImgErodeBox", "ImgMorphoGradientBox"},
       {"ImgErode3x3 (BW8)", "ImgErodeBox", "ImgMorphoGradientBox"}},
  };
  Random random(3);
  Canvas<KyBW8> in(30, 20, {1, 1, 1}, random), out(30, 20, {}, random);
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.separate));
    const auto unchanged = [&] { return in.Unchanged() && out.Unchanged(); };
    out.Put(out.Get());
    CheckAllocationFailures([&] { return c.call(in.roi(), out.roi()); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                            c.separate, unchanged, 2);
    out.Put(out.Get());
    CheckAllocationFailures([&] { return c.call(out.roi(), nullptr); }, KY_ERROR_NOT_ENOUGH_MEMORY,
                            c.inPlace, unchanged, 2);
  }
}

}  // namespace

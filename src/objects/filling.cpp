// Holes of masks.
#include <algorithm>

#include "foundation/frame.h"
#include "foundation/map.h"
#include "ky/objects.h"
#include "objects/connexity.h"
#include "objects/labelling.h"
#include "objects/object_rows.h"

KY_ERRORS ImgFillHoles(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, CONNEXITY connexity,
                       KyBW8 level) noexcept {
  return ky::Call("ImgFillHoles", [&] {
    destination = ky::DestinationOf(source, destination);
    ky::Rows<const KyBW8> in;
    ky::Rows<KyBW8> out;
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
    if (const KY_ERRORS error = ky::CheckConnexity(connexity)) return error;
    if (in.Empty()) return KY_OK;

    // The connected parts of the ground, as objects without levels.
    const CONNEXITY ofGround = connexity == KY_CONNEXITY_8 ? KY_CONNEXITY_4 : KY_CONNEXITY_8;
    const std::ptrdiff_t most = ky::EndsOfRow(in.width);
    ky::Labelling ground;
    ky::Scratch<std::int32_t> ends;
    ky::Scratch<ky::RunLevels> levels;
    if (!ground.Start(in.width, in.height, ofGround, true) || !ends.Allocate(most) ||
        !levels.Allocate(most / 2))
      return KY_ERROR_NOT_ENOUGH_MEMORY;
    std::fill_n(levels.get(), most / 2, ky::RunLevels{});
    const auto findRuns = ky::ChooseObjectKernels().findRuns;
    for (std::ptrdiff_t y = 0; y < in.height; ++y) {
      const std::size_t count =
          findRuns(in.Row(y), static_cast<std::size_t>(in.width), 0, 0, ends.get());
      if (!ground.AddRow(ends.get(), levels.get(), count)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    }
    const KyBW32 parts = ground.Number();
    ky::Scratch<KyObject> measured;
    if (!measured.Allocate(parts)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    ground.Store(measured.get());

    if (SharingOf(in, out) != ky::Sharing::kTheSame)
      if (const KY_ERRORS error = ky::CopyRows(out, ky::FromRows(in))) return error;
    for (std::ptrdiff_t y = 0; y < out.height; ++y) {
      const ky::Run* const runs = ground.RunsOf(y);
      for (std::size_t i = 0; i < ground.CountOf(y); ++i) {
        const KyBW32 label = ground.Labels()[runs[i].label];
        if (measured[static_cast<std::ptrdiff_t>(label) - 1].touches == 0)
          std::fill(out.Row(y) + runs[i].begin, out.Row(y) + runs[i].end, level);
      }
    }
    return KY_OK;
  });
}

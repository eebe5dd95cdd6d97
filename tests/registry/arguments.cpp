#include "tests/registry/arguments.h"

#include <algorithm>

#include "tests/registry/holders.h"

namespace ky::test {

Arguments::Arguments(const Call& call, Draw& draw, const Plan& plan) : call_(call) {
  Context context{.call = call, .draw = draw, .plan = plan};
  arguments_ = call.make(context);
}
Arguments::~Arguments() = default;

Outcome Arguments::Run(const Around& around) const {
  Outcome outcome;
  outcome.result.reserve(64);
  const auto call = [&] { call_.run(call_.function, arguments_, outcome.result); };
  if (around)
    around(call);
  else
    call();
  outcome.status = KyGetError();
  for (int i = 0; i < KyGetTraceCount(); ++i) outcome.trace.push_back(KyGetTrace(i));
  return outcome;
}

std::vector<Bytes> Arguments::State() const {
  std::vector<Bytes> state;
  for (const auto& argument : arguments_) state.push_back(argument->State());
  return state;
}

std::string Arguments::Damage(const std::vector<Bytes>& before, KY_ERRORS status) const {
  std::vector<Bytes> now = State();
  for (std::size_t i = 0; i < size(); ++i) {
    if (now[i] == before[i]) continue;
    bool excused = false;
    for (std::size_t j = 0; j < size(); ++j) {
      const std::string& name = call_.parameters[j].name;
      const bool own = i == j || (arguments_[i]->Memory() != nullptr &&
                                  arguments_[i]->Memory() == arguments_[j]->Memory());
      if (!own || !arguments_[j]->MayChange()) continue;
      const KY_ERRORS partial = call_.Code(Option::Kind::kPartial, name, KY_ERROR_INTERNAL);
      if (status != KY_OK && status != partial && partial != KY_OK) continue;
      if (arguments_[j]->Memory() == nullptr || call_.Find(Option::Kind::kSpills, name) != nullptr)
        excused = true;
      else
        arguments_[j]->Restore(now[i], before[i]);
    }
    // A null destination that stands for the source makes this the destination.
    const bool inPlace = [&] {
      for (std::size_t j = 0; j < size(); ++j)
        if (arguments_[j]->IsNull() &&
            call_.Code(Option::Kind::kNull, call_.parameters[j].name, KY_ERROR_INTERNAL) == KY_OK)
          return status == KY_OK;
      return false;
    }();
    for (std::size_t j = 0; inPlace && j < size(); ++j)
      if (arguments_[j]->Memory() == arguments_[i]->Memory())
        arguments_[j]->Restore(now[i], before[i]);
    if (!excused && now[i] != before[i])
      return call_.parameters[i].name + " changed where it must not";
  }
  return "";
}

bool Arguments::PutSourceIntoResult(bool attach) const {
  for (std::size_t i = 0; i < size(); ++i)
    for (std::size_t j = 0; j < size(); ++j) {
      const std::size_t bytes = arguments_[i]->MayChange() ? 0 : arguments_[i]->PixelBytes();
      if (bytes == 0 || !arguments_[j]->MayChange()) continue;
      void* const memory = arguments_[j]->Array(bytes);
      if (memory == nullptr) continue;
      arguments_[i]->MoveTo(memory, attach);
      return true;
    }
  return false;
}

Plan DrawPlan(const Call& call, Draw& draw, int mostWidth, int mostHeight) {
  Plan plan;
  const Option* const least = call.Find(Option::Kind::kAtLeast, "");
  const auto side = [&](double from, int most) {
    const int first = static_cast<int>(from);
    return draw.In(first, std::max(first, most));
  };
  plan.width = side(least != nullptr ? least->a : 0, mostWidth);
  plan.height = side(least != nullptr ? least->b : 0, mostHeight);
  if (call.Find(Option::Kind::kEvenHeight, "") != nullptr) plan.height -= plan.height % 2;
  plan.sharing = static_cast<Sharing>(draw.Below(3));
  return plan;
}

// A preset, or a grid of any size, mostly one of those that have a way of their own; with an option
// that fixes the size, mostly of 3x3. Many coefficients are 0, so that elements have holes.
Holder<const KyKernel*>::Holder(Context& context)
    : ObjectHolder<const KyKernel>(context, &kernel_) {
  Draw& draw = context.draw;
  if (draw.OneIn(4)) {
    kernel_.SetKernel(static_cast<KERNEL_TYPE>(draw.In(1, 14)));
  } else {
    const bool isFixed = context.Find(Option::Kind::kSize) != nullptr;
    const int side = isFixed ? 3 : 3 + 2 * draw.In(0, 2);
    kernel_.SetSizeX(static_cast<std::int16_t>(context.Hostile(8) ? draw.In(-1, 11) : side));
    const int down = !isFixed && draw.OneIn(4) ? 1 : side;
    kernel_.SetSizeY(static_cast<std::int16_t>(context.Hostile(8) ? draw.In(-1, 11) : down));
    for (unsigned i = 0; i < kernel_.GetAllocatedSize(); ++i) {
      const int eighths = draw.In(-40, 60);
      kernel_.GetDataPtr()[i] = std::abs(eighths) < 15 ? 0.0F : static_cast<float>(eighths) / 8;
    }
  }
  kernel_.SetGain(static_cast<float>(draw.In(-8, 24)) / 8);
  kernel_.SetOffset(static_cast<unsigned>(draw.In(-20, 200)));
  const Option* const rectifier = context.Find(Option::Kind::kRange);
  kernel_.SetRectifier(static_cast<std::int16_t>(context.Hostile(8) ? draw.In(-1, 5)
                                                 : rectifier != nullptr
                                                     ? draw.In(static_cast<int>(rectifier->a), 3)
                                                     : draw.In(0, 3)));
  kernel_.SetOutsideValue(static_cast<unsigned>(draw.In(-20, 300)));
  if (context.Hostile(8)) {
    constexpr float kOdd[] = {std::numeric_limits<float>::quiet_NaN(), 1e30f, -1e30f,
                              std::numeric_limits<float>::infinity()};
    kernel_.SetGain(kOdd[draw.Below(4)]);
  }
}

Bytes Holder<const KyKernel*>::State() const {
  Bytes bytes;
  Append(bytes, kernel_.GetGain());
  for (const int value :
       {int{kernel_.GetSizeX()}, int{kernel_.GetSizeY()}, static_cast<int>(kernel_.GetOffset()),
        int{kernel_.GetRectifier()}, static_cast<int>(kernel_.GetOutsideValue())})
    Append(bytes, value);
  Append(bytes, kernel_.GetDataPtr(), kernel_.GetAllocatedSize());
  return bytes;
}

}  // namespace ky::test

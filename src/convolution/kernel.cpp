#include "ky/kernel.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "foundation/frame.h"

namespace {

// By KERNEL_TYPE, from 1 on.
constexpr float kPresets[][9] = {
    {0, 0, 0, -1, 1, -1, 1, 1, 1},   {0, 0, 0, -1, 0, -1, 1, 1, 1},
    {1, 1, 1, 1, 1, 1, 1, 1, 1},     {-1, 0, 1, -2, 0, 2, -1, 0, 1},
    {-1, -2, -1, 0, 0, 0, 1, 2, 1},  {-1, 0, 1, -1, 0, 1, -1, 0, 1},
    {-1, -1, -1, 0, 0, 0, 1, 1, 1},  {0, 1, 0, 1, -4, 1, 0, 1, 0},
    {1, 1, 1, 1, -8, 1, 1, 1, 1},    {1, 2, 1, 2, 4, 2, 1, 2, 1},
    {1, 1, 1, 1, 0, 1, 1, 1, 1},     {1, 1, 1, 1, 1, 1, 1, 1, 1},
    {0, -1, 0, -1, 5, -1, 0, -1, 0}, {-1, -1, -1, -1, 9, -1, -1, -1, -1},
};
static_assert(std::size(kPresets) == KERNEL_SHARPEN_8);

// A field, with the status cleared.
template <class T>
T Cleared(T field) noexcept {
  KyOk();
  return field;
}

}  // namespace

KyKernel::KyKernel() noexcept { KyOk(); }
KyKernel::KyKernel(std::int16_t sizeX, std::int16_t sizeY, float gain, std::uint32_t offset,
                   std::int16_t rectifier, std::uint32_t outsideValue) noexcept
    : sizeX_(sizeX),
      sizeY_(sizeY),
      gain_(gain),
      offset_(offset),
      rectifier_(rectifier),
      outsideValue_(outsideValue) {
  ky::Call("KyKernel::KyKernel", [&] {
    return Allocate(std::int64_t{sizeX} * sizeY) ? KY_OK : KY_ERROR_NOT_ENOUGH_MEMORY;
  });
}
KyKernel::KyKernel(KERNEL_TYPE type) noexcept { SetKernel(type); }
KyKernel::~KyKernel() { KyOk(); }

std::int16_t KyKernel::GetSizeX() const noexcept { return Cleared(sizeX_); }
std::int16_t KyKernel::GetSizeY() const noexcept { return Cleared(sizeY_); }
float KyKernel::GetGain() const noexcept { return Cleared(gain_); }
std::uint32_t KyKernel::GetOffset() const noexcept { return Cleared(offset_); }
std::int16_t KyKernel::GetRectifier() const noexcept { return Cleared(rectifier_); }
std::uint32_t KyKernel::GetOutsideValue() const noexcept { return Cleared(outsideValue_); }
std::uint32_t KyKernel::GetAllocatedSize() const noexcept { return Cleared(allocatedSize_); }
float* KyKernel::GetDataPtr() const noexcept { return Cleared(data_.get()); }

float KyKernel::SetGain(float gain) noexcept { return Cleared(gain_ = gain); }
std::uint32_t KyKernel::SetOffset(std::uint32_t offset) noexcept {
  return Cleared(offset_ = offset);
}
std::int16_t KyKernel::SetRectifier(std::int16_t rectifier) noexcept {
  return Cleared(rectifier_ = rectifier);
}
std::uint32_t KyKernel::SetOutsideValue(std::uint32_t value) noexcept {
  return Cleared(outsideValue_ = value);
}

// The old array goes first: the coefficients are not kept, and the peak of memory is lower.
bool KyKernel::Allocate(std::int64_t count) noexcept {
  data_.reset();
  allocatedSize_ = 0;
  if (count < 0) return false;
  data_.reset(new (std::nothrow) float[static_cast<std::size_t>(count)]);
  if (data_ == nullptr) return false;
  allocatedSize_ = static_cast<std::uint32_t>(count);
  return true;
}
bool KyKernel::MakeRoom(std::uint32_t count) noexcept {
  return (data_ != nullptr && count <= allocatedSize_) || Allocate(count);
}

const float* KyKernel::Coefficients() const noexcept {
  return std::int64_t{sizeX_} * sizeY_ <= allocatedSize_ ? data_.get() : nullptr;
}

KY_ERRORS KyKernel::SetAllocatedSize(std::uint32_t count) noexcept {
  return ky::Call("KyKernel::SetAllocatedSize",
                  [&] { return MakeRoom(count) ? KY_OK : KY_ERROR_NOT_ENOUGH_MEMORY; });
}

KY_ERRORS KyKernel::SetSize(const char* name, std::int16_t& size, std::int16_t value,
                            std::int16_t other) noexcept {
  return ky::Call(name, [&] {
    const std::int64_t count = std::int64_t{value} * other;
    if (count > allocatedSize_)
      if (const KY_ERRORS error = SetAllocatedSize(static_cast<std::uint32_t>(count))) return error;
    size = value;
    return KY_OK;
  });
}
KY_ERRORS KyKernel::SetSizeX(std::int16_t sizeX) noexcept {
  return SetSize("KyKernel::SetSizeX", sizeX_, sizeX, sizeY_);
}
KY_ERRORS KyKernel::SetSizeY(std::int16_t sizeY) noexcept {
  return SetSize("KyKernel::SetSizeY", sizeY_, sizeY, sizeX_);
}

KY_ERRORS KyKernel::GetKernelData(int x, int y, float& value) const noexcept {
  return ky::Call("KyKernel::GetKernelData", [&] {
    if (Coefficients() == nullptr) return KY_ERROR_KERNEL_DATA;
    if (x < 0 || x >= sizeX_) return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "x");
    if (y < 0 || y >= sizeY_) return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "y");
    value = data_[std::ptrdiff_t{y} * sizeX_ + x];
    return KY_OK;
  });
}
KY_ERRORS KyKernel::SetKernelData(int x, int y, float value) noexcept {
  return ky::Call("KyKernel::SetKernelData", [&] {
    if (Coefficients() == nullptr) return KY_ERROR_KERNEL_DATA;
    if (x < 0 || x >= sizeX_) return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "x");
    if (y < 0 || y >= sizeY_) return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "y");
    data_[std::ptrdiff_t{y} * sizeX_ + x] = value;
    return KY_OK;
  });
}

KY_ERRORS KyKernel::SetGrid(const char* name, std::int16_t size,
                            const float* coefficients) noexcept {
  return ky::Call(name, [&] {
    const std::uint32_t count = static_cast<std::uint32_t>(size * size);
    sizeX_ = sizeY_ = size;
    if (!MakeRoom(count)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    std::copy_n(coefficients, count, data_.get());
    return KY_OK;
  });
}
KY_ERRORS KyKernel::SetKernelData(const float (&coefficients)[9]) noexcept {
  return SetGrid("KyKernel::SetKernelData 3x3", 3, coefficients);
}
KY_ERRORS KyKernel::SetKernelData(const float (&coefficients)[25]) noexcept {
  return SetGrid("KyKernel::SetKernelData 5x5", 5, coefficients);
}
// Shares the name of the 5x5 form.
KY_ERRORS KyKernel::SetKernelData(const float (&coefficients)[49]) noexcept {
  return SetGrid("KyKernel::SetKernelData 5x5", 7, coefficients);
}

KY_ERRORS KyKernel::SetKernel(KERNEL_TYPE type) noexcept {
  return ky::Call("KyKernel::SetKernel", [&] {
    sizeX_ = sizeY_ = 3;
    if (!MakeRoom(9)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    gain_ = 0;
    offset_ = outsideValue_ = 0;
    rectifier_ = 0;
    if (type < KERNEL_PATTERN_1 || type > KERNEL_SHARPEN_8)
      return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "type");
    std::copy_n(kPresets[type - 1], 9, data_.get());
    if (type > KERNEL_PATTERN_3) {
      gain_ = 1;
      rectifier_ = 2;
    }
    return KY_OK;
  });
}

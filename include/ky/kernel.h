/// @file
/// @ingroup convolution
/// Convolution kernels.
#pragma once

#include <cstdint>
#include <memory>
#include <type_traits>

#include "ky/export.h"
#include "ky/status.h"

/// The preset 3x3 kernels, with their rows from top to bottom. Types 1 to 3 have gain 0 and
/// rectifier 0; the others have gain 1 and rectifier 2.
enum KERNEL_TYPE : int {
  KERNEL_PATTERN_1 = 1,      ///< 0 0 0, -1 1 -1, 1 1 1
  KERNEL_PATTERN_2 = 2,      ///< 0 0 0, -1 0 -1, 1 1 1
  KERNEL_PATTERN_3 = 3,      ///< 1 1 1, 1 1 1, 1 1 1
  KERNEL_SOBEL_X = 4,        ///< -1 0 1, -2 0 2, -1 0 1
  KERNEL_SOBEL_Y = 5,        ///< -1 -2 -1, 0 0 0, 1 2 1
  KERNEL_PREWITT_X = 6,      ///< -1 0 1, -1 0 1, -1 0 1
  KERNEL_PREWITT_Y = 7,      ///< -1 -1 -1, 0 0 0, 1 1 1
  KERNEL_LAPLACIAN_4 = 8,    ///< 0 1 0, 1 -4 1, 0 1 0
  KERNEL_LAPLACIAN_8 = 9,    ///< 1 1 1, 1 -8 1, 1 1 1
  KERNEL_BINOMIAL_3X3 = 10,  ///< 1 2 1, 2 4 2, 1 2 1
  KERNEL_RING_3X3 = 11,      ///< 1 1 1, 1 0 1, 1 1 1
  KERNEL_UNIFORM_3X3 = 12,   ///< 1 1 1, 1 1 1, 1 1 1
  KERNEL_SHARPEN_4 = 13,     ///< 0 -1 0, -1 5 -1, 0 -1 0
  KERNEL_SHARPEN_8 = 14,     ///< -1 -1 -1, -1 9 -1, -1 -1 -1
};

namespace ky {
struct KernelView;
}

/// A grid of coefficients, row by row, and the four numbers that make a grey level of the sum r of
/// coefficient times pixel (see ImgConvolKernel):
///
/// - gain: the coefficients are multiplied by it;
/// - rectifier: 0 leaves r as it is, 1 gives max(-r, 0), 2 gives max(r, 0), and 3 gives |r|. Any
///   other value is accepted; ImgConvolKernel says what it does;
/// - offset: a signed number, kept in an unsigned one, that is added after rectifying;
/// - outside value: the level that is assumed outside the source, kept likewise.
///
/// The array of coefficients never shrinks, and a member that makes it grow loses the coefficients.
/// After a failed allocation there is no array; a later array that is too small for the grid counts
/// as none. All members clear the status first, the accessors too. Unless stated otherwise, a
/// failure is traced as "KyKernel::" followed by the member's name.
class KY_API KyKernel {
 public:
  /// Makes a kernel of size 0 x 0 with gain 1, offset 0, rectifier 2, outside value 0 and no array.
  KyKernel() noexcept;
  /// Makes a kernel with room for sizeX * sizeY coefficients, which are not initialised. Error:
  /// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) when their number is negative or memory runs out. Trace:
  /// "KyKernel::KyKernel".
  KyKernel(std::int16_t sizeX, std::int16_t sizeY, float gain, std::uint32_t offset,
           std::int16_t rectifier, std::uint32_t outsideValue) noexcept;
  /// Makes a preset kernel, by SetKernel(type), which sets the status.
  explicit KyKernel(KERNEL_TYPE type) noexcept;
  KyKernel(const KyKernel&) = delete;
  KyKernel& operator=(const KyKernel&) = delete;
  /// Clears the status, as no other destructor of the library does.
  virtual ~KyKernel();

  /// Return the numbers of columns and of rows, and the four numbers above.
  std::int16_t GetSizeX() const noexcept;
  std::int16_t GetSizeY() const noexcept;
  float GetGain() const noexcept;
  std::uint32_t GetOffset() const noexcept;
  std::int16_t GetRectifier() const noexcept;
  std::uint32_t GetOutsideValue() const noexcept;
  /// Returns the number of coefficients that there is room for.
  std::uint32_t GetAllocatedSize() const noexcept;
  /// Returns the coefficients, or null when there is no array.
  float* GetDataPtr() const noexcept;

  /// Sets the number to any value, and returns it.
  float SetGain(float gain) noexcept;
  std::uint32_t SetOffset(std::uint32_t offset) noexcept;
  std::int16_t SetRectifier(std::int16_t rectifier) noexcept;
  std::uint32_t SetOutsideValue(std::uint32_t value) noexcept;

  /// Makes room for at least `count` coefficients. Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).
  KY_ERRORS SetAllocatedSize(std::uint32_t count) noexcept;
  /// Sets the number of columns, or of rows, to any value, and makes room for the grid.
  /// Coefficients keep their places in the array, not in the grid. Error:
  /// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303), which leaves the size as it was. Traces:
  /// "KyKernel::SetAllocatedSize", then "KyKernel::SetSizeX" or "KyKernel::SetSizeY".
  KY_ERRORS SetSizeX(std::int16_t sizeX) noexcept;
  KY_ERRORS SetSizeY(std::int16_t sizeY) noexcept;

  /// Reads or writes coefficient (x, y); (0, 0) is the top left one. Errors: `KY_ERROR_KERNEL_DATA`
  /// (1704) for a kernel without an array, `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for an x
  /// outside the grid, `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012) for such a y.
  KY_ERRORS GetKernelData(int x, int y, float& value) const noexcept;
  KY_ERRORS SetKernelData(int x, int y, float value) noexcept;

  /// Sets a grid of 3 x 3, 5 x 5 or 7 x 7 coefficients, row by row from the top; gain, offset,
  /// rectifier and outside value stay. Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303), when the size
  /// has been set. Trace: "KyKernel::SetKernelData 3x3" for the first form,
  /// "KyKernel::SetKernelData 5x5" for both others.
  KY_ERRORS SetKernelData(const float (&coefficients)[9]) noexcept;
  KY_ERRORS SetKernelData(const float (&coefficients)[25]) noexcept;
  KY_ERRORS SetKernelData(const float (&coefficients)[49]) noexcept;
  /// Does the same with 9, 25 or 49 separate values.
  template <class... Values>
  requires((sizeof...(Values) == 9 || sizeof...(Values) == 25 || sizeof...(Values) == 49) &&
           (std::is_convertible_v<Values, float> && ...)) KY_ERRORS SetKernelData(Values... values)
  noexcept {
    const float coefficients[] = {static_cast<float>(values)...};
    return SetKernelData(coefficients);
  }

  /// Makes the kernel one of the presets; the outside value becomes 0. Errors:
  /// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303); `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for any other
  /// type, which leaves a 3x3 grid of the old coefficients with gain, offset, rectifier and outside
  /// value 0.
  KY_ERRORS SetKernel(KERNEL_TYPE type) noexcept;

 private:
  friend struct ky::KernelView;

  // Null also for an array that is too small for the grid.
  const float* Coefficients() const noexcept;
  bool Allocate(std::int64_t count) noexcept;
  bool MakeRoom(std::uint32_t count) noexcept;
  KY_ERRORS SetSize(const char* name, std::int16_t& size, std::int16_t value,
                    std::int16_t other) noexcept;
  KY_ERRORS SetGrid(const char* name, std::int16_t size, const float* coefficients) noexcept;

  std::int16_t sizeX_ = 0, sizeY_ = 0;
  float gain_ = 1;
  std::uint32_t offset_ = 0;
  std::int16_t rectifier_ = 2;
  std::uint32_t outsideValue_ = 0;
  std::unique_ptr<float[]> data_;
  std::uint32_t allocatedSize_ = 0;
};

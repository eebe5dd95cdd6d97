#include <cstdint>

#include "foundation/arrays.h"
#include "foundation/frame.h"
#include "histogram/counts.h"
#include "histogram/projection_rows.h"
#include "ky/histogram.h"

namespace {

using ky::Rows;

// Gives a vector exactly `count` elements.
KY_ERRORS Resize(KyBW32Vector* sums, int count) noexcept {
  if (const KY_ERRORS error = sums->SetMaxElements(static_cast<unsigned int>(count))) return error;
  return sums->SetNumElements(static_cast<unsigned int>(count));
}
KY_ERRORS Resize(KyVector* sums, int count) noexcept {
  if (const KY_ERRORS error = sums->SetType(ky::kCountVector, count, 0)) return error;
  return sums->SetNbGroup(count);
}

// The frame of all projections: `project(rows, sums)` fills the array of `count` sums.
template <class T, class Vector, class Project>
KY_ERRORS Projection(const char* name, const KyROI<T>* source, Vector* sums,
                     std::ptrdiff_t Rows<const T>::*count, Project project) noexcept {
  return ky::Call(name, [&] {
    Rows<const T> rows;
    if (const KY_ERRORS error = ky::Open(source, rows)) return error;
    if (sums == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    ky::Input<T> in;
    if (!in.OpenApart(rows, ky::ArrayOf(*sums))) return KY_ERROR_NOT_ENOUGH_MEMORY;
    if (const KY_ERRORS error = Resize(sums, static_cast<int>(rows.*count))) return error;
    project(in.rows(), static_cast<std::uint32_t*>(sums->GetDataPtr()));
    return KY_OK;
  });
}

template <class T>
auto ColumnsKernelOf(const ky::ProjectionKernels& kernels) noexcept {
  if constexpr (sizeof(T) == 1)
    return kernels.columns;
  else
    return kernels.columns16;
}
template <class T>
auto RowKernelOf(const ky::ProjectionKernels& kernels) noexcept {
  if constexpr (sizeof(T) == 1)
    return kernels.sums;
  else
    return kernels.sums16;
}

template <class T, class Vector>
KY_ERRORS ProjectOnARow(const char* name, const KyROI<T>* source, Vector* sums) noexcept {
  return Projection(name, source, sums, &Rows<const T>::width,
                    [](const Rows<const T>& rows, std::uint32_t* to) {
                      ky::SumColumns(ColumnsKernelOf<T>(ky::ChooseProjectionKernels()), rows, to);
                    });
}
template <class T, class Vector>
KY_ERRORS ProjectOnAColumn(const char* name, const KyROI<T>* source, Vector* sums) noexcept {
  return Projection(name, source, sums, &Rows<const T>::height,
                    [](const Rows<const T>& rows, std::uint32_t* to) {
                      RowKernelOf<T>(ky::ChooseProjectionKernels())(rows, to);
                    });
}

}  // namespace

KY_ERRORS ImgProjectOnARow(const KyROI<KyBW8>* source, KyBW32Vector* sums) noexcept {
  return ProjectOnARow("ImgProjectOnARow (BW8 Image)", source, sums);
}
KY_ERRORS ImgProjectOnARow(const KyROI<KyBW16>* source, KyBW32Vector* sums) noexcept {
  return ProjectOnARow("ImgProjectOnARow (BW16 Image)", source, sums);
}
KY_ERRORS ImgProjectOnARow(const KyROI<KyBW8>* source, KyVector* sums) noexcept {
  return ProjectOnARow("ImgProjectOnARow (KyVector)", source, sums);
}

KY_ERRORS ImgProjectOnAColumn(const KyROI<KyBW8>* source, KyBW32Vector* sums) noexcept {
  return ProjectOnAColumn("ImgProjectOnAColumn (BW8 Image)", source, sums);
}
KY_ERRORS ImgProjectOnAColumn(const KyROI<KyBW16>* source, KyBW32Vector* sums) noexcept {
  return ProjectOnAColumn("ImgProjectOnAColumn (BW16 Image)", source, sums);
}
KY_ERRORS ImgProjectOnAColumn(const KyROI<KyBW8>* source, KyVector* sums) noexcept {
  return ProjectOnAColumn("ImgProjectOnAColumn", source, sums);
}

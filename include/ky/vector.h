/// @file
/// @ingroup vectors
/// The generic vector: groups of numbers whose type is known only at run time.
#pragma once

#include <cstddef>

#include "ky/export.h"
#include "ky/status.h"

/// A vector of groups of numbers of one type. Its description says which:
///
/// - vector type: 1 and 4, groups of three signed 32-bit integers; 2, single unsigned 32-bit
///   integers (histograms); 3, single unsigned 8-bit integers (lookup tables); 0, described by the
///   rest alone;
/// - data type: 1 unsigned, 2 signed, 4 floating point;
/// - data size: 2, 4, 8 for elements of 8, 16, 32 bits;
/// - use: a tag that functions set and check.
///
/// Typed vectors (KyVectorTemplate) are unrelated to it.
class KY_API KyVector {
 public:
  /// Makes an empty vector without a type or storage.
  KyVector() noexcept = default;
  /// Takes over the contents of `other`, which becomes empty.
  KyVector(KyVector&& other) noexcept;
  KyVector& operator=(KyVector&& other) noexcept;
  virtual ~KyVector();

  /// Returns the address of the first element, or null when the maximum number of groups is 0.
  void* GetDataPtr() const noexcept { return data_; }

  /// Gives the vector one of the types above, use 0, and storage for `maxGroups` groups, all zero
  /// and none in use. A group length of 0 stands for the type's own. Errors:
  /// `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for a type other than 1 to 4,
  /// `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012) and `KY_ERROR_PARAMETER_3_OUT_OF_RANGE` (1013) for
  /// negative numbers, `KY_ERROR_NOT_ENOUGH_MEMORY` (1303); the vector stays as it was then. Clears
  /// the status first, as all members that return it do; a failure of any of them is traced as
  /// "KyVector::" followed by the member's name.
  KY_ERRORS SetType(int vectType, int maxGroups, int groupLength) noexcept;
  /// Does the same for a vector of type 0, described by the arguments. Errors:
  /// `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for a data size other than 2, 4, 8;
  /// `KY_ERROR_PARAMETER_2_OUT_OF_RANGE` (1012) for a negative number of groups,
  /// `KY_ERROR_PARAMETER_3_OUT_OF_RANGE` (1013) for a group length below 1,
  /// `KY_ERROR_PARAMETER_4_OUT_OF_RANGE` (1014) for a data type other than 1, 2, 4, or for floating
  /// point of less than 32 bits; `KY_ERROR_NOT_ENOUGH_MEMORY` (1303).
  KY_ERRORS SetStructure(int dataSize, int maxGroups, int groupLength, int dataType) noexcept;

  /// Sets the number of groups in use. Error: `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) outside
  /// 0..maximum; nothing changes then.
  KY_ERRORS SetNbGroup(int count) noexcept;
  /// Sets the use.
  void SetUse(int use) noexcept { use_ = use; }
  /// Makes room for `bytes` bytes and keeps as much of the contents as fits; the maximum number of
  /// groups becomes the number of whole groups that fit. A vector without a structure has elements
  /// of one byte. Errors: `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for a negative size,
  /// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303); the vector stays as it was then.
  KY_ERRORS Reallocate(int bytes) noexcept;

  /// Returns the number of elements of a group.
  int GetGroupLength() const noexcept { return groupLength_; }
  /// Returns the number of groups in use.
  int GetNbGroup() const noexcept { return nbGroup_; }
  /// Returns the number of groups that there is room for.
  int GetNbMaxGroup() const noexcept { return nbMaxGroup_; }
  /// Return the description; see above.
  int GetDataType() const noexcept { return dataType_; }
  int GetDataSize() const noexcept { return dataSize_; }
  int GetVectType() const noexcept { return vectType_; }
  int GetUse() const noexcept { return use_; }
  /// Returns the number of bytes allocated.
  int GetAllocatedSize() const noexcept { return allocatedSize_; }
  /// Returns whether the vector is of this type.
  bool IsSameVectType(int vectType) const noexcept { return vectType_ == vectType; }

 private:
  KY_ERRORS Restructure(int vectType, int dataSize, int maxGroups, int groupLength,
                        int dataType) noexcept;

  void* data_ = nullptr;
  int allocatedSize_ = 0;
  int vectType_ = 0, dataType_ = 1, dataSize_ = 2, use_ = 0;
  int groupLength_ = 1, nbGroup_ = 0, nbMaxGroup_ = 0;
};

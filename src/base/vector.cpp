#include "ky/vector.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

#include "foundation/frame.h"

namespace {

struct TypeDescription {
  int dataSize, groupLength, dataType;
};

// By vector type, from 1.
constexpr TypeDescription kTypes[] = {{8, 3, 2}, {8, 1, 1}, {2, 1, 1}, {8, 3, 2}};

}  // namespace

KyVector::KyVector(KyVector&& other) noexcept : KyVector() { *this = std::move(other); }

KyVector& KyVector::operator=(KyVector&& other) noexcept {
  if (this == &other) return *this;
  ::operator delete(data_);
  data_ = std::exchange(other.data_, nullptr);
  allocatedSize_ = std::exchange(other.allocatedSize_, 0);
  nbGroup_ = std::exchange(other.nbGroup_, 0);
  nbMaxGroup_ = std::exchange(other.nbMaxGroup_, 0);
  vectType_ = other.vectType_;
  dataType_ = other.dataType_;
  dataSize_ = other.dataSize_;
  use_ = other.use_;
  groupLength_ = other.groupLength_;
  return *this;
}

KyVector::~KyVector() { ::operator delete(data_); }

KY_ERRORS KyVector::SetType(int vectType, int maxGroups, int groupLength) noexcept {
  return ky::Call("KyVector::SetType", [&] {
    if (vectType < 1 || vectType > 4)
      return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "vectType");
    if (maxGroups < 0) return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "maxGroups");
    if (groupLength < 0) return ky::OutOfRange(KY_ERROR_PARAMETER_3_OUT_OF_RANGE, "groupLength");
    const TypeDescription& type = kTypes[vectType - 1];
    return Restructure(vectType, type.dataSize, maxGroups,
                       groupLength == 0 ? type.groupLength : groupLength, type.dataType);
  });
}

KY_ERRORS KyVector::SetStructure(int dataSize, int maxGroups, int groupLength,
                                 int dataType) noexcept {
  return ky::Call("KyVector::SetStructure", [&] {
    if (dataSize != 2 && dataSize != 4 && dataSize != 8)
      return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "dataSize");
    if (maxGroups < 0) return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "maxGroups");
    if (groupLength < 1) return ky::OutOfRange(KY_ERROR_PARAMETER_3_OUT_OF_RANGE, "groupLength");
    if (dataType != 1 && dataType != 2 && !(dataType == 4 && dataSize == 8))
      return ky::OutOfRange(KY_ERROR_PARAMETER_4_OUT_OF_RANGE, "dataType");
    return Restructure(0, dataSize, maxGroups, groupLength, dataType);
  });
}

KY_ERRORS KyVector::Restructure(int vectType, int dataSize, int maxGroups, int groupLength,
                                int dataType) noexcept {
  // Both factors fit 31 bits, so 64 bits hold the product.
  const std::int64_t elements = std::int64_t{maxGroups} * groupLength;
  if (elements > INT_MAX / (dataSize / 2)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  const int bytes = static_cast<int>(elements) * (dataSize / 2);
  void* data = nullptr;
  if (bytes > 0) {
    data = ::operator new(static_cast<std::size_t>(bytes), std::nothrow);
    if (data == nullptr) return KY_ERROR_NOT_ENOUGH_MEMORY;
    std::memset(data, 0, static_cast<std::size_t>(bytes));
  }
  ::operator delete(data_);
  data_ = data;
  allocatedSize_ = bytes;
  vectType_ = vectType;
  dataType_ = dataType;
  dataSize_ = dataSize;
  use_ = 0;
  groupLength_ = groupLength;
  nbGroup_ = 0;
  nbMaxGroup_ = maxGroups;
  return KY_OK;
}

KY_ERRORS KyVector::SetNbGroup(int count) noexcept {
  return ky::Call("KyVector::SetNbGroup", [&] {
    if (count < 0 || count > nbMaxGroup_)
      return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "count");
    nbGroup_ = count;
    return KY_OK;
  });
}

KY_ERRORS KyVector::Reallocate(int bytes) noexcept {
  return ky::Call("KyVector::Reallocate", [&] {
    if (bytes < 0) return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "bytes");
    const std::int64_t groupBytes = std::int64_t{groupLength_} * (dataSize_ / 2);
    void* data = nullptr;
    if (bytes >= groupBytes) {
      data = ::operator new(static_cast<std::size_t>(bytes), std::nothrow);
      if (data == nullptr) return KY_ERROR_NOT_ENOUGH_MEMORY;
      const int kept = std::min(bytes, allocatedSize_);
      if (kept > 0) std::memcpy(data, data_, static_cast<std::size_t>(kept));
      std::memset(static_cast<char*>(data) + kept, 0, static_cast<std::size_t>(bytes - kept));
    }
    ::operator delete(data_);
    data_ = data;
    allocatedSize_ = data != nullptr ? bytes : 0;
    nbMaxGroup_ = static_cast<int>(allocatedSize_ / groupBytes);
    nbGroup_ = std::min(nbGroup_, nbMaxGroup_);
    return KY_OK;
  });
}

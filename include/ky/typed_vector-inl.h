/// @file
/// The members of KyVectorTemplate, for the one source file of a program or library that
/// instantiates it: `template class KyVectorTemplate<Record>;`.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "ky/typed_vector.h"

namespace ky {

static_assert(std::endian::native == std::endian::little, "files hold the bytes as in memory");

inline KY_ERRORS FailVector(KY_ERRORS error, const char* name) noexcept {
  KySetError(error);
  return KyTraceError(name);
}

struct VectorFileHeader {
  char bytes[4];
};

constexpr VectorFileHeader HeaderOf(KyBW8 signature, KyBW8 version) noexcept {
  constexpr int kMagic = 'Q';
  return {{static_cast<char>(kMagic), static_cast<char>(signature), static_cast<char>(version),
           static_cast<char>(kMagic ^ signature ^ version)}};
}

// Opens a file to be read ("rb") or replaced ("wb"); null when that is impossible. Pipes are
// refused: nobody may ever come to their other end.
inline std::FILE* OpenFile(const char* name, const char* mode) noexcept {
  if (name == nullptr) return nullptr;
  const int access = mode[0] == 'r' ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC;
  constexpr int kReadAndWriteForAll = 0666;
  const int descriptor =
      open(name, access | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, kReadAndWriteForAll);
  if (descriptor < 0) return nullptr;
  struct stat status;
  // Devices wait for their data as usual.
  const bool usable = fstat(descriptor, &status) == 0 && !S_ISFIFO(status.st_mode) &&
                      fcntl(descriptor, F_SETFL, access & O_ACCMODE) == 0;
  std::FILE* const file = usable ? fdopen(descriptor, mode) : nullptr;
  if (file == nullptr) close(descriptor);
  return file;
}

// Opens a file, gives it to `body`, and closes it whatever that returns.
template <class Body>
KY_ERRORS WithFile(const char* name, const char* mode, Body&& body) noexcept {
  std::FILE* const file = OpenFile(name, mode);
  if (file == nullptr) return KY_ERROR_FILE_OPEN;
  const KY_ERRORS error = std::forward<Body>(body)(file);
  const bool closed = std::fclose(file) == 0;
  return error == KY_OK && !closed ? KY_ERROR_FILE_CLOSE : error;
}

// The bytes from the stream's position to the end of its file; the greatest number when it is not a
// regular file, so that nobody knows.
inline std::uint64_t BytesLeft(std::FILE* stream) noexcept {
  struct stat status;
  const int descriptor = fileno(stream);
  const off_t position = ftello(stream);
  if (descriptor < 0 || position < 0 || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
    return UINT64_MAX;
  return static_cast<std::uint64_t>(std::max<off_t>(status.st_size - position, 0));
}

}  // namespace ky

// What precedes the elements in memory, so that an assignment can set an array aside without
// allocating anything.
template <class T>
struct alignas(std::max_align_t) KyVectorTemplate<T>::Array {
  Array* next;
  unsigned int count;
};

template <class T, bool kPlain>
thread_local constinit T KyPlaceHolder<T, kPlain>::m_PlaceHolder{};
template <class T>
T& KyPlaceHolder<T, false>::m_PlaceHolder = T::StandIn();

template <class T>
KyVectorTemplate<T>::KyVectorTemplate(KyVectorTemplate&& other) noexcept {
  *this = other;
}

template <class T>
KyVectorTemplate<T>::~KyVectorTemplate() {
  Release(data_, count_);
  while (former_ != nullptr) {
    Array* const array = std::exchange(former_, former_->next);
    Release(reinterpret_cast<T*>(array + 1), array->count);
  }
}

template <class T>
KyVectorTemplate<T>& KyVectorTemplate<T>::operator=(KyVectorTemplate& other) noexcept {
  if (this == &other) return *this;
  if (data_ != nullptr) {
    Array* const array = ArrayOf(data_);
    *array = {former_, count_};
    former_ = array;
  }
  TakeArray(other);
  return *this;
}

template <class T>
KyVectorTemplate<T>& KyVectorTemplate<T>::operator=(KyVectorTemplate&& other) noexcept {
  if (this == &other) return *this;
  Release(data_, count_);
  TakeArray(other);
  return *this;
}

template <class T>
void KyVectorTemplate<T>::TakeArray(KyVectorTemplate& other) noexcept {
  count_ = std::exchange(other.count_, 0);
  capacity_ = std::exchange(other.capacity_, 0);
  data_ = std::exchange(other.data_, nullptr);
}

// Uninitialised room for elements; null when it cannot be had.
template <class T>
T* KyVectorTemplate<T>::Allocate(unsigned int count) noexcept {
  static_assert(alignof(T) <= alignof(Array));
  const std::uint64_t bytes = sizeof(Array) + std::uint64_t{count} * sizeof(T);
  if (bytes > PTRDIFF_MAX) return nullptr;
  void* const memory = ::operator new(static_cast<std::size_t>(bytes), std::nothrow);
  return memory != nullptr ? reinterpret_cast<T*>(new (memory) Array + 1) : nullptr;
}

template <class T>
typename KyVectorTemplate<T>::Array* KyVectorTemplate<T>::ArrayOf(T* data) noexcept {
  return reinterpret_cast<Array*>(data) - 1;
}

template <class T>
void KyVectorTemplate<T>::Release(T* data, unsigned int count) noexcept {
  if (data == nullptr) return;
  std::destroy_n(data, count);
  ::operator delete(ArrayOf(data));
}

template <class T>
T& KyVectorTemplate<T>::Missing() noexcept {
  ky::FailVector(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "KyVector::operator[]");
  KyNameParameter("index");
  T& element = KyPlaceHolder<T>::m_PlaceHolder;
  if constexpr (std::is_trivially_copyable_v<T>) element = T();
  return element;
}

// Exchanges the array for one of `capacity` elements, and takes the first `kept` along.
template <class T>
KY_ERRORS KyVectorTemplate<T>::Replace(unsigned int capacity, unsigned int kept) noexcept {
  T* data = nullptr;
  if (capacity > 0) {
    data = Allocate(capacity);
    if (data == nullptr)
      return ky::FailVector(KY_ERROR_NOT_ENOUGH_MEMORY, "KyVector::SetMaxElements");
  }
  std::uninitialized_move_n(data_, kept, data);
  Release(data_, count_);
  data_ = data;
  capacity_ = capacity;
  count_ = kept;
  return KY_OK;
}

// Within the capacity. Plain elements begin to exist as the memory is.
template <class T>
void KyVectorTemplate<T>::SetCount(unsigned int count) noexcept {
  if (count < count_)
    std::destroy_n(data_ + count, count_ - count);
  else if constexpr (!std::is_trivially_copyable_v<T>)
    std::uninitialized_value_construct_n(data_ + count_, count - count_);
  count_ = count;
}

template <class T>
void KyVectorTemplate<T>::Empty() noexcept {
  SetCount(0);
}

template <class T>
KY_ERRORS KyVectorTemplate<T>::Reserve(unsigned int count) noexcept {
  if (count == capacity_) return KY_OK;
  return Replace(count, count >= count_ ? count_ : 0);
}

template <class T>
KY_ERRORS KyVectorTemplate<T>::Resize(unsigned int count) noexcept {
  if (count > capacity_ && Replace(count, 0) != KY_OK)
    return KyTraceError("KyVector::SetNumElements");
  SetCount(count);
  return KY_OK;
}

template <class T>
KY_ERRORS KyVectorTemplate<T>::SetMaxElements(unsigned int count) noexcept {
  KyOk();
  return Reserve(count);
}

template <class T>
KY_ERRORS KyVectorTemplate<T>::SetNumElements(unsigned int count) noexcept {
  KyOk();
  return Resize(count);
}

template <class T>
KY_ERRORS KyVectorTemplate<T>::Append(T&& element, const char* name) noexcept {
  if (count_ == capacity_) {
    if (capacity_ > UINT_MAX / 2) {
      ky::FailVector(KY_ERROR_NOT_ENOUGH_MEMORY, "KyVector::SetMaxElements");
      return KyTraceError(name);
    }
    if (Replace(std::max(2 * capacity_, 1u), count_) != KY_OK) return KyTraceError(name);
  }
  new (data_ + count_) T(std::move(element));
  ++count_;
  return KY_OK;
}

template <class T>
KY_ERRORS KyVectorTemplate<T>::AddElement(T element) noexcept {
  KyOk();
  return Append(std::move(element), "KyVector::AddElement");
}

// The copy comes first: the element may be one of this vector.
template <class T>
KY_ERRORS KyVectorTemplate<T>::AddElementByRef(const T& element) noexcept {
  constexpr const char* kName = "KyVector::AddElementByRef";
  KyOk();
  if constexpr (std::is_trivially_copyable_v<T>) {
    return Append(T(element), kName);
  } else {
    T copy;
    if (copy.CopyFrom(element) != KY_OK) return KyTraceError(kName);
    return Append(std::move(copy), kName);
  }
}

template <class T>
KY_ERRORS KyVectorTemplate<T>::Save(const char* name) const noexcept {
  KyOk();
  const KY_ERRORS error = ky::WithFile(name, "wb", [&](std::FILE* file) noexcept {
    const ky::VectorFileHeader header = ky::HeaderOf(m_un8Signature, m_un8Version);
    return std::fwrite(&header, sizeof header, 1, file) == 1 ? Write(file) : KY_ERROR_FILE_WRITE;
  });
  return error == KY_OK ? KY_OK : ky::FailVector(error, "KyVector::Save");
}

template <class T>
KY_ERRORS KyVectorTemplate<T>::Load(const char* name) noexcept {
  KyOk();
  const KY_ERRORS error = ky::WithFile(name, "rb", [&](std::FILE* file) noexcept {
    const ky::VectorFileHeader expected = ky::HeaderOf(m_un8Signature, m_un8Version);
    ky::VectorFileHeader header;
    if (std::fread(&header, sizeof header, 1, file) != 1) return KY_ERROR_FILE_READ;
    if (std::strncmp(header.bytes, expected.bytes, sizeof header) != 0) return KY_ERROR_FILE_FORMAT;
    return Read(file);
  });
  return error == KY_OK ? KY_OK : ky::FailVector(error, "KyVector::Load");
}

template <class T>
KY_ERRORS KyVectorTemplate<T>::Serialize(std::FILE* stream, int direction,
                                         unsigned char /*version*/) noexcept {
  KyOk();
  const KY_ERRORS error = stream == nullptr ? KY_ERROR_FILE_OPEN
                          : direction != 0  ? Write(stream)
                                            : Read(stream);
  if (error != KY_OK) KySetError(error);
  return error;
}

template <class T>
KY_ERRORS KyVectorTemplate<T>::Write(std::FILE* stream) const noexcept {
  const bool written = std::fwrite(&count_, sizeof count_, 1, stream) == 1 &&
                       (count_ == 0 || std::fwrite(data_, sizeof(T), count_, stream) == count_);
  return written ? KY_OK : KY_ERROR_FILE_WRITE;
}

// Elements come into being as they are read: the count proves nothing. Where nobody knows how much
// a stream holds, there is room for as many more as have come already. What is missing at the end
// is made up for.
template <class T>
KY_ERRORS KyVectorTemplate<T>::Read(std::FILE* stream) noexcept {
  constexpr unsigned kFirstRoom = 4096;
  unsigned int count;
  if (std::fread(&count, sizeof count, 1, stream) != 1) return KY_ERROR_FILE_READ;
  const std::uint64_t left = ky::BytesLeft(stream);
  const auto held = static_cast<unsigned>(std::min<std::uint64_t>(count, left / sizeof(T)));
  Empty();
  KY_ERRORS error = Reserve(left == UINT64_MAX ? std::min(held, kFirstRoom) : held);
  while (error == KY_OK && count_ < held) {
    if (count_ == capacity_) error = Replace(count_ + std::min(count_, held - count_), count_);
    if (error == KY_OK && !ReadMore(stream)) break;
  }
  if (error == KY_OK && count_ < count) error = AddMissing(count - count_);
  if (error == KY_ERROR_NOT_ENOUGH_MEMORY) Empty();
  return error;
}

// Appends T() for elements that a file announces and does not hold, unless it is the number itself
// that must be wrong.
template <class T>
KY_ERRORS KyVectorTemplate<T>::AddMissing(unsigned int missing) noexcept {
  constexpr std::size_t kMostBytes = std::size_t{64} << 20;
  if (missing > kMostBytes / sizeof(T)) return KY_ERROR_FILE_READ;
  const unsigned int count = count_ + missing;
  if (count > capacity_)
    if (const KY_ERRORS error = Replace(count, count_)) return error;
  std::uninitialized_value_construct_n(data_ + count_, missing);
  count_ = count;
  return KY_ERROR_FILE_READ;
}

// Appends elements of the stream as far as there is room; false when it has none left.
template <class T>
bool KyVectorTemplate<T>::ReadMore(std::FILE* stream) noexcept {
  if constexpr (std::is_trivially_copyable_v<T>) {
    const std::size_t read = std::fread(data_ + count_, sizeof(T), capacity_ - count_, stream);
    count_ += static_cast<unsigned>(read);
    return read > 0;
  } else {
    unsigned char bytes[sizeof(T)];
    if (std::fread(bytes, sizeof bytes, 1, stream) != 1) return false;
    (new (data_ + count_) T())->Restore(bytes);
    ++count_;
    return true;
  }
}

/// @file
/// @ingroup typed_vectors
/// Typed vectors: growable arrays of pixels and plain records that load from and save to files.
#pragma once

#include <cstdio>
#include <type_traits>

#include "ky/export.h"
#include "ky/pixels.h"
#include "ky/status.h"

/// Tells how files identify the elements. It is specialised next to every element type.
template <class T>
struct KyFileType;

/// The base of these specialisations.
template <KyBW8 signature, KyBW8 version = 1>
struct KyFileTypeOf {
  static constexpr KyBW8 kSignature = signature;  ///< names the type of the elements
  static constexpr KyBW8 kVersion = version;      ///< and their layout
};

/// Holds the element that stands in for elements that do not exist. Plain ones are T() whenever
/// they are returned, and every thread has its own.
template <class T, bool kPlain = std::is_trivially_copyable_v<T>>
struct KY_API KyPlaceHolder {
  // Known to be constant, so that users of the library look for no initialiser.
  /// The thread's stand-in.
  [[gnu::tls_model("initial-exec")]] static thread_local constinit T m_PlaceHolder;
};
/// Does the same for images. These have one stand-in, KyImage::StandIn, which never changes.
template <class T>
struct KY_API KyPlaceHolder<T, false> {
  /// The stand-in of all threads.
  static T& m_PlaceHolder;
};

/// A growable array of elements, kept in memory exactly as in a file.
///
///     KyBW8Vector profile(3, 10);                  // 10 10 10
///     profile.AddElement(40);                      // 10 10 10 40
///     profile[0] = 20;
///     unsigned int sum = 0;
///     for (KyBW8 level : profile) sum += level;    // 80
///     if (profile.Save("profile.ky") != KY_OK) std::puts(KyGetErrorMessage());
///     KyBW8Vector copy;
///     copy.Load("profile.ky");                     // 20 10 10 40
///
/// Members that return a status clear it first; nothing else clears it, constructors included.
/// There are vectors of pixels (below), of paths, peaks and runs (records.h), of counts
/// (histogram_vector.h) and of images (image_vector.h). For a vector of other plain records,
/// specialise KyFileType and instantiate the template with typed_vector-inl.h.
///
/// A file holds "Q", the signature, the version, the exclusive or of these three bytes, the number
/// of elements (32 bits, little-endian), and the elements' own bytes.
template <class T>
class KY_API KyVectorTemplate : public KyPlaceHolder<T> {
 public:
  static constexpr KyBW8 m_un8Signature = KyFileType<T>::kSignature;  ///< names T in files
  static constexpr KyBW8 m_un8Version = KyFileType<T>::kVersion;      ///< names its layout

  /// Makes an empty vector without an array.
  KyVectorTemplate() noexcept = default;
  /// Takes over the array of `other`, which becomes empty.
  KyVectorTemplate(KyVectorTemplate&& other) noexcept;
  virtual ~KyVectorTemplate();

  /// Takes over the array of `other`, which becomes empty; a vector that is assigned to itself
  /// stays as it is. Pointers into the former array stay valid after assignment from a named
  /// vector, because that array is kept until the vector is destroyed; after assignment from a
  /// temporary it is released at once.
  KyVectorTemplate& operator=(KyVectorTemplate& other) noexcept;
  KyVectorTemplate& operator=(KyVectorTemplate&& other) noexcept;

  /// Returns the element at `index`, counted from 0. Error: `KY_ERROR_PARAMETER_1_OUT_OF_RANGE`
  /// (1011), and m_PlaceHolder, beyond the elements in use. Trace: "KyVector::operator[]".
  T& operator[](unsigned int index) noexcept { return index < count_ ? data_[index] : Missing(); }
  const T& operator[](unsigned int index) const noexcept {
    return index < count_ ? data_[index] : Missing();
  }

  /// Return the number of elements in use, the number that there is room for, and the addresses of
  /// the first element and of the end; null without an array.
  unsigned int GetNumElements() const noexcept { return count_; }
  unsigned int GetMaxElements() const noexcept { return capacity_; }
  T* GetDataPtr() noexcept { return data_; }
  const T* GetDataPtr() const noexcept { return data_; }
  T* begin() noexcept { return data_; }
  T* end() noexcept { return data_ + count_; }
  const T* begin() const noexcept { return data_; }
  const T* end() const noexcept { return data_ + count_; }

  /// Leaves no element in use; the array is kept.
  void Empty() noexcept;

  /// Makes room for exactly `count` elements. Those in use stay if there is room for all of them;
  /// otherwise all are dropped. Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) when memory runs out;
  /// the vector stays as it was then. Trace: "KyVector::SetMaxElements".
  KY_ERRORS SetMaxElements(unsigned int count) noexcept;

  /// Sets the number of elements in use. New ones are not initialised (images are empty). When
  /// there is no room for them, the array is replaced and the former elements are lost. Error:
  /// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) when memory runs out; the vector stays as it was then.
  /// Traces: "KyVector::SetMaxElements", then "KyVector::SetNumElements".
  KY_ERRORS SetNumElements(unsigned int count) noexcept;

  /// Appends an element: AddElement takes it by value (an image is moved), AddElementByRef copies
  /// it (an image with pixels of its own). A full array is replaced by one of twice the room: 1, 2,
  /// 4, 8 ... elements. Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) when memory runs out; nothing is
  /// appended then. Traces: "KyVector::SetMaxElements" or, for a copy, "KyImage::CopyFrom"; then
  /// "KyVector::AddElement" or "KyVector::AddElementByRef".
  KY_ERRORS AddElement(T element) noexcept;
  KY_ERRORS AddElementByRef(const T& element) noexcept;

  /// Writes the elements to a file, which is replaced. Errors: `KY_ERROR_FILE_OPEN` (1102) when the
  /// file cannot be opened (also for null) or is a pipe, at which a call could wait for ever,
  /// `KY_ERROR_FILE_WRITE` (1104) when it cannot be written, `KY_ERROR_FILE_CLOSE` (1106) when it
  /// cannot be closed; what the file held before is then gone. Trace: "KyVector::Save".
  KY_ERRORS Save(const char* name) const noexcept;

  /// Replaces the elements by those of a file. Errors: `KY_ERROR_FILE_OPEN` (1102) when the file
  /// cannot be opened (also for null) or is a pipe, `KY_ERROR_FILE_READ` (1103) when it is too
  /// short, `KY_ERROR_FILE_FORMAT` (1105) when it holds something else,
  /// `KY_ERROR_NOT_ENOUGH_MEMORY` (1303) when memory runs out, `KY_ERROR_FILE_CLOSE` (1106) when it
  /// cannot be closed. The vector stays as it was when the file does not even hold a number of
  /// elements, and is empty after `KY_ERROR_NOT_ENOUGH_MEMORY` (1303). When the file ends before
  /// the number of elements that it announces, the vector has that number: those that were read,
  /// then T(). Where more than 64 MiB of elements are missing, it has only those that were read, so
  /// that a wrong number takes little memory. Trace: "KyVector::Load".
  KY_ERRORS Load(const char* name) noexcept;

  /// Writes the part of a file after its first four bytes to an open stream (any `direction` other
  /// than 0), or reads it from there (0), for files that hold more than a vector. No element type
  /// uses `version`. Errors: those of Save and Load, with `KY_ERROR_FILE_OPEN` (1102) for a null
  /// stream and without a trace.
  KY_ERRORS Serialize(std::FILE* stream, int direction, unsigned char version) noexcept;

 protected:
  // SetMaxElements and SetNumElements for constructors, which keep an earlier status.
  KY_ERRORS Reserve(unsigned int count) noexcept;
  KY_ERRORS Resize(unsigned int count) noexcept;

 private:
  struct Array;

  static T* Allocate(unsigned int count) noexcept;
  static Array* ArrayOf(T* data) noexcept;
  static void Release(T* data, unsigned int count) noexcept;
  void TakeArray(KyVectorTemplate& other) noexcept;
  static T& Missing() noexcept;
  KY_ERRORS Replace(unsigned int capacity, unsigned int kept) noexcept;
  void SetCount(unsigned int count) noexcept;
  KY_ERRORS Append(T&& element, const char* name) noexcept;
  KY_ERRORS Write(std::FILE* stream) const noexcept;
  KY_ERRORS Read(std::FILE* stream) noexcept;
  bool ReadMore(std::FILE* stream) noexcept;
  KY_ERRORS AddMissing(unsigned int missing) noexcept;

  unsigned int count_ = 0;
  unsigned int capacity_ = 0;
  T* data_ = nullptr;
  Array* former_ = nullptr;  // the arrays held before assignments
};

template <>
struct KyFileType<KyBW8> : KyFileTypeOf<1> {};
template <>
struct KyFileType<KyBW16> : KyFileTypeOf<2> {};
template <>
struct KyFileType<KyC24> : KyFileTypeOf<3> {};
template <>
struct KyFileType<unsigned int> : KyFileTypeOf<255, 255> {};

/// A vector of pixels.
template <class T>
class KY_API KyPixelVectorTemplate : public KyVectorTemplate<T> {
 public:
  /// Makes a vector of `count` elements, all `value`. Error: `KY_ERROR_NOT_ENOUGH_MEMORY` (1303)
  /// when memory runs out; the vector is empty then.
  explicit KyPixelVectorTemplate(unsigned int count = 0, T value = T()) noexcept;
  KyPixelVectorTemplate(KyPixelVectorTemplate&&) noexcept = default;
  KyPixelVectorTemplate& operator=(KyPixelVectorTemplate&) noexcept = default;
  KyPixelVectorTemplate& operator=(KyPixelVectorTemplate&&) noexcept = default;
};

/// The vectors of pixels.
using KyBW8Vector = KyPixelVectorTemplate<KyBW8>;
using KyBW16Vector = KyPixelVectorTemplate<KyBW16>;
using KyBW32Vector = KyPixelVectorTemplate<KyBW32>;
using KyC24Vector = KyPixelVectorTemplate<KyC24>;

extern template struct KyPlaceHolder<KyBW8>;
extern template struct KyPlaceHolder<KyBW16>;
extern template struct KyPlaceHolder<unsigned int>;
extern template struct KyPlaceHolder<KyC24>;
extern template class KyVectorTemplate<KyBW8>;
extern template class KyVectorTemplate<KyBW16>;
extern template class KyVectorTemplate<unsigned int>;
extern template class KyVectorTemplate<KyC24>;
extern template class KyPixelVectorTemplate<KyBW8>;
extern template class KyPixelVectorTemplate<KyBW16>;
extern template class KyPixelVectorTemplate<KyBW32>;
extern template class KyPixelVectorTemplate<KyC24>;

// Any bytes as the file of a typed vector: it is read or refused, and what was read can be used,
// written, and read again.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "ky/ky.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

void Require(bool holds) {
  if (!holds) std::abort();
}

// A file in memory that has a name.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("vector", 0)) { Require(descriptor_ >= 0); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { close(descriptor_); }
  std::string Name() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
  void Write(const Bytes& bytes) const {
    Require(pwrite(descriptor_, bytes.data(), bytes.size(), 0) == std::ssize(bytes));
  }
  Bytes Content() const {
    Bytes bytes(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)));
    Require(pread(descriptor_, bytes.data(), bytes.size(), 0) == std::ssize(bytes));
    return bytes;
  }

 private:
  int descriptor_;
};

template <class T>
void Use(KyVectorTemplate<T>& vector) {
  if (vector.GetNumElements() == 0) return;
  vector.AddElementByRef(vector[vector.GetNumElements() - 1]);
  vector.AddElement(vector[0]);
}

template <class T>
void Use(KyVectorTemplate<KyImage<T>>& vector) {
  for (KyImage<T>& image : vector) {
    Require(image.GetPixelPtr(0, 0) == nullptr && image.GetMaskOffsets() == nullptr);
    KyImage<T> copy;
    Require(copy.CopyFrom(image) == KY_OK);
    const KyROI<T> part(&image, 0, 0, 1, 1);
    Require(ImgOper(KY_OPER_INVERT, &part, &copy) == KY_ERROR_NO_IMAGE);
    image.SetSize(2, 2);
    Require(image.GetPixelPtr(0, 0) != nullptr);
  }
  vector.AddElement(KyImage<T>(3, 3));
}

template <class T>
void Load(const Bytes& bytes) {
  const MemoryFile file;
  file.Write(bytes);
  KyVectorTemplate<T> vector;
  const KY_ERRORS error = vector.Load(file.Name().c_str());
  Require(error == KyGetError());
  if (error == KY_OK) {
    const MemoryFile again;
    Require(vector.Save(again.Name().c_str()) == KY_OK);
    const Bytes saved = again.Content();
    Require(saved.size() <= bytes.size());
    Require(!std::is_trivially_copyable_v<T> ||
            std::memcmp(saved.data(), bytes.data(), saved.size()) == 0);
  } else {
    Require(error == KY_ERROR_FILE_READ || error == KY_ERROR_FILE_FORMAT);
  }
  // There is little room for elements that the file does not hold, whatever number it promises.
  constexpr std::size_t kMostMissing = std::size_t{64} << 20;
  Require(std::size_t{vector.GetMaxElements()} * sizeof(T) <= bytes.size() + kMostMissing);
  Use(vector);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Bytes bytes(data + 1, data + size);  // the first byte chooses the element type
  switch (data[0] % 16) {
    case 0: Load<KyBW8>(bytes); break;
    case 1: Load<KyBW16>(bytes); break;
    case 2: Load<KyC24>(bytes); break;
    case 3: Load<unsigned int>(bytes); break;
    case 4: Load<KyPath>(bytes); break;
    case 5: Load<KyBW8Path>(bytes); break;
    case 6: Load<KyC24Path>(bytes); break;
    case 7: Load<KyPeak>(bytes); break;
    case 8: Load<KyRun>(bytes); break;
    case 9: Load<KyImage<KyBW8>>(bytes); break;
    case 10: Load<KyImage<KyC24>>(bytes); break;
    case 11: Load<float>(bytes); break;
    case 12: Load<KyPosition>(bytes); break;
    case 13: Load<KyEdge>(bytes); break;
    case 14: Load<KyEdgePoint>(bytes); break;
    default: Load<KyObject>(bytes); break;
  }
  return 0;
}

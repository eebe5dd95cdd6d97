// Vectors in files. To Python they are arrays, whose type says which vector stands in the file.
#include <type_traits>
#include <variant>

#include "classes.h"
#include "records.h"

namespace ky::python {

// The vectors that have files. An array is saved as the first one that it can be.
template <class... Vector>
using HoldersOf = std::variant<Holder<Vector*>...>;
using AnyVector = HoldersOf<KyBW8Vector, KyBW16Vector, KyBW32Vector, KyC24Vector, KyFloatVector,
                            KyPathVector, KyPositionsVector, KyBW8PathVector, KyC24PathVector,
                            KyPeaksVector, KyEdgesVector, KyEdgePointsVector, KyObjectsVector>;

template <>
struct Holder<AnyVector&> : Argument {
  bool Take(PyObject*, const Place&) override { return true; }
  PyObject* Give() override {
    return std::visit([](auto& vector) { return vector.Give(); }, vector_);
  }
  AnyVector& Pass() { return vector_; }

 private:
  AnyVector vector_;
};

namespace {

template <class Vector>
KY_ERRORS Save(const Vector* vector, FilePath path) {
  return vector->Save(path.text);
}

template <class... Vector>
std::vector<Overload> SaveOverloads(std::type_identity<HoldersOf<Vector...>>) {
  return {MakeOverload(&Save<Vector>, {{"vector", kTaken}, {"path", kTaken}})...};
}

// A file that holds another vector is refused without being read further.
template <std::size_t i = 0>
KY_ERRORS Load(FilePath path, AnyVector& vector) {
  const KY_ERRORS error = vector.emplace<i>().Pass()->Load(path.text);
  if constexpr (i + 1 < std::variant_size_v<AnyVector>)
    if (error == KY_ERROR_FILE_FORMAT) return Load<i + 1>(path, vector);
  return error;
}

constexpr const char* kSaveText = R"(save_vector($module, vector, path)
--

Saves an array as the vector that it is to the library, for programs in C++ or for load_vector:
numbers (n,) of uint8, uint16, uint32 or float32, colours (n, 3), places (n, 2), and records as ky
returns them. Whether a path is closed is not saved. What the file held before is gone, also when it
cannot be written.

Errors: `ky.ERROR_FILE_OPEN` (1102), `ky.ERROR_FILE_WRITE` (1104), `ky.ERROR_FILE_CLOSE` (1106).
Trace: "KyVector::Save".)";

constexpr const char* kLoadText = R"(load_vector($module, path)
--

Loads the vector in a file, which save_vector or a program in C++ has written, as an array of the
type that the file says.

Errors: `ky.ERROR_FILE_OPEN` (1102), `ky.ERROR_FILE_READ` (1103) for a file that ends too early,
`ky.ERROR_FILE_FORMAT` (1105) for one that holds something else, `ky.ERROR_NOT_ENOUGH_MEMORY`
(1303), `ky.ERROR_FILE_CLOSE` (1106). Trace: "KyVector::Load".)";

}  // namespace

std::vector<Named> VectorFiles() {
  return {{"load_vector",
           kLoadText,
           {MakeOverload(&Load<0>, {{"path", kTaken}, {"vector", kReturned}})}},
          {"save_vector", kSaveText, SaveOverloads(std::type_identity<AnyVector>())}};
}

}  // namespace ky::python

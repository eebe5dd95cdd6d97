// The arguments of one call: each takes what the caller gave, holds it as the library wants it, and
// gives back what the call has written.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

namespace ky::python {

// What becomes of a parameter.
enum Flags : unsigned {
  kTaken = 1,        // the caller passes it
  kReturned = 2,     // the call returns it
  kOptional = 4,     // the caller may leave it out
  kKeywordOnly = 8,  // the caller passes it by name
  kMade = 16,        // a destination that is made when the caller passes none
};

struct Parameter {
  const char* name;
  unsigned flags = kTaken;
  double value = 0;  // of an optional number that was left out
  // Of a generic vector that is taken, the kind of its numbers, "i" or "u"; of one that is returned
  // and needs room, what its groups are, "f4" or "2i4".
  const char* elements = nullptr;
};

// What the messages of exceptions name.
struct Place {
  const char* function;
  const char* parameter;
};

// Rows and columns of an array.
struct Shape {
  Py_ssize_t height = -1, width = -1;
};

// How a destination that is made begins; by the operation means at zero where ImgOper keeps some of
// the destination.
enum class Contents { kAny, kZero, kSource, kByOperation };

// What the types of an argument are known by before it is taken.
struct Type {
  bool (*matches)(PyObject* object);
  const char* expected;  // completes "must be"
};

class Argument {
 public:
  virtual ~Argument() = default;

  // Takes the caller's object. Returns false, and raises, when it cannot be used.
  virtual bool Take(PyObject* object, const Place& place) = 0;
  // Stands for what the caller left out.
  virtual void TakeDefault(double) {}
  // The rows and columns that a new destination gets by default; none unless it is an image.
  virtual Shape Size() const { return {}; }
  // Makes a destination. `like` is the image of the first source, or null.
  virtual bool Make(Shape, Contents, const Argument* like, const Place&);
  // Makes room for `count` results, for calls that do not do so themselves, of the format of
  // Parameter::elements.
  virtual bool Reserve(Py_ssize_t, const char*) { return true; }
  // The number of elements that such room is measured by.
  virtual Py_ssize_t Count() const { return -1; }
  // Returns a new reference to what the call has written, or null with an exception.
  virtual PyObject* Give();
  // The number, when it is an integer.
  virtual long long Number() const { return 0; }
  // The caller's array, or the one that was made.
  virtual PyObject* Array() const { return nullptr; }
};

// Raises `type` with "function(): parameter must be expected, not ...". Returns false.
bool RaiseMismatch(PyObject* type, const Place& place, const char* expected, PyObject* object);
// Describes an object: "an array (480, 640) of float64", "ky.BW8", or its type.
PyObject* Describe(PyObject* object);

// Defined for every type of parameter: an Argument with `Pass()`, and for types that callers pass
// `static bool Matches(PyObject*)` and `static constexpr const char* kExpected`.
template <class T>
struct Holder;

}  // namespace ky::python

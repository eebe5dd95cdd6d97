#include "overload.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <string>

namespace ky::python {

namespace {

// A name, its overloads, and the names of their parameters as objects, which calls compare.
struct Function {
  Named named;
  PyMethodDef definition;
  std::vector<std::vector<PyObject*>> names;
};

// Tells why a call does not fit an overload: `arity` when the arguments are too many, too few, or
// have unknown names, otherwise the parameter whose object has the wrong type.
struct Misfit {
  bool arity = false;
  int parameter = -1;
  std::string text;
};

bool IsTaken(const Parameter& parameter) { return (parameter.flags & kTaken) != 0; }

bool IsGivenShape(PyObject* object) {
  return PyTuple_Check(object) && PyTuple_GET_SIZE(object) == 2;
}

bool Fits(const Overload& overload, int i, PyObject* object) {
  const Parameter& parameter = overload.parameters[i];
  if ((parameter.flags & kOptional) != 0 && object == Py_None) return true;
  if ((parameter.flags & kMade) != 0 && IsGivenShape(object)) return true;
  if (!overload.types[i].matches(object)) return false;
  if (parameter.elements == nullptr || !IsArray(object)) return true;
  PyObject* const dtype = PyObject_GetAttrString(object, "dtype");
  PyObject* const kind = dtype == nullptr ? nullptr : PyObject_GetAttrString(dtype, "kind");
  const bool same =
      kind != nullptr && PyUnicode_CompareWithASCIIString(kind, parameter.elements) == 0;
  Py_XDECREF(kind);
  Py_XDECREF(dtype);
  return same;
}

// Finds the object of each parameter. Returns whether the call fits the overload.
bool Bind(const Function& function, std::size_t index, PyObject* const* objects, Py_ssize_t count,
          PyObject* keywords, PyObject** given, Misfit* misfit) {
  const Overload& overload = function.named.overloads[index];
  const std::vector<PyObject*>& names = function.names[index];
  const int n = static_cast<int>(overload.parameters.size());
  const auto fail = [&](const std::string& text) {
    if (misfit != nullptr) *misfit = {true, -1, text};
    return false;
  };
  const auto textOf = [](PyObject* word) {
    const char* const text = PyUnicode_AsUTF8(word);
    if (text == nullptr) PyErr_Clear();  // not every string can be written
    return std::string(text == nullptr ? "?" : text);
  };
  std::fill_n(given, n, nullptr);
  Py_ssize_t position = 0;
  for (int i = 0; i < n && position < count; ++i)
    if (IsTaken(overload.parameters[i]) && (overload.parameters[i].flags & kKeywordOnly) == 0)
      given[i] = objects[position++];
  if (position < count)
    return fail("takes " + std::to_string(position) + " positional arguments, not " +
                std::to_string(count));
  const Py_ssize_t keywordCount = keywords == nullptr ? 0 : PyTuple_GET_SIZE(keywords);
  for (Py_ssize_t k = 0; k < keywordCount; ++k) {
    PyObject* const keyword = PyTuple_GET_ITEM(keywords, k);
    int i = 0;
    while (i < n && names[i] != keyword) ++i;
    for (int j = 0; i == n && j < n; ++j)
      if (names[j] != nullptr && PyUnicode_Compare(names[j], keyword) == 0) i = j;
    if (i == n) return fail("has no argument '" + textOf(keyword) + "'");
    if (given[i] != nullptr)
      return fail(std::string("got two values for '") + overload.parameters[i].name + "'");
    given[i] = objects[count + k];
  }
  for (int i = 0; i < n; ++i) {
    const Parameter& parameter = overload.parameters[i];
    if (given[i] == nullptr && IsTaken(parameter) && (parameter.flags & kOptional) == 0)
      return fail(std::string("needs the argument '") + parameter.name + "'");
  }
  for (int i = 0; i < n; ++i) {
    if (given[i] == nullptr || Fits(overload, i, given[i])) continue;
    if (misfit != nullptr) *misfit = {false, i, ""};
    return false;
  }
  return true;
}

// Raises what is wrong with a call that fits no overload.
PyObject* Explain(const Function& function, PyObject* const* objects, Py_ssize_t count,
                  PyObject* keywords) {
  const auto& overloads = function.named.overloads;
  std::vector<Misfit> misfits(overloads.size());
  PyObject* given[Overload::kMost];
  int furthest = -1;
  for (std::size_t i = 0; i < overloads.size(); ++i) {
    Bind(function, i, objects, count, keywords, given, &misfits[i]);
    if (!misfits[i].arity) furthest = std::max(furthest, misfits[i].parameter);
  }
  if (furthest < 0) {
    PyErr_Format(PyExc_TypeError, "%s() %s", function.named.name, misfits[0].text.c_str());
    return nullptr;
  }
  // What the overloads that fit up to there want.
  std::string expected;
  const char* name = nullptr;
  PyObject* object = nullptr;
  for (std::size_t i = 0; i < overloads.size(); ++i) {
    if (misfits[i].arity || misfits[i].parameter != furthest) continue;
    Bind(function, i, objects, count, keywords, given, nullptr);
    object = given[furthest];
    name = overloads[i].parameters[furthest].name;
    const std::string one = overloads[i].types[furthest].expected;
    if (expected.find(one) == expected.npos) expected += (expected.empty() ? "" : " or ") + one;
  }
  RaiseMismatch(PyExc_TypeError, {function.named.name, name}, expected.c_str(), object);
  return nullptr;
}

PyObject* Dispatch(PyObject* self, PyObject* const* objects, Py_ssize_t count, PyObject* keywords) {
  const auto& function = *static_cast<const Function*>(PyCapsule_GetPointer(self, nullptr));
  PyObject* given[Overload::kMost];
  for (std::size_t i = 0; i < function.named.overloads.size(); ++i)
    if (Bind(function, i, objects, count, keywords, given, nullptr))
      return function.named.overloads[i].run(function.named.overloads[i], given);
  return Explain(function, objects, count, keywords);
}

bool KeepsDestination(long long operation) {
  return operation == KY_OPER_SET_WHERE_ZERO || operation == KY_OPER_SET_WHERE_NONZERO ||
         operation == KY_OPER_OVERLAY;
}

// The rows and columns of a destination that is made. Returns false with an exception.
bool FindShape(const Overload& overload, Argument* const* arguments, PyObject* given,
               const Place& place, Shape& shape) {
  if (given != nullptr && IsGivenShape(given)) {
    long long height = 0, width = 0;
    if (!TakeInteger(PyTuple_GET_ITEM(given, 0), 0, INT_MAX, place, height) ||
        !TakeInteger(PyTuple_GET_ITEM(given, 1), 0, INT_MAX, place, width))
      return false;
    shape = {height, width};
    return true;
  }
  int skipped = overload.sizing == Sizing::kTable ? 1 : 0;
  for (std::size_t i = 0; i < overload.parameters.size() && overload.sizing != Sizing::kGiven;
       ++i) {
    const Parameter& parameter = overload.parameters[i];
    if ((parameter.flags & kMade) != 0 || arguments[i]->Size().height < 0 || skipped-- > 0)
      continue;
    shape = arguments[i]->Size();
    if (overload.sizing == Sizing::kHalf) shape = {shape.height / 2, shape.width / 2};
    if (overload.sizing == Sizing::kFrame)
      shape.height =
          (shape.height + (arguments[overload.parameters.size() - 1]->Number() == 0 ? 0 : 1)) / 2;
    return true;
  }
  PyErr_Format(PyExc_TypeError, "%s() needs %s: an array, or the shape (h, w) of a new one",
               place.function, place.parameter);
  return false;
}

}  // namespace

// Python ends such a thread by pthread_exit, which unwinds the stack like an exception. No
// destructor lets that pass, and it must not be swallowed either.
Unlocked::~Unlocked() {
  try {
    PyEval_RestoreThread(state_);
  } catch (...) {
    for (;;) pause();
  }
}

bool RaiseMismatch(PyObject* type, const Place& place, const char* expected, PyObject* object) {
  PyObject* const description = Describe(object);
  if (description != nullptr)
    PyErr_Format(type, "%s(): %s must be %s, not %U", place.function, place.parameter, expected,
                 description);
  Py_XDECREF(description);
  return false;
}

PyObject* Describe(PyObject* object) {
  int count = 0;
  PixelType* const* const types = PixelTypes(count);
  if (std::any_of(types, types + count,
                  [&](const PixelType* type) { return type->object == object; }))
    return PyObject_Repr(object);
  if (!IsArray(object)) return PyUnicode_FromString(Py_TYPE(object)->tp_name);
  PyObject* const shape = PyObject_GetAttrString(object, "shape");
  PyObject* const dtype = PyObject_GetAttrString(object, "dtype");
  PyObject* const text = shape == nullptr || dtype == nullptr
                             ? nullptr
                             : PyUnicode_FromFormat("an array %S of %S", shape, dtype);
  Py_XDECREF(shape);
  Py_XDECREF(dtype);
  return text;
}

bool Argument::Make(Shape, Contents, const Argument*, const Place&) { return true; }
PyObject* Argument::Give() { Py_RETURN_NONE; }

bool Prepare(const Overload& overload, PyObject* const* given, Argument* const* arguments) {
  const int n = static_cast<int>(overload.parameters.size());
  const Argument* source = nullptr;
  Py_ssize_t room = -1;
  int made = -1;
  for (int i = 0; i < n; ++i) {
    const Parameter& parameter = overload.parameters[i];
    if (!IsTaken(parameter)) continue;
    const bool isMissing = given[i] == nullptr || given[i] == Py_None;
    if ((parameter.flags & kMade) != 0 && (isMissing || !IsArray(given[i]))) {
      made = i;
      continue;
    }
    const Place place{overload.name, parameter.name};
    if (isMissing && (parameter.flags & kOptional) != 0)
      arguments[i]->TakeDefault(parameter.value);
    else if (!arguments[i]->Take(given[i], place))
      return false;
    if (source == nullptr && arguments[i]->Array() != nullptr) source = arguments[i];
    if (room < 0) {
      room = arguments[i]->Count();
      const Shape shape = arguments[i]->Size();
      if (shape.height >= 0) room = shape.height + shape.width;
    }
  }
  if (made >= 0) {
    Shape shape;
    const Place place{overload.name, overload.parameters[made].name};
    if (!FindShape(overload, arguments, given[made], place, shape)) return false;
    const bool own = given[made] != nullptr && IsGivenShape(given[made]);
    Contents contents = overload.contents;
    if (contents == Contents::kByOperation)
      contents = KeepsDestination(arguments[0]->Number()) ? Contents::kZero : Contents::kAny;
    if (own && contents == Contents::kAny) contents = Contents::kZero;
    if (!arguments[made]->Make(shape, contents, source, place)) return false;
  }
  for (int i = 0; i < n; ++i)
    if (!IsTaken(overload.parameters[i]) && overload.parameters[i].elements != nullptr &&
        !arguments[i]->Reserve(room, overload.parameters[i].elements))
      return false;
  return true;
}

PyObject* Finish(const Overload& overload, Argument* const* arguments, KY_ERRORS error,
                 PyObject* first) {
  if (error != KY_OK && error != KY_ERROR_PATH_STOPPED) {
    Py_XDECREF(first);
    return RaiseStatus(error);
  }
  PyObject* results[Overload::kMost + 1];
  int count = 0;
  bool failed = false;
  if (first != nullptr) results[count++] = first;
  for (std::size_t i = 0; i < overload.parameters.size(); ++i) {
    if ((overload.parameters[i].flags & kReturned) == 0) continue;
    results[count] = arguments[i]->Give();
    failed |= results[count++] == nullptr;
  }
  PyObject* result = nullptr;
  if (!failed && count == 1) return error == KY_OK ? results[0] : RaiseStatus(error, results[0]);
  if (!failed) result = count == 0 ? Py_NewRef(Py_None) : PyTuple_New(count);
  for (int i = 0; i < count; ++i) {
    if (result != nullptr)
      PyTuple_SET_ITEM(result, i, results[i]);
    else
      Py_XDECREF(results[i]);
  }
  return error == KY_OK || result == nullptr ? result : RaiseStatus(error, result);
}

PyObject* RaiseStatus(KY_ERRORS error, PyObject* result) {
  const char* const text = KyGetError() == error ? KyGetErrorMessage() : KyGetErrorText(error);
  PyObject* const module = PyImport_ImportModule("ky._types");
  PyObject* const type = module == nullptr ? nullptr : PyObject_GetAttrString(module, "Error");
  PyObject* const trace = PyTuple_New(KyGetTraceCount());
  for (int i = 0; trace != nullptr && i < KyGetTraceCount(); ++i)
    PyTuple_SET_ITEM(trace, i, PyUnicode_FromString(KyGetTrace(i)));
  PyObject* const exception = type == nullptr || trace == nullptr
                                  ? nullptr
                                  : PyObject_CallFunction(type, "isOO", int(error), text, trace,
                                                          result == nullptr ? Py_None : result);
  if (exception != nullptr) PyErr_SetObject(type, exception);
  Py_XDECREF(exception);
  Py_XDECREF(trace);
  Py_XDECREF(type);
  Py_XDECREF(module);
  Py_XDECREF(result);
  return nullptr;
}

bool AddFunctions(PyObject* module, const char* moduleName, std::vector<Named> functions) {
  PyObject* const owner = PyUnicode_FromString(moduleName);
  bool added = owner != nullptr;
  for (Named& named : functions) {
    // Lives as long as the process: functions refer to it.
    auto* const function = new Function{std::move(named), {}, {}};
    for (Overload& overload : function->named.overloads) {
      overload.name = function->named.name;
      std::vector<PyObject*>& names = function->names.emplace_back();
      for (const Parameter& parameter : overload.parameters)
        names.push_back(IsTaken(parameter) ? PyUnicode_InternFromString(parameter.name) : nullptr);
    }
    function->definition = {function->named.name,
                            reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(&Dispatch)),
                            METH_FASTCALL | METH_KEYWORDS, function->named.documentation};
    PyObject* const self = PyCapsule_New(function, nullptr, nullptr);
    PyObject* const callable =
        self == nullptr ? nullptr : PyCFunction_NewEx(&function->definition, self, owner);
    Py_XDECREF(self);
    added = added && callable != nullptr &&
            PyModule_AddObjectRef(module, function->named.name, callable) == 0;
    Py_XDECREF(callable);
  }
  Py_XDECREF(owner);
  return added;
}

}  // namespace ky::python

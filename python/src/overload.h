// One function of the library as Python calls it, and the sets of overloads that share a name.
#pragma once

#include <initializer_list>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "argument.h"
#include "images.h"
#include "numbers.h"
#include "objects.h"
#include "vectors.h"

namespace ky::python {

// How many rows and columns a destination that is made gets.
enum class Sizing {
  kSource,  // as many as the first source
  kHalf,    // half of them, rounded down
  kFrame,   // the rows of the interlaced frame that the last number names
  kTable,   // as many as the second source, a table
  kGiven,   // the caller has to say
};

struct Overload {
  static constexpr int kMost = 24;  // parameters

  PyObject* (*run)(const Overload& overload, PyObject* const* given);
  void (*function)();
  std::vector<Type> types;
  std::vector<Parameter> parameters;
  Sizing sizing;
  Contents contents;
  bool checked;      // whether the status says afterwards how the call went
  const char* name;  // set by AddFunctions
};

// Takes the caller's objects, by the indices of the parameters, null for those left out. Returns
// false with an exception.
bool Prepare(const Overload& overload, PyObject* const* given, Argument* const* arguments);
// Returns what the call returns, `first` included if it is not null, which is stolen; or null with
// an exception for an error.
PyObject* Finish(const Overload& overload, Argument* const* arguments, KY_ERRORS error,
                 PyObject* first);
// Raises ky.Error with the status of the calling thread, and returns null. `result`, which may be
// null and is stolen, becomes the exception's.
PyObject* RaiseStatus(KY_ERRORS error, PyObject* result = nullptr);

// Lets other threads of Python run while it lives. A thread that comes back after the end of the
// interpreter, as daemons may, waits for the end of the process.
class Unlocked {
 public:
  Unlocked() : state_(PyEval_SaveThread()) {}
  ~Unlocked();
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;

 private:
  PyThreadState* state_;
};

template <class Signature>
struct Runner;
template <class R, class... T>
struct Runner<R(T...)> {
  static PyObject* Run(const Overload& overload, PyObject* const* given) {
    return Run(overload, given, std::index_sequence_for<T...>());
  }

 private:
  template <std::size_t... I>
  static PyObject* Run(const Overload& overload, PyObject* const* given,
                       std::index_sequence<I...>) {
    const auto function = reinterpret_cast<R (*)(T...)>(overload.function);
    std::tuple<Holder<T>...> holders;
    Argument* const arguments[] = {&std::get<I>(holders)..., nullptr};
    if (!Prepare(overload, given, arguments)) return nullptr;
    if constexpr (std::is_same_v<R, KY_ERRORS>) {
      KY_ERRORS error = KY_OK;
      {
        const Unlocked unlocked;
        error = function(std::get<I>(holders).Pass()...);
      }
      return Finish(overload, arguments, error, nullptr);
    } else if constexpr (std::is_void_v<R>) {
      function(std::get<I>(holders).Pass()...);
      return Finish(overload, arguments, KY_OK, nullptr);
    } else {
      if (overload.checked) KyOk();
      R result{};
      {
        const Unlocked unlocked;
        result = function(std::get<I>(holders).Pass()...);
      }
      return Finish(overload, arguments, overload.checked ? KyGetError() : KY_OK,
                    GiveValue(result));
    }
  }
};

template <class T>
Type TypeOf() {
  if constexpr (requires(PyObject * object) { Holder<T>::Matches(object); })
    return {&Holder<T>::Matches, Holder<T>::kExpected};
  else
    return {nullptr, ""};
}

template <class R, class... T>
Overload MakeOverload(R (*function)(T...), std::initializer_list<Parameter> parameters,
                      Sizing sizing = Sizing::kSource, Contents contents = Contents::kAny,
                      bool checked = true) {
  static_assert(sizeof...(T) <= Overload::kMost);
  return {&Runner<R(T...)>::Run,
          reinterpret_cast<void (*)()>(function),
          {TypeOf<T>()...},
          parameters,
          sizing,
          contents,
          checked,
          nullptr};
}

// A name of the module: its overloads and the text of its documentation.
struct Named {
  const char* name;
  const char* documentation;
  std::vector<Overload> overloads;
};

// Adds the functions to the module. Returns false with an exception.
bool AddFunctions(PyObject* module, const char* moduleName, std::vector<Named> functions);

}  // namespace ky::python

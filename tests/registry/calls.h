// The registry of calls: every function that the libraries export, with what a test needs to know
// to call it. It uses public headers only.
//
// A function is one line of the FAMILY.inc of its family:
//
//   KY_CALL(NAME, SIGNATURE, TRACE, OPTIONS...)            a function
//   KY_METHOD(CLASS, NAME, SIGNATURE, TRACE, OPTIONS...)   a member function that processes
//   KY_UTILITY(NAME, SIGNATURE)                            a function that works on no arguments of
//                                                          interest: it is listed, not called
//
// The signature is spelt as in the header, without default values and noexcept; it selects the
// overload, and options name its parameters. TRACE is what a refused ROI leaves, innermost name
// first, " > " between names. Arguments are made by their types (arguments.h); the options say what
// their types do not.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ky/ky.h"
#ifdef KY_HAS_DRAWING
#include "ky/drawing.h"
#endif
#ifdef KY_HAS_FILES
#include "ky/files.h"
#endif
#ifdef KY_HAS_FREQUENCY
#include "ky/frequency.h"
#endif

namespace ky::test {

class Argument;
struct Context;

using Bytes = std::vector<unsigned char>;

// In addition to the types of generic vectors: single 32-bit floats.
inline constexpr int kFloats = 5;

struct Option {
  enum class Kind {
    kRange,         // numbers from a to b; elsewhere they are hostile
    kMeasured,      // numbers from a to b that describe memory, and so are never hostile
    kOneOf,         // one of a few numbers
    kElements,      // a typed vector of a elements
    kGroups,        // a generic vector of type a with b groups in use, use c
    kSize,          // a x b pixels instead of the common size
    kHalfRows,      // half of the common height
    kWords,         // pixels whose 16-bit words lie in a to b
    kBlobs,         // bright rectangles, 8 x 6 of every 16 x 12 pixels
    kAtLeast,       // a common size of a x b pixels or more
    kEvenHeight,    // an even common height
    kKeepsSources,  // of a moving average
    kNull,          // null gives the code a; 0 is success
    kUnequal,       // another size gives the code a; 0 is success
    kNoImage,       // no pixels give the code a; 0 is success
    kOffParent,     // off its parent it gives the code a, if not that of kNoImage
    kNoMemory,      // a failing allocation may give the code a, too
    kPartial,       // the argument may have changed when the call has failed with code a; 0 is any
    kNever,         // no arguments make the call succeed
    kPlain,         // one path alone: nothing is dispatched by the instruction set
    kInTurn,        // each ROI's image and size are checked before the next ROI's
    kSpills,        // pixels of the argument's image outside the ROI may change
  };
  Kind kind;
  std::string_view parameter;
  double a = 0, b = 0, c = 0;
  std::vector<int> numbers = {};
};

struct Parameter {
  std::string type, name;
};

struct Call {
  std::string name, returns;
  std::vector<Parameter> parameters;
  std::vector<std::string> trace;
  std::vector<Option> options;
  void (*function)() = nullptr;
  std::vector<std::unique_ptr<Argument>> (*make)(Context&) = nullptr;  // null for a utility
  void (*run)(void (*function)(), const std::vector<std::unique_ptr<Argument>>&,
              Bytes& result) = nullptr;

  const Option* Find(Option::Kind kind, std::string_view parameter) const;
  KY_ERRORS Code(Option::Kind kind, std::string_view parameter, KY_ERRORS otherwise) const;
  // "KY_ERRORS ImgExample(const KyROI<KyBW8>* source, int number)"
  std::string Declaration() const;
};

// All of them, utilities too, in the order of the families' files.
const std::vector<Call>& Registry();
// Those that can be called.
std::vector<const Call*> Callable();

}  // namespace ky::test

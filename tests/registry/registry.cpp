#include <utility>

#include "tests/registry/holders.h"
#include "tests/registry/options.h"
#ifdef KY_HAS_DRAWING
#include "tests/registry/drawing_holder.h"
#endif

namespace ky::test {
namespace {

using namespace options;  // NOLINT

// The parameters of a signature such as "KY_ERRORS(const KyROI<KyBW8>* source, float (&m)[3])".
std::vector<Parameter> ParametersOf(std::string_view signature) {
  std::vector<Parameter> parameters;
  const std::size_t open = signature.find('(');
  std::string_view rest = signature.substr(open + 1, signature.rfind(')') - open - 1);
  const auto isPartOfName = [](char c) { return std::isalnum(c) != 0 || c == '_'; };
  while (!rest.empty()) {
    std::size_t end = 0;
    for (int depth = 0; end < rest.size() && (rest[end] != ',' || depth != 0); ++end)
      depth += rest[end] == '<' || rest[end] == '('   ? 1
               : rest[end] == '>' || rest[end] == ')' ? -1
                                                      : 0;
    std::string_view one = rest.substr(0, end);
    while (one.front() == ' ') one.remove_prefix(1);
    // "float (&mean)[3]": the name stands inside.
    std::size_t last = one.find("(&") == one.npos ? one.size() : one.find(')');
    std::size_t first = last;
    while (first > 0 && isPartOfName(one[first - 1])) --first;
    Parameter parameter{std::string(one.substr(0, first)) + std::string(one.substr(last)),
                        std::string(one.substr(first, last - first))};
    if (parameter.type.back() == ' ') parameter.type.pop_back();
    parameters.push_back(parameter);
    rest.remove_prefix(std::min(rest.size(), end + 1));
  }
  return parameters;
}

std::vector<std::string> NamesOf(std::string_view trace) {
  std::vector<std::string> names;
  while (!trace.empty()) {
    const std::size_t end = std::min(trace.find(" > "), trace.size());
    names.emplace_back(trace.substr(0, end));
    trace.remove_prefix(std::min(trace.size(), end + 3));
  }
  return names;
}

template <class Signature>
struct Maker;
template <class R, class... T>
struct Maker<R(T...)> {
  static std::vector<std::unique_ptr<Argument>> Make(Context& context) {
    std::vector<std::unique_ptr<Argument>> arguments;
    (
        [&] {
          context.index = arguments.size();
          arguments.push_back(std::make_unique<Holder<T>>(context));
        }(),
        ...);
    return arguments;
  }
  static void Run(void (*function)(), const std::vector<std::unique_ptr<Argument>>& arguments,
                  Bytes& result) {
    [&]<std::size_t... I>(std::index_sequence<I...>) {
      const auto call = reinterpret_cast<R (*)(T...)>(function);
      if constexpr (std::is_void_v<R>)
        call(static_cast<Holder<T>&>(*arguments[I]).Pass()...);
      else
        Append(result, call(static_cast<Holder<T>&>(*arguments[I]).Pass()...));
    }
    (std::index_sequence_for<T...>());
  }
};

Call MakeCall(std::string_view name, std::string_view signature, std::string_view trace,
              std::vector<Option> options) {
  Call call;
  call.name = name;
  call.returns = signature.substr(0, signature.find('('));
  call.parameters = ParametersOf(signature);
  call.trace = NamesOf(trace);
  call.options = std::move(options);
  return call;
}
template <class Signature>
Call MakeCall(std::string_view name, std::string_view signature, std::string_view trace,
              Signature* function, std::vector<Option> options) {
  Call call = MakeCall(name, signature, trace, std::move(options));
  call.function = reinterpret_cast<void (*)()>(function);
  call.make = &Maker<Signature>::Make;
  call.run = &Maker<Signature>::Run;
  return call;
}

// A member function as one whose first parameter is the object.
template <auto kMember>
struct MethodOf;
template <class C, class R, class... T, R (C::*kMember)(T...) noexcept>
struct MethodOf<kMember> {
  static R Function(C* object, T... arguments) { return (object->*kMember)(arguments...); }
};
template <auto kMember>
Call MakeMethod(std::string_view name, std::string_view object, std::string_view signature,
                std::string_view trace, std::vector<Option> options) {
  Call call = MakeCall(name, signature, trace, &MethodOf<kMember>::Function, std::move(options));
  call.parameters.insert(call.parameters.begin(), {std::string(object) + "*", "object"});
  return call;
}
template <class C, class Signature>
struct MemberPointer;
template <class C, class R, class... T>
struct MemberPointer<C, R(T...)> {
  using Type = R (C::*)(T...) noexcept;
};

// Checks that there is such a function.
template <class Signature>
Call MakeUtility(std::string_view name, std::string_view signature, Signature*) {
  return MakeCall(name, signature, "", {});
}

}  // namespace

const Option* Call::Find(Option::Kind kind, std::string_view parameter) const {
  for (const Option& option : options)
    if (option.kind == kind && option.parameter == parameter) return &option;
  return nullptr;
}

KY_ERRORS Call::Code(Option::Kind kind, std::string_view parameter, KY_ERRORS otherwise) const {
  const Option* const option = Find(kind, parameter);
  return option == nullptr ? otherwise : static_cast<KY_ERRORS>(static_cast<int>(option->a));
}

std::string Call::Declaration() const {
  std::string text = returns + " " + name + "(";
  for (const Parameter& parameter : parameters) {
    if (&parameter != parameters.data()) text += ", ";
    const std::size_t array = parameter.type.find("(&)");
    text += array == parameter.type.npos ? parameter.type + " " + parameter.name
                                         : parameter.type.substr(0, array + 2) + parameter.name +
                                               parameter.type.substr(array + 2);
  }
  return text + ")";
}

#define KY_CALL(name, signature, trace, ...) \
  MakeCall<signature>(#name, #signature, trace, &::name, {__VA_ARGS__}),
#define KY_METHOD(object, name, signature, trace, ...)                            \
  MakeMethod<static_cast<MemberPointer<object, signature>::Type>(&object::name)>( \
      #object "::" #name, #object, #signature, trace, {__VA_ARGS__}),
#define KY_UTILITY(name, signature) MakeUtility<signature>(#name, #signature, &::name),

const std::vector<Call>& Registry() {
  static const std::vector<Call> calls = [] {
    Call all[] = {
#include "tests/registry/base.inc"
#include "tests/registry/color.inc"
#include "tests/registry/contour.inc"
#include "tests/registry/conversion.inc"
#include "tests/registry/convolution.inc"
#include "tests/registry/geometry.inc"
#include "tests/registry/gradient.inc"
#include "tests/registry/histogram.inc"
#include "tests/registry/measuring.inc"
#include "tests/registry/morphology.inc"
#include "tests/registry/objects.inc"
#include "tests/registry/point.inc"
#include "tests/registry/statistics.inc"
#include "tests/registry/temporal.inc"
#include "tests/registry/vectors.inc"
#ifdef KY_HAS_FREQUENCY
#include "tests/registry/frequency.inc"
#endif
#ifdef KY_HAS_DRAWING
#include "tests/registry/drawing.inc"
#endif
#ifdef KY_HAS_FILES
#include "tests/registry/files.inc"
#endif
    };
    return std::vector<Call>(std::make_move_iterator(std::begin(all)),
                             std::make_move_iterator(std::end(all)));
  }();
  return calls;
}

std::vector<const Call*> Callable() {
  std::vector<const Call*> calls;
  for (const Call& call : Registry())
    if (call.make != nullptr) calls.push_back(&call);
  return calls;
}

}  // namespace ky::test

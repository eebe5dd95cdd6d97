// What holds for every call of the registry: bad ROIs, vectors and kernels are refused with their
// code and trace; every path gives the same; nothing but outputs changes; sources may lie in the
// memory of results; neighbouring ROIs are separate worlds for eight threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <set>
#include <thread>

#include "tests/registry/arguments.h"
#include "tests/support/each_path.h"

namespace {

using namespace ky::test;  // NOLINT

KY_ERRORS CodeOf(const Call& call, const Parameter& parameter, Fault fault) {
  const bool isRoi = parameter.type.find("KyROI<") != parameter.type.npos;
  switch (fault) {
    case Fault::kNone: return KY_OK;
    case Fault::kNull: {
      const KY_ERRORS usual = isRoi ? KY_ERROR_NO_IMAGE
                              : parameter.type.find("KyKernel") != std::string::npos
                                  ? KY_ERROR_KERNEL_SIZE
                                  : KY_ERROR_BAD_VECTOR_TYPE;
      return call.Code(Option::Kind::kNull, parameter.name, usual);
    }
    case Fault::kNoImage:
      return call.Code(Option::Kind::kNoImage, parameter.name, KY_ERROR_NO_IMAGE);
    case Fault::kOffParent:
      return call.Code(Option::Kind::kOffParent, parameter.name,
                       CodeOf(call, parameter, Fault::kNoImage));
    case Fault::kOtherWidth:
    case Fault::kOtherHeight: {
      int rois = 0;
      for (const Parameter& other : call.parameters)
        rois += other.type.find("KyROI<") != std::string::npos;
      return call.Code(Option::Kind::kUnequal, parameter.name,
                       rois < 2 ? KY_OK : KY_ERROR_SIZE_MISMATCH);
    }
  }
  return KY_OK;
}

// The trace of a refusal is that of the registry; one that starts with "..." is its end.
void ExpectTrace(const Call& call, const std::vector<std::string>& trace) {
  std::vector<std::string> expected = call.trace;
  if (!expected.empty() && expected[0] == "...") {
    expected.erase(expected.begin());
    ASSERT_GE(trace.size(), expected.size());
    EXPECT_TRUE(std::equal(expected.rbegin(), expected.rend(), trace.rbegin()));
  } else {
    EXPECT_EQ(trace, expected);
  }
}

TEST(Calls, BadArgumentsAreRefused) {
  constexpr Fault kFaults[] = {Fault::kNull, Fault::kNoImage, Fault::kOffParent, Fault::kOtherWidth,
                               Fault::kOtherHeight};
  for (const Call* const call : Callable()) {
    SCOPED_TRACE(call->Declaration());
    int refused = 0;
    bool spoilt = false;
    for (const Fault fault : kFaults) {
      for (std::size_t bad = 0; bad < call->parameters.size(); ++bad) {
        SCOPED_TRACE("fault " + std::to_string(static_cast<int>(fault)) + " of " +
                     call->parameters[bad].name);
        // The draw is one of those with which the call succeeds.
        for (unsigned seed = 1;; ++seed) {
          ASSERT_LT(seed, 200u) << "the call never succeeds";
          SeededDraw draw(seed), again(seed);
          const bool never = call->Find(Option::Kind::kNever, "") != nullptr;
          if (!never && Arguments(*call, again, Plan()).Run().status != KY_OK) continue;
          const Arguments arguments(*call, draw, Plan());
          if (!arguments[bad].Spoil(fault)) break;
          spoilt = true;
          const KY_ERRORS code = CodeOf(*call, call->parameters[bad], fault);
          const std::vector<Bytes> before = arguments.State();
          const Outcome outcome = arguments.Run();
          const std::string message = KyGetErrorMessage();
          EXPECT_EQ(outcome.status, code);
          EXPECT_EQ(arguments.Damage(before, outcome.status), "");
          if (code == KY_OK) break;
          ++refused;
          if (code == KY_ERROR_NO_IMAGE) {
            EXPECT_NE(message.find(call->parameters[bad].name + " is null"), message.npos)
                << message;
          }
          ExpectTrace(*call, outcome.trace);
          break;
        }
      }
    }
    EXPECT_EQ(refused > 0, spoilt);
  }
}

// An ROI without pixels is found before one of another size, whatever their order.
TEST(Calls, MissingImagesComeBeforeSizes) {
  int refused = 0;
  for (const Call* const call : Callable()) {
    SCOPED_TRACE(call->Declaration());
    if (call->Find(Option::Kind::kInTurn, "") != nullptr) continue;
    for (std::size_t a = 0; a < call->parameters.size(); ++a)
      for (std::size_t b = 0; b < call->parameters.size(); ++b) {
        const auto code = [&](std::size_t i, Fault fault) {
          return CodeOf(*call, call->parameters[i], fault);
        };
        if (a == b || code(a, Fault::kNoImage) != KY_ERROR_NO_IMAGE ||
            code(a, Fault::kOtherHeight) != KY_ERROR_SIZE_MISMATCH ||
            code(b, Fault::kOtherHeight) != KY_ERROR_SIZE_MISMATCH)
          continue;
        SeededDraw draw(1);
        const Arguments arguments(*call, draw, Plan());
        if (!arguments[a].Spoil(Fault::kNoImage) || !arguments[b].Spoil(Fault::kOtherHeight))
          continue;
        EXPECT_EQ(arguments.Run().status, KY_ERROR_NO_IMAGE)
            << call->parameters[a].name << " and " << call->parameters[b].name;
        ++refused;
      }
  }
  EXPECT_GT(refused, 100);
}

// The message of a code about a number names a parameter of the call. Returns whether it is such a
// code.
bool ExpectParameterInMessage(const Call& call, KY_ERRORS status) {
  if (status < KY_ERROR_PARAMETER_OUT_OF_RANGE || status > KY_ERROR_PARAMETER_6_OUT_OF_RANGE)
    return false;
  const std::string message = KyGetErrorMessage();
  const bool names =
      std::any_of(call.parameters.begin(), call.parameters.end(), [&](const Parameter& parameter) {
        return message.find(": " + parameter.name + " is out of range (") != message.npos;
      });
  EXPECT_TRUE(names) << message;
  return true;
}

// Random arguments, a part of them hostile: all paths do the same and write outputs only. Each call
// must be seen to succeed, and to choose its kernels by the instruction set. With
// GTEST_RANDOM_SEED=N in the environment, the arguments are others for each N, and images larger.
TEST(Calls, EveryPathGivesTheSame) {
  const std::vector<Path> paths = Paths();
  constexpr unsigned kSeeds = 60;
  const auto first = kSeeds * static_cast<unsigned>(GTEST_FLAG_GET(random_seed));
  const int widest = first == 0 ? 140 : 330, highest = first == 0 ? 14 : 45;
  int named = 0;
  for (const Call* const call : Callable()) {
    SCOPED_TRACE(call->Declaration());
    int succeeded = 0, dispatched = 0;
    for (unsigned seed = first; seed < first + kSeeds; ++seed) {
      SCOPED_TRACE("seed " + std::to_string(seed));
      std::vector<Bytes> expected;
      Outcome expectedOutcome;
      for (const Path& path : paths) {
        SCOPED_TRACE(path.name);
        const OnPath on(path);
        SeededDraw draw(seed);
        Plan plan = DrawPlan(*call, draw, seed % 2 == 0 ? widest : 30, highest);
        plan.hostile = seed % 3 == 0;
        const Arguments arguments(*call, draw, plan);
        const std::vector<Bytes> before = arguments.State();
        const Outcome outcome = arguments.Run();
        named += ExpectParameterInMessage(*call, outcome.status);
        dispatched += path.target != 0 && on.Dispatched();
        EXPECT_EQ(arguments.Damage(before, outcome.status), "");
        succeeded += outcome.status == KY_OK;
        if (&path == &paths.front()) {
          expectedOutcome = outcome;
          expected = arguments.State();
          continue;
        }
        EXPECT_EQ(outcome.status, expectedOutcome.status);
        EXPECT_TRUE(outcome == expectedOutcome);
        EXPECT_TRUE(arguments.State() == expected) << "the paths leave different bytes";
      }
    }
    EXPECT_TRUE(succeeded > 0 || first != 0 || call->Find(Option::Kind::kNever, "") != nullptr)
        << "the call never succeeds";
    EXPECT_TRUE(dispatched > 0 || call->Find(Option::Kind::kPlain, "") != nullptr ||
                paths.back().target == 0)
        << "nothing is dispatched by the instruction set";
  }
  EXPECT_GT(named, 100);
  RecordProperty("calls", static_cast<int>(Callable().size()));
}

// A source in the memory of a result is read before that is written, or freed to grow.
TEST(Calls, SourcesMayLieInTheMemoryOfResults) {
  std::set<const Call*> tested;
  for (const Call* const call : Callable()) {
    SCOPED_TRACE(call->Declaration());
    for (unsigned seed = 0; seed < 12; ++seed) {
      SCOPED_TRACE("seed " + std::to_string(seed));
      const auto make = [&] {
        SeededDraw draw(seed);
        Plan plan = DrawPlan(*call, draw, 30, 14);
        plan.sharing = Sharing::kApart;
        return std::make_unique<Arguments>(*call, draw, plan);
      };
      const std::unique_ptr<Arguments> apart = make(), inside = make();
      if (!apart->PutSourceIntoResult(false)) continue;
      ASSERT_TRUE(inside->PutSourceIntoResult(true));
      const Outcome outcome = apart->Run();
      EXPECT_TRUE(inside->Run() == outcome);
      for (std::size_t i = 0; i < apart->size(); ++i)
        if ((*apart)[i].MayChange()) {
          EXPECT_TRUE((*inside)[i].State() == (*apart)[i].State()) << call->parameters[i].name;
        }
      if (outcome.status == KY_OK) tested.insert(call);
    }
  }
  RecordProperty("calls", static_cast<int>(tested.size()));
  EXPECT_GT(tested.size(), 15u);
}

// Eight threads on neighbouring ROIs of the same images leave what one after the other leaves,
// while another one changes the settings of the process.
TEST(Threads, EveryCallOnNeighbouringRois) {
  std::atomic<bool> done{false};
  std::thread settings([&] {
    while (!done) {
      KySetMMX(KyGetMMX() != 0 ? 0 : 1);
      KySetAngleUnit(KyGetAngleUnit());
      ImgSetOverlayColor(ImgGetOverlayColor());
      std::this_thread::yield();
    }
  });
  for (const Call* const call : Callable()) {
    SCOPED_TRACE(call->Declaration());
    const bool bits = call->Declaration().find("KyBW1>") != std::string::npos;
    const int width = bits ? 40 : 41;  // neighbours that share no byte
    for (const Sharing sharing : {Sharing::kApart, Sharing::kInPlace}) {
      std::vector<std::vector<Bytes>> states;
      for (const bool together : {false, true}) {
        constexpr int kThreads = 8;
        SeededDraw draw(7);
        Plan plan{width, 14, sharing, false, nullptr, kThreads};
        std::vector<std::unique_ptr<Arguments>> all;
        for (int i = 0; i < kThreads; ++i) {
          all.push_back(std::make_unique<Arguments>(*call, draw, plan));
          plan.beside = all.back().get();
        }
        const auto run = [](const Arguments& arguments) {
          for (int i = 0; i < 2; ++i) arguments.Run();
        };
        std::vector<std::thread> threads;
        for (const auto& arguments : all) {
          if (together)
            threads.emplace_back([&] { run(*arguments); });
          else
            run(*arguments);
        }
        for (std::thread& thread : threads) thread.join();
        std::vector<Bytes>& state = states.emplace_back();
        for (const auto& arguments : all)
          for (const Bytes& bytes : arguments->State()) state.push_back(bytes);
      }
      EXPECT_TRUE(states[0] == states[1]);
    }
  }
  done = true;
  settings.join();
  KySetMMX(1);
}

}  // namespace

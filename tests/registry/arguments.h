// Arguments of calls of the registry, made at random: valid ones, hostile ones, ones with a fault.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/registry/calls.h"

namespace ky::test {

// Where random numbers come from. Equal draws make equal arguments, on any processor where no
// expression draws twice: compilers choose the order.
class Draw {
 public:
  virtual ~Draw() = default;
  // 0 to limit - 1.
  virtual unsigned Below(unsigned limit) = 0;
  int In(int least, int most) {
    return least + static_cast<int>(Below(static_cast<unsigned>(most - least) + 1));
  }
  bool OneIn(unsigned n) { return Below(n) == 0; }
};

// The same everywhere for a seed, unlike the distributions of <random>.
class SeededDraw : public Draw {
 public:
  explicit SeededDraw(unsigned seed) : state_(seed * 2654435761u + 12345) {}
  unsigned Below(unsigned limit) override {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<unsigned>((state_ >> 33) % limit);
  }

 private:
  unsigned long long state_;
};

enum class Sharing { kApart, kInPlace, kOverlapping };
enum class Fault { kNone, kNull, kNoImage, kOffParent, kOtherWidth, kOtherHeight };

// How the arguments of a call are to be.
struct Plan {
  int width = 21, height = 12;  // of the ROIs
  Sharing sharing = Sharing::kApart;
  bool hostile = false;                     // some numbers, sizes and pointers are bad
  const class Arguments* beside = nullptr;  // ROIs lie just to the right of those, in their images
  int neighbours = 0;                       // ROIs leave room for so many such ones
};

class Argument {
 public:
  virtual ~Argument() = default;
  // All that a call could change, an ROI's whole image included.
  virtual Bytes State() const = 0;
  // Puts a fault of the kind into it; false when there is none for its type.
  virtual bool Spoil(Fault) { return false; }
  virtual bool MayChange() const { return false; }
  virtual bool IsNull() const { return false; }
  // Where the pixels are, for ROIs: what makes two arguments share them.
  virtual const void* Memory() const { return nullptr; }
  // The memory of a vector or image, at least so many bytes, which a call may free; null for
  // others.
  virtual void* Array(std::size_t /*bytes*/) { return nullptr; }
  // The bytes of an ROI's pixels without gaps, and what puts them there; with `attach` they are the
  // ROI's from then on. For sources of whole bytes; 0 for others.
  virtual std::size_t PixelBytes() const { return 0; }
  virtual void MoveTo(void* /*memory*/, bool /*attach*/) {}
  // Sets the ROI's own pixels in `state`, that of an image it lies on, to those of `before`.
  virtual void Restore(Bytes& /*state*/, const Bytes& /*before*/) const {}
};

struct Outcome {
  KY_ERRORS status = KY_OK;
  Bytes result;  // what the function returned
  std::vector<std::string> trace;
  bool operator==(const Outcome&) const = default;
};

class Arguments {
 public:
  Arguments(const Call& call, Draw& draw, const Plan& plan);
  ~Arguments();

  // `around` must run the function that it is given, which allocates nothing but what the call
  // does.
  using Around = std::function<void(const std::function<void()>& call)>;
  Outcome Run(const Around& around = nullptr) const;
  std::vector<Bytes> State() const;
  // What was done wrong since `before`: on success only outputs may change, and of images the
  // destinations' pixels; on failure nothing but what the registry names. Empty if nothing was.
  std::string Damage(const std::vector<Bytes>& before, KY_ERRORS status) const;
  // Puts the pixels of a source into the memory of a vector or image that the call writes; with
  // `attach` they are the source's, without they are a copy. False where there are no two such.
  bool PutSourceIntoResult(bool attach) const;
  Argument& operator[](std::size_t i) const { return *arguments_[i]; }
  std::size_t size() const { return arguments_.size(); }

 private:
  const Call& call_;
  std::vector<std::unique_ptr<Argument>> arguments_;
};

// A plan with a size that suits the call, drawn up to the limits.
Plan DrawPlan(const Call& call, Draw& draw, int mostWidth, int mostHeight);

}  // namespace ky::test

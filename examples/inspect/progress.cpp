#include "inspect/progress.h"

#include <chrono>
#include <cstdio>
#include <utility>

namespace inspect {

Progress::Progress(std::string what)
    : what_(std::move(what)), timer_([this] {
        std::unique_lock lock(mutex_);
        if (change_.wait_for(lock, std::chrono::seconds(1), [this] { return done_; })) return;
        late_ = true;
        Print();
      }) {}

Progress::~Progress() {
  {
    const std::lock_guard lock(mutex_);
    done_ = true;
  }
  change_.notify_one();
  timer_.join();
}

void Progress::Step(const std::string& name) {
  const std::lock_guard lock(mutex_);
  step_ = name;
  if (late_) Print();
}

void Progress::Print() const {
  if (!step_.empty()) std::fprintf(stderr, "%s: %s ...\n", what_.c_str(), step_.c_str());
}

}  // namespace inspect

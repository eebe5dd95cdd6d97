// What a program is doing, for users who wait.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace inspect {

/// Says nothing for a second, and after that on stderr which step is being done.
class Progress {
 public:
  /// `what` is worked on; it stands before the steps.
  explicit Progress(std::string what);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// A step begins.
  void Step(const std::string& name);

 private:
  void Print() const;

  const std::string what_;
  std::string step_;
  bool late_ = false, done_ = false;
  std::mutex mutex_;
  std::condition_variable change_;
  std::thread timer_;  // the last member: its function uses the others
};

}  // namespace inspect

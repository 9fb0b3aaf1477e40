// How far a long work on the one thread has come, shown to the operator, who may stop it.
#pragma once

#include <cstdint>
#include <string>

namespace dbkeeper {

class Progress {
 public:
  virtual ~Progress() = default;
  // From here to End nothing else of the program can be started.
  virtual void Begin(const std::string& what) = 0;
  // `done` of `total` steps are behind; a total of 0 is not known. Cheap enough for every step.
  // False once the operator wants the work stopped.
  virtual bool GoOn(std::int64_t done, std::int64_t total) = 0;
  virtual void End() = 0;
};

// One long work; there is never a second inside it.
class LongWork {
 public:
  LongWork(Progress& progress, const std::string& what) : progress_(progress) {
    progress_.Begin(what);
  }
  LongWork(const LongWork&) = delete;
  LongWork& operator=(const LongWork&) = delete;
  ~LongWork() { progress_.End(); }

  bool GoOn(std::int64_t done, std::int64_t total = 0) { return progress_.GoOn(done, total); }

 private:
  Progress& progress_;
};

}  // namespace dbkeeper

// A box with a bar and a button to stop, over the window that has started the work.
#pragma once

#include <QElapsedTimer>
#include <memory>
#include <string>

#include "app/support/Progress.h"

class QProgressDialog;

namespace dbkeeper::qt {

class QtProgress : public Progress {
 public:
  QtProgress();
  QtProgress(const QtProgress&) = delete;
  QtProgress& operator=(const QtProgress&) = delete;
  ~QtProgress() override;

  void Begin(const std::string& what) override;
  bool GoOn(std::int64_t done, std::int64_t total) override;
  void End() override;

 private:
  std::unique_ptr<QProgressDialog> box_;
  QElapsedTimer painted_;
};

}  // namespace dbkeeper::qt

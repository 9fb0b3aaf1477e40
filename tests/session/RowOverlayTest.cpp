#include "app/session/RowOverlay.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace dbkeeper {
namespace {

using Texts = std::vector<std::string>;

std::string SourceText(std::int64_t row) { return "source " + std::to_string(row); }

Texts Shown(const RowOverlay& overlay, std::size_t source_rows) {
  Texts texts;
  const std::int64_t rows = static_cast<std::int64_t>(source_rows) + overlay.Extra();
  for (std::int64_t row = 0; row < rows; ++row) {
    const RowOverlay::Place place = overlay.At(row);
    texts.push_back(place.values != nullptr ? *place.values->front()
                                            : SourceText(place.source_row));
  }
  return texts;
}

// Changes an overlay and a plain vector alike; what happened is told for the trace.
class Trial {
 public:
  explicit Trial(unsigned seed) : random_(seed) {
    source_rows_ = Below(6);
    for (std::size_t row = 0; row < source_rows_; ++row) {
      plain_.push_back(SourceText(static_cast<std::int64_t>(row)));
    }
  }

  void Step(int number) {
    const std::string text = "new " + std::to_string(number);
    const std::size_t row = Below(plain_.size() + (plain_.empty() ? 1 : 0));
    const auto at = plain_.begin() + static_cast<std::ptrdiff_t>(row);
    const auto place = static_cast<std::int64_t>(row);
    const std::size_t kind = plain_.empty() ? 0 : Below(3);
    told += " " + std::string(1, "IRD"[kind]) + std::to_string(row);
    if (kind == 0) {
      overlay_.Insert(place, {text});
      plain_.insert(at, text);
    } else if (kind == 1) {
      overlay_.Replace(place, {text});
      *at = text;
    } else {
      overlay_.Remove(place);
      plain_.erase(at);
    }
  }

  Texts Wanted() const { return plain_; }
  Texts Given() const { return Shown(overlay_, source_rows_); }

  std::string told;

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }

  std::mt19937 random_;
  std::size_t source_rows_ = 0;
  RowOverlay overlay_;
  Texts plain_;
};

TEST(RowOverlay, ShowsWhatAPlainVectorOfRowsWould) {
  for (unsigned seed = 0; seed < 300; ++seed) {
    Trial trial(seed);
    for (int step = 0; step < 60; ++step) {
      trial.Step(step);
      ASSERT_EQ(trial.Given(), trial.Wanted()) << "seed " << seed << ":" << trial.told;
    }
  }
}

}  // namespace
}  // namespace dbkeeper

#include "platform/qt/tour/Chapters.h"

#include <array>
#include <iterator>

namespace dbkeeper::qt::tour {

namespace {

constexpr std::array kChapters = {
    &ConnectSteps, &DatabaseSteps, &NodeSteps,   &QuerySteps,
    &EditSteps,    &BrowserSteps,  &UpkeepSteps, &DisconnectSteps,
};

}  // namespace

Steps AllSteps() {
  Steps all;
  for (const auto chapter : kChapters) {
    Steps steps = chapter();
    std::move(steps.begin(), steps.end(), std::back_inserter(all));
  }
  return all;
}

}  // namespace dbkeeper::qt::tour

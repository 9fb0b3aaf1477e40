#include "platform/host/SystemClock.h"

#include <ctime>

namespace dbkeeper::host {

DateTimeValue SystemClock::Now() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  constexpr int kFirstYear = 1900;
  return {local.tm_year + kFirstYear,
          local.tm_mon + 1,
          local.tm_mday,
          local.tm_hour,
          local.tm_min,
          local.tm_sec};
}

}  // namespace dbkeeper::host

// The local time of the machine.
#pragma once

#include "app/support/Host.h"

namespace dbkeeper::host {

class SystemClock : public Clock {
 public:
  DateTimeValue Now() override;
};

}  // namespace dbkeeper::host

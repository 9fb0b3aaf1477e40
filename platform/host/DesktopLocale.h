// The operator's number and date forms.
#pragma once

#include "app/support/Host.h"

namespace dbkeeper::host {

class DesktopLocale : public HostLocale {
 public:
  char DecimalSeparator() override;
  std::string ShortDateFormat() override;
};

}  // namespace dbkeeper::host

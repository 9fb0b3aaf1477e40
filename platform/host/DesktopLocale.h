// The operator's number and date forms.
#pragma once

#include <string>

#include "app/support/Host.h"

namespace dbkeeper::host {

class DesktopLocale : public HostLocale {
 public:
  char DecimalSeparator() override;
  std::string ShortDateFormat() override;

 private:
  // Asked of the toolkit once: an export shows millions of dates.
  std::string short_date_format_;
};

}  // namespace dbkeeper::host

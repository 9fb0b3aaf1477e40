// Panels that share one place, each under a tab.
#pragma once

#include <string>
#include <vector>

#include "controls/Inputs.h"

namespace dbkeeper {

struct Page {
  std::string caption;
  // May be another page's too.
  Panel* panel;
};

// Gives a row of tabs its captions, and shows the panel of the chosen tab alone; none of them while
// no tab is chosen.
class Pages {
 public:
  // Tabs and panels must outlive this object.
  Pages(TabControl& tabs, std::vector<Page> pages);

 private:
  void ShowPanel(int index) const;

  const std::vector<Page> pages_;
  Subscription chosen_;
};

}  // namespace dbkeeper

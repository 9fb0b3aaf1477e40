#include "controls/Pages.h"

#include <utility>

namespace dbkeeper {

Pages::Pages(TabControl& tabs, std::vector<Page> pages) : pages_(std::move(pages)) {
  std::vector<std::string> captions;
  for (const Page& page : pages_) captions.push_back(page.caption);
  tabs.Tabs.Assign(std::move(captions));
  chosen_ = tabs.TabIndex.Observe([this](int index) { ShowPanel(index); });
}

void Pages::ShowPanel(int index) const {
  const bool valid = index >= 0 && static_cast<std::size_t>(index) < pages_.size();
  const Panel* const shown = valid ? pages_[static_cast<std::size_t>(index)].panel : nullptr;
  for (const Page& page : pages_) page.panel->Visible = page.panel == shown;
}

}  // namespace dbkeeper

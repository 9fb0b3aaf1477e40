// Tabs.
#include <QMouseEvent>
#include <QStyleOptionTab>
#include <QTabBar>

#include "platform/qt/Keep.h"
#include "platform/qt/QtText.h"
#include "platform/qt/binders/Binder.h"

namespace dbkeeper::qt {

namespace {

// The toolkit's tabs always have a chosen one; here there may be none, until a person chooses.
class TabWidget : public QTabBar {
 public:
  TabWidget(TabControl& tabs, const ActionGuard& guard, QWidget* parent)
      : QTabBar(parent), tabs_(tabs), guard_(guard) {
    Keep(*this, tabs.Tabs.Observe([this](const std::vector<std::string>& captions) {
      const QSignalBlocker quiet(this);
      while (count() > 0) removeTab(0);
      for (const std::string& caption : captions) addTab(ToQtCaption(caption));
      ShowChoice();
    }));
    Keep(*this, tabs.TabIndex.Observe([this](int) { ShowChoice(); }));
    connect(this, &QTabBar::currentChanged, this, [this](int index) { Choose(index); });
    // Where none is chosen, the toolkit takes a click on its own current tab for no change.
    connect(this, &QTabBar::tabBarClicked, this, [this](int index) {
      if (tabs_.TabIndex() < 0 && index == currentIndex()) Choose(index);
    });
  }

 protected:
  void initStyleOption(QStyleOptionTab* option, int index) const override {
    QTabBar::initStyleOption(option, index);
    if (tabs_.TabIndex() < 0) option->state.setFlag(QStyle::State_Selected, false);
  }

 private:
  void Choose(int index) {
    guard_.Run([&] { tabs_.UserSelect(index); });
    ShowChoice();
  }

  void ShowChoice() {
    const QSignalBlocker quiet(this);
    if (tabs_.TabIndex() >= 0) setCurrentIndex(tabs_.TabIndex());
    update();
  }

  TabControl& tabs_;
  const ActionGuard& guard_;
};

}  // namespace

QTabBar* Binder::Make(TabControl& tabs) const {
  auto* widget = new TabWidget(tabs, guard_, &window_);
  BindCommon(tabs, *widget);
  return widget;
}

}  // namespace dbkeeper::qt

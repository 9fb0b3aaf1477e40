#include <QFrame>
#include <QMenu>
#include <QMenuBar>
#include <QShortcut>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>

#include "app/main/UnitMain.h"
#include "platform/qt/FormWindow.h"
#include "platform/qt/Icons.h"
#include "platform/qt/Keep.h"
#include "platform/qt/Look.h"
#include "platform/qt/QtText.h"
#include "platform/qt/QtWindows.h"
#include "platform/qt/binders/Binder.h"
#include "platform/qt/binders/ListWidget.h"
#include "platform/qt/binders/TreeWidget.h"
#include "platform/qt/forms/BrowserPane.h"
#include "platform/qt/forms/Windows.h"

namespace dbkeeper::qt {

namespace {

constexpr int kWidth = 1100;
constexpr int kHeight = 700;
constexpr int kTreeWidth = 220;
constexpr int kBrowserHeight = 240;

// Here the toolkit owns no window menu that could be extended, so its commands stand in a menu of
// their own.
void AddSystemMenu(FormMainWindow& window, TFormMain& form, const ActionGuard& guard,
                   const QtWindows& windows) {
  QMenu* menu = window.menuBar()->addMenu("≡");
  menu->setObjectName("SystemMenu");
  for (const QtWindows::SystemMenuItem& item : windows.SystemMenu()) {
    QAction* action = menu->addAction(ToQtCaption(item.caption));
    action->setSeparator(item.caption.empty());
    action->setObjectName(QString("SystemMenu_%1").arg(item.id));
    QObject::connect(action, &QAction::triggered, &window,
                     [&form, &guard, id = item.id] { guard.Run([&] { form.SystemCommand(id); }); });
  }
}

// The pane that TFormMain shows and hides with its two parts; the splitter's handle goes with it.
QWidget* MakeListSide(TFormMain& form, const Binder& binder, FormMainWindow& window) {
  auto* side = new QSplitter(Qt::Vertical, &window);
  side->setObjectName("Splitter_SQL");
  side->setChildrenCollapsible(false);
  side->addWidget(binder.Make(form.ListViewMain));
  QFrame* pane = binder.Make(form.Browser.Pnl_SQL);
  LayOutBrowserPane(form.Browser, binder, *pane);
  side->addWidget(pane);
  side->setStretchFactor(0, 1);
  side->setSizes({kHeight, Scaled(window, kBrowserHeight)});
  return side;
}

}  // namespace

std::unique_ptr<QWidget> MakeMainWindow(TFormMain& form, const ActionGuard& guard,
                                        const QtWindows& windows) {
  auto window = std::make_unique<FormMainWindow>(form, guard);
  window->setObjectName(ToQt(form.Name));
  const Binder binder(guard, *window);

  auto* panel = binder.Make(form.Pnl_Main);
  auto* halves = new QSplitter(window.get());
  halves->setChildrenCollapsible(false);
  TreeWidget* const tree = binder.Make(form.TreeView);
  tree->Model().SetIcons(&NodeIcon);
  halves->addWidget(tree);
  halves->addWidget(MakeListSide(form, binder, *window));
  halves->setStretchFactor(1, 1);
  const int tree_width = Scaled(*window, kTreeWidth);
  halves->setSizes({tree_width, Scaled(*window, kWidth) - tree_width});
  auto* layout = new QVBoxLayout(panel);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(halves);
  window->setCentralWidget(panel);
  window->setStatusBar(binder.Make(form.StatusBar1));
  AddSystemMenu(*window, form, guard, windows);

  auto* refresh = new QShortcut(QKeySequence(Qt::Key_F5), window.get());
  QObject::connect(refresh, &QShortcut::activated, window.get(),
                   [&form, &guard] { guard.Run([&form] { form.TreeViewClick(); }); });

  window->resize(Scaled(*window, kWidth), Scaled(*window, kHeight));
  return window;
}

}  // namespace dbkeeper::qt

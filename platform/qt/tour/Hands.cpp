#include "platform/qt/tour/Hands.h"

#include <QApplication>
#include <QCheckBox>
#include <QHeaderView>
#include <QInputMethodEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTableView>
#include <QTest>
#include <QTreeView>
#include <QWindow>
#include <algorithm>

#include "platform/qt/tour/Tour.h"

namespace dbkeeper::qt::tour {

namespace {

constexpr int kMoment = 5;       // milliseconds
constexpr int kPatience = 2000;  // milliseconds

[[noreturn]] void Missing(const QString& what) {
  throw std::runtime_error(what.toStdString() + " is not shown");
}

// Windows that can be acted on: the modal one alone where there is one, otherwise all.
QWidgetList ActiveWindows() {
  if (QWidget* modal = QApplication::activeModalWidget()) return {modal};
  return QApplication::topLevelWidgets();
}

QWidget* FindOrNull(const QString& name) {
  for (QWidget* window : ActiveWindows()) {
    if (!window->isVisible()) continue;
    if (window->objectName() == name) return window;
    for (auto* widget : window->findChildren<QWidget*>(name)) {
      if (widget->isVisible()) return widget;
    }
  }
  return nullptr;
}

// A window that is pressed or typed into comes to the front, also where no window manager sees to
// it.
void BringToFront(QWidget& window) {
  // A person takes a moment; what comes at once was meant for what stood there before.
  QTest::qWait(kMoment);
  if (window.windowType() == Qt::Popup || window.isActiveWindow()) return;
  window.activateWindow();
  if (!QTest::qWaitForWindowActive(&window)) Missing("The focus of " + window.objectName());
}

void PressAt(QWidget& widget, const QPoint& at, Press press) {
  QWidget* window = widget.window();
  BringToFront(*window);
  const QPoint place = widget.mapTo(window, at);
  const auto button = press == Press::kRight ? Qt::RightButton : Qt::LeftButton;
  QTest::mouseMove(window->windowHandle(), place);
  if (press == Press::kDouble) {
    QTest::mouseDClick(window->windowHandle(), button, {}, place);
  } else {
    QTest::mouseClick(window->windowHandle(), button, {}, place);
  }
}

void PressIndex(QAbstractItemView& view, const QModelIndex& index, Press press) {
  view.scrollTo(index);
  const QRect cell = view.visualRect(index) & view.viewport()->rect();
  PressAt(*view.viewport(), cell.center(), press);
}

QModelIndex ChildOf(const QAbstractItemModel& model, const QModelIndex& parent,
                    const QString& text) {
  for (int row = 0; row < model.rowCount(parent); ++row) {
    const QModelIndex child = model.index(row, 0, parent);
    if (child.data().toString() == text) return child;
  }
  Missing("The node " + text);
}

QModelIndex NodeOf(QTreeView& tree, const std::vector<QString>& path) {
  QModelIndex node;
  for (const QString& text : path) {
    if (node.isValid()) tree.expand(node);
    node = ChildOf(*tree.model(), node, text);
  }
  return node;
}

// Where keys go: a popup, else the modal window, else the one in front.
QWindow& FocusWindow() {
  if (QWidget* popup = QApplication::activePopupWidget()) return *popup->windowHandle();
  QWidget* window = QApplication::activeModalWidget();
  if (window == nullptr) window = QApplication::activeWindow();
  if (window == nullptr) {
    for (QWidget* candidate : ActiveWindows()) {
      if (candidate->isVisible()) window = candidate;
    }
  }
  if (window == nullptr) Missing("A window for the keys");
  BringToFront(*window);
  return *window->windowHandle();
}

}  // namespace

QWidget& Find(const QString& name) {
  QWidget* found = FindOrNull(name);
  if (found == nullptr) Missing(name);
  return *found;
}

bool IsShown(const QString& name) { return FindOrNull(name) != nullptr; }

void Click(const QString& name) {
  QWidget& widget = Find(name);
  QPoint at = widget.rect().center();
  if (const auto* box = dynamic_cast<QCheckBox*>(&widget)) {
    QStyleOptionButton option;
    option.initFrom(box);
    at = box->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, box).center();
  }
  PressAt(widget, at, Press::kLeft);
}

void ClickButton(const QString& caption) {
  for (QPushButton* button : Find("MessageBox").findChildren<QPushButton*>()) {
    if (button->text() == caption) return PressAt(*button, button->rect().center(), Press::kLeft);
  }
  Missing("The button " + caption);
}

void ClickNode(const QString& tree, const std::vector<QString>& path, Press press) {
  auto& view = FindA<QTreeView>(tree);
  PressIndex(view, NodeOf(view, path), press);
}

void ClickRow(const QString& list, int column, const QString& text, Press press) {
  auto& view = FindA<QTreeView>(list);
  const std::vector<QString> cells = Column(list, column);
  const auto found = std::find(cells.begin(), cells.end(), text);
  if (found == cells.end()) Missing("The row " + text);
  const int row = static_cast<int>(found - cells.begin());
  PressIndex(view, view.model()->index(row, column), press);
}

void ClickColumn(const QString& list, int column) {
  QHeaderView& header = *FindA<QTreeView>(list).header();
  const int middle = header.sectionViewportPosition(column) + header.sectionSize(column) / 2;
  PressAt(*header.viewport(), {middle, header.height() / 2}, Press::kLeft);
}

void ClickCell(const QString& grid, int row, int column, Press press) {
  auto& view = FindA<QTableView>(grid);
  PressIndex(view, view.model()->index(row, column), press);
}

void OpenSystemMenu() {
  auto* bar = Find("FormMain").findChild<QMenuBar*>();
  PressAt(*bar, bar->actionGeometry(bar->actions().first()).center(), Press::kLeft);
}

void ChooseItem(const QString& item) {
  QMenu& menu = OpenMenu();
  for (QAction* action : menu.actions()) {
    if (action->text().replace("&&", "&") != item || !action->isVisible()) continue;
    // A menu below it opens a moment later; the item itself may be gone with what it does.
    const QPointer<QMenu> below = action->menu();
    PressAt(menu, menu.actionGeometry(action).center(), Press::kLeft);
    if (below != nullptr && !QTest::qWaitFor([&] { return below->isVisible(); }, kPatience)) {
      Missing("The menu of " + item);
    }
    return;
  }
  Missing("The item " + item);
}

void PressKey(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(&FocusWindow(), key, modifiers);
}

void TypeText(const QString& text) {
  for (const QChar character : text) {
    if (character.unicode() < 128) {
      QTest::keyClick(&FocusWindow(), character.toLatin1());
    } else {
      // As an input method hands over what it has composed.
      QInputMethodEvent composed;
      composed.setCommitString(character);
      QApplication::sendEvent(QApplication::focusWidget(), &composed);
    }
  }
}

void TypeInto(const QString& name, const QString& text) {
  Click(name);
  PressKey(Qt::Key_A, Qt::ControlModifier);
  TypeText(text);
}

void TypeIntoCell(const QString& grid, int row, int column, const QString& text) {
  ClickCell(grid, row, column);
  PressKey(Qt::Key_F2);
  PressKey(Qt::Key_A, Qt::ControlModifier);
  TypeText(text);
}

void CloseWindow(const QString& name) { Find(name).window()->close(); }

std::vector<QString> Column(const QString& list, int column) {
  const QAbstractItemModel& model = *FindA<QTreeView>(list).model();
  std::vector<QString> texts;
  for (int row = 0; row < model.rowCount(); ++row) {
    texts.push_back(model.index(row, column).data().toString());
  }
  return texts;
}

std::vector<QString> Headers(const QString& list) {
  const QAbstractItemModel& model = *FindA<QTreeView>(list).model();
  std::vector<QString> texts;
  for (int column = 0; column < model.columnCount(); ++column) {
    texts.push_back(model.headerData(column, Qt::Horizontal).toString());
  }
  return texts;
}

std::vector<QString> ChildrenOf(const QString& tree, const std::vector<QString>& path) {
  auto& view = FindA<QTreeView>(tree);
  const QModelIndex node = NodeOf(view, path);
  const int rows = view.model()->rowCount(node);
  std::vector<QString> texts;
  texts.reserve(static_cast<std::size_t>(rows));
  for (int row = 0; row < rows; ++row) {
    texts.push_back(view.model()->index(row, 0, node).data().toString());
  }
  return texts;
}

void RequireCell(const QString& grid, int row, int column, const QString& text,
                 const QString& mark) {
  const QAbstractItemModel& model = *FindA<QTableView>(grid).model();
  RequireEqual(model.index(row, column).data().toString(), text);
  RequireEqual(model.headerData(row, Qt::Vertical).toString(), mark);
}

QString StatusText() { return FindA<QStatusBar>("StatusBar1").findChild<QLabel*>()->text(); }

QString BoxText() { return FindA<QMessageBox>("MessageBox").text(); }

QMenu& OpenMenu() {
  auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
  if (menu == nullptr) Missing("A popup menu");
  return *menu;
}

}  // namespace dbkeeper::qt::tour

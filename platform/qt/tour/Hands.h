// What a person does to the windows, with real key and mouse events, and what a person sees there.
//
// Widgets are named as their controls. Everything here throws std::runtime_error when what it is
// about is not on the screen.
#pragma once

#include <QMenu>
#include <QString>
#include <QWidget>
#include <stdexcept>
#include <string>
#include <vector>

namespace dbkeeper::qt::tour {

// Which mouse button is pressed.
enum class Press { kLeft, kRight, kDouble };

// The visible widget of that name in the topmost window that has it.
QWidget& Find(const QString& name);
template <class Widget>
Widget& FindA(const QString& name) {
  auto* widget = dynamic_cast<Widget*>(&Find(name));
  if (widget == nullptr) throw std::runtime_error(name.toStdString() + " is of another kind");
  return *widget;
}
bool IsShown(const QString& name);

// A press in the middle of a widget; a check box is pressed on its box.
void Click(const QString& name);
// A button of the box that is open, by its caption.
void ClickButton(const QString& caption);
// A node by the texts on its way from the root; the nodes above it are opened first.
void ClickNode(const QString& tree, const std::vector<QString>& path, Press press = Press::kLeft);
// The first row whose cell of that column has the text.
void ClickRow(const QString& list, int column, const QString& text, Press press = Press::kLeft);
void ClickColumn(const QString& list, int column);
// A cell of a grid.
void ClickCell(const QString& grid, int row, int column, Press press = Press::kLeft);
// The main window's own menu.
void OpenSystemMenu();
// An item of the popup menu that is open; its sub-menu opens when it has one.
void ChooseItem(const QString& item);
// A key for the widget that has the focus.
void PressKey(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
// Types into the widget that has the focus; Japanese as an input method hands it over.
void TypeText(const QString& text);
// Gives a cell the focus by a press, opens its editor, and types another text; the editor stays.
void TypeIntoCell(const QString& grid, int row, int column, const QString& text);
// Gives a widget the focus by a press, marks its text, and types another one.
void TypeInto(const QString& name, const QString& text);
// The window's own close button.
void CloseWindow(const QString& name);

// Texts of a list's column from the first row to the last.
std::vector<QString> Column(const QString& list, int column);
std::vector<QString> Headers(const QString& list);
std::vector<QString> ChildrenOf(const QString& tree, const std::vector<QString>& path);
// Throws unless a cell of a grid shows the text and its row the mark before it.
void RequireCell(const QString& grid, int row, int column, const QString& text,
                 const QString& mark);
QString StatusText();
// The text of the message box that is open.
QString BoxText();
// The popup menu that is open.
QMenu& OpenMenu();

}  // namespace dbkeeper::qt::tour

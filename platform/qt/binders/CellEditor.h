// The field in which a cell of a grid is typed.
#pragma once

#include <QLineEdit>
#include <functional>

namespace dbkeeper::qt {

class CellEditor : public QLineEdit {
 public:
  using QLineEdit::QLineEdit;

  // Gives the typed text to the cell and closes the editor; false where the cell refused it.
  std::function<bool()> Finish;
};

// Ends the typing into a cell where one is being typed; false where the cell refused the text.
bool FinishTyping();

}  // namespace dbkeeper::qt

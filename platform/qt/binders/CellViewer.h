// Shows the whole of one cell, and changes it where it may be changed.
#pragma once

#include <QDialog>
#include <QString>
#include <optional>
#include <string>

#include "controls/DataGrid.h"

class QPlainTextEdit;

namespace dbkeeper::qt {

enum class CellUse { kRead, kChange };

class CellViewer : public QDialog {
 public:
  // Binary is shown as a table of bytes, or as digits where it may be changed.
  CellViewer(const GridColumn& column, const std::string& text, CellUse use, QWidget* parent);

  // Whether a person gave the cell another value before the dialog was accepted, and which one;
  // absence inside is a null.
  bool HasChange() const;
  std::optional<std::string> NewText() const;

 private:
  QPlainTextEdit* text_;
  bool null_chosen_ = false;
};

// Bytes, given as "0x" and digits, sixteen a line with their place and their letters.
QString HexTable(const std::string& digits);

}  // namespace dbkeeper::qt

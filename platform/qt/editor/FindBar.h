// The line below an editor in which a person types what to find in it.
#pragma once

#include <QFrame>
#include <QTextDocument>

class QCheckBox;
class QLabel;
class QLineEdit;

namespace dbkeeper::qt {

class SqlEditor;

class FindBar : public QFrame {
 public:
  // Hidden until Open.
  FindBar(SqlEditor& editor, QWidget* parent);

  // Shows the line with the editor's selection in it.
  void Open();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  enum class Direction { kForwards, kBackwards };

  void Find(Direction direction);
  void CloseBar();

  SqlEditor& editor_;
  QLineEdit* text_;
  QCheckBox* with_case_;
  QLabel* note_;
};

}  // namespace dbkeeper::qt

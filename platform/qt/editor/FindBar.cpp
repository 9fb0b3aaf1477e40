#include "platform/qt/editor/FindBar.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "platform/qt/editor/SqlEditor.h"

namespace dbkeeper::qt {

FindBar::FindBar(SqlEditor& editor, QWidget* parent)
    : QFrame(parent),
      editor_(editor),
      text_(new QLineEdit(this)),
      with_case_(new QCheckBox("大文字小文字を区別", this)),
      note_(new QLabel(this)) {
  setObjectName("FindBar");
  text_->setObjectName("FindBar_Text");
  auto* back = new QPushButton("前へ", this);
  auto* next = new QPushButton("次へ", this);
  auto* close = new QPushButton("X", this);
  close->setFixedWidth(close->sizeHint().height());
  connect(back, &QPushButton::clicked, this, [this] { Find(Direction::kBackwards); });
  connect(next, &QPushButton::clicked, this, [this] { Find(Direction::kForwards); });
  connect(close, &QPushButton::clicked, this, [this] { CloseBar(); });

  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(3, 2, 3, 2);
  row->addWidget(new QLabel("検索 :", this));
  row->addWidget(text_, 1);
  row->addWidget(back);
  row->addWidget(next);
  row->addWidget(with_case_);
  row->addWidget(note_);
  row->addWidget(close);
  hide();
}

void FindBar::Open() {
  const QString selected = editor_.textCursor().selectedText();
  if (!selected.isEmpty() && !selected.contains(QChar::ParagraphSeparator)) {
    text_->setText(selected);
  }
  note_->clear();
  show();
  text_->setFocus();
  text_->selectAll();
}

void FindBar::CloseBar() {
  hide();
  editor_.setFocus();
}

void FindBar::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Escape:
      return CloseBar();
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return Find(event->modifiers().testFlag(Qt::ShiftModifier) ? Direction::kBackwards
                                                                 : Direction::kForwards);
    default:
      QFrame::keyPressEvent(event);
  }
}

void FindBar::Find(Direction direction) {
  if (text_->text().isEmpty()) return;
  QTextDocument::FindFlags flags;
  flags.setFlag(QTextDocument::FindCaseSensitively, with_case_->isChecked());
  flags.setFlag(QTextDocument::FindBackward, direction == Direction::kBackwards);
  note_->setText(editor_.Find(text_->text(), flags) ? QString() : "見つかりません");
}

}  // namespace dbkeeper::qt

#include "platform/qt/binders/CellViewer.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/qt/Look.h"
#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 400;
constexpr qsizetype kBytesOfLine = 16;

}  // namespace

QString HexTable(const std::string& digits) {
  const QByteArray bytes = QByteArray::fromHex(QByteArray::fromStdString(digits).mid(2));
  QString table;
  for (qsizetype at = 0; at < bytes.size(); at += kBytesOfLine) {
    const QByteArray line = bytes.mid(at, kBytesOfLine);
    QString letters;
    for (const char c : line) letters += c >= 0x20 && c < 0x7F ? QChar(c) : QChar('.');
    table += QString("%1  %2  %3\n")
                 .arg(at, 8, 16, QChar('0'))
                 .arg(QString(line.toHex(' ')).leftJustified(kBytesOfLine * 3 - 1))
                 .arg(letters);
  }
  return table;
}

CellViewer::CellViewer(const GridColumn& column, const std::string& text, CellUse use,
                       QWidget* parent)
    : QDialog(parent), text_(new QPlainTextEdit(this)) {
  setObjectName("CellViewer");
  setWindowTitle(ToQt(column.Caption + "  " + column.TypeHint));
  text_->setObjectName("CellText");
  const bool change = use == CellUse::kChange;
  const bool binary = column.Kind == GridCellKind::kBinary;
  const bool as_table = binary && !change;
  if (binary) text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  if (as_table) text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  text_->setPlainText(as_table ? HexTable(text) : ToQtLines(text));
  text_->document()->setModified(false);
  text_->setReadOnly(!change);

  auto* buttons = new QDialogButtonBox(this);
  if (change) {
    buttons->addButton("OK", QDialogButtonBox::AcceptRole)->setObjectName("CellOk");
    auto* null_button = buttons->addButton("NULL", QDialogButtonBox::ActionRole);
    null_button->setObjectName("CellNull");
    connect(null_button, &QPushButton::clicked, this, [this] {
      null_chosen_ = true;
      accept();
    });
  }
  buttons->addButton(change ? "キャンセル" : "閉じる", QDialogButtonBox::RejectRole)
      ->setObjectName("CellClose");
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(text_);
  layout->addWidget(buttons);
  resize(Scaled(*this, kWidth), Scaled(*this, kHeight));
}

bool CellViewer::HasChange() const {
  return result() == Accepted && (null_chosen_ || text_->document()->isModified());
}

std::optional<std::string> CellViewer::NewText() const {
  if (null_chosen_) return std::nullopt;
  return FromQtLines(text_->toPlainText());
}

}  // namespace dbkeeper::qt

#include "query/ResultExport.h"

#include <cstddef>
#include <cstdint>

#include "app/support/FileReplacement.h"

namespace dbkeeper {

namespace {

constexpr std::size_t kPieceBytes = std::size_t{64} << 10;
constexpr std::int64_t kHeader = -1;  // the line before the first row

class Exporter {
 public:
  Exporter(RowView& rows, const std::filesystem::path& file, const Host& host)
      : rows_(rows), code_page_(host.code_page), file_(host.disk, file) {}

  std::optional<std::string> Run() {
    auto lacking = WriteInCodePage();
    if (lacking) WriteInUtf8();
    file_.Commit();
    return lacking;
  }

 private:
  std::string_view Cell(std::int64_t row, std::size_t field) {
    return row == kHeader ? std::string_view(rows_.Fields()[field].name)
                          : rows_.StoredText(row, field);
  }

  // Appends lines from `row` on until the piece is full; gives the row behind them.
  std::int64_t FillPiece(std::int64_t row, std::string& piece) {
    const std::int64_t end = rows_.RowCount().Rows;
    const std::size_t fields = rows_.Fields().size();
    for (; row < end && piece.size() < kPieceBytes; ++row) {
      if (rows_.IsNew(row)) continue;
      for (std::size_t field = 0; field < fields; ++field) {
        if (field > 0) piece += '\t';
        piece += Cell(row, field);
      }
      piece += "\r\n";
    }
    return row;
  }

  // Stops at the first character that the code page lacks, and gives its place.
  std::optional<std::string> WriteInCodePage() {
    const std::int64_t end = rows_.RowCount().Rows;
    for (std::int64_t row = kHeader; row < end;) {
      std::string piece;
      const std::int64_t behind = FillPiece(row, piece);
      const auto encoded = code_page_.FromUtf8(piece);
      if (!encoded) return FirstLacking(row, behind);
      file_.Write(*encoded);
      row = behind;
    }
    return std::nullopt;
  }

  std::optional<std::string> FirstLacking(std::int64_t row, std::int64_t end) {
    for (; row < end; ++row) {
      if (rows_.IsNew(row)) continue;
      for (std::size_t field = 0; field < rows_.Fields().size(); ++field) {
        if (code_page_.FromUtf8(Cell(row, field))) continue;
        const std::string line =
            row == kHeader ? std::string("見出し") : std::to_string(row + 1) + "行目";
        return line + "「" + rows_.Fields()[field].name + "」列";
      }
    }
    return std::string();
  }

  void WriteInUtf8() {
    file_.Restart();
    file_.Write("\xEF\xBB\xBF");
    const std::int64_t end = rows_.RowCount().Rows;
    for (std::int64_t row = kHeader; row < end;) {
      std::string piece;
      row = FillPiece(row, piece);
      file_.Write(piece);
    }
  }

  RowView& rows_;
  CodePage& code_page_;
  FileReplacement file_;
};

}  // namespace

std::optional<std::string> ExportResult(RowView& rows, const std::filesystem::path& file,
                                        const Host& host) {
  return Exporter(rows, file, host).Run();
}

}  // namespace dbkeeper

#include "app/session/Query.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "app/support/DateText.h"
#include "app/support/NumberText.h"
#include "app/support/TextHelpers.h"

namespace dbkeeper {

std::string FieldValue::AsString() const {
  std::string room;
  return std::string(AsText(room));
}

std::string_view FieldValue::AsText(std::string& room) const {
  if (field_.kind != FieldKind::kDateTime || text_.empty()) return text_;
  return room = ServerDateToHostText(text_, locale_.ShortDateFormat());
}

std::int64_t FieldValue::AsInteger() const { return text_.empty() ? 0 : ParseInteger(text_); }

Query::Query(Connection& connection, HostLocale& locale, DatabaseSwitched switched)
    : connection_(connection), locale_(locale), switched_(std::move(switched)) {}

std::string Query::Text() const {
  std::string text;
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    if (i > 0) text += "\r\n";
    text += lines_[i];
  }
  return text;
}

void Query::Open() {
  Close();
  const std::string text = Text();
  reader_ = connection_.Query(text);
  NoteSwitch(text);
  eof_ = reader_ == nullptr || !reader_->Next();
}

void Query::Open(std::string text) {
  Close();
  Clear();
  Add(std::move(text));
  Open();
}

std::vector<std::string> Query::Texts(std::string text, std::string_view field) {
  Open(std::move(text));
  std::vector<std::string> texts;
  for (; !Eof(); Next()) texts.push_back(FieldByName(field).AsString());
  Close();
  return texts;
}

std::int64_t Query::ExecSQL() {
  Close();
  const std::string text = Text();
  const std::int64_t affected = connection_.Execute(text);
  NoteSwitch(text);
  return affected;
}

std::int64_t Query::Command(std::string text) {
  Close();
  Clear();
  Add(std::move(text));
  const std::int64_t affected = ExecSQL();
  Clear();
  return affected;
}

void Query::Close() {
  reader_.reset();
  eof_ = true;
}

void Query::Next() {
  if (!eof_) eof_ = !reader_->Next();
}

const std::vector<Field>& Query::Fields() const {
  if (reader_ == nullptr) throw SessionError("The query is not open.");
  return reader_->Fields();
}

std::size_t Query::FieldIndex(std::string_view name) const {
  const auto& fields = Fields();
  const auto found = std::find_if(fields.begin(), fields.end(), [name](const Field& field) {
    return EqualsIgnoringCase(field.name, name);
  });
  if (found == fields.end()) {
    throw SessionError("Field '" + std::string(name) + "' not found");
  }
  return static_cast<std::size_t>(found - fields.begin());
}

FieldValue Query::FieldByName(std::string_view name) const { return FieldAt(FieldIndex(name)); }

FieldValue Query::FieldAt(std::size_t index) const {
  const Field& field = Fields().at(index);
  if (eof_) return {field, {}, true, locale_};
  return {field, reader_->Text(index), reader_->IsNull(index), locale_};
}

void Query::NoteSwitch(const std::string& sent) const {
  if (!switched_) return;
  if (const auto database = LeadingUseStatement(sent)) switched_(*database);
}

}  // namespace dbkeeper

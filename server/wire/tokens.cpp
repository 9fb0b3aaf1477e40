#include "server/wire/tokens.h"

#include <algorithm>
#include <string>

#include "server/types/type_rules.h"
#include "server/wire/code_page.h"
#include "server/wire/value_codec.h"

namespace dbkeeper::server {
namespace {

constexpr std::uint8_t kReturnStatus = 0x79;
constexpr std::uint8_t kError = 0xAA;
constexpr std::uint8_t kInfo = 0xAB;
constexpr std::uint8_t kReturnValue = 0xAC;
constexpr std::uint8_t kLoginAcknowledge = 0xAD;
constexpr std::uint8_t kEnvironmentChange = 0xE3;
constexpr std::uint8_t kCollationKind = 7;

constexpr std::uint16_t kNullable = 0x01;
constexpr std::uint16_t kUpdatable = 0x08;
constexpr std::uint16_t kIdentity = 0x10;

constexpr std::uint16_t kTimestampUserType = 80;
// A message keeps well under the 64 KB that the token's length can say.
constexpr std::size_t kLongestMessage = 8000;

std::string Utf16(std::string_view text, std::size_t most_characters) {
  std::string units;
  AppendUtf16(text, units);
  units.resize(std::min(units.size(), most_characters * 2));
  return units;
}

// Appends a token whose length, in two bytes, stands behind its first byte.
template <typename Body>
void AppendSizedToken(std::uint8_t token, ByteWriter& out, Body body) {
  out.U8(token);
  const std::size_t start = out.size();
  out.U16(0);
  body();
  out.Patch(start, out.size() - start - 2, 2);
}

void AppendShortText(std::string_view text, ByteWriter& out) {
  const std::string units = Utf16(text, 255);
  out.U8(units.size() / 2).Raw(units);
}

void AppendLongText(std::string_view text, ByteWriter& out) {
  const std::string units = Utf16(text, kLongestMessage);
  out.U16(units.size() / 2).Raw(units);
}

}  // namespace

void AppendDone(DoneToken token, const Done& done, ByteWriter& out) {
  out.U8(token).U16(done.status).U16(done.command).U32(done.rows);
}

void AppendMessage(const ServerMessage& message, std::string_view server_name, ByteWriter& out) {
  AppendSizedToken(message.IsError() ? kError : kInfo, out, [&] {
    out.U32(message.number).U8(message.state).U8(message.severity);
    AppendLongText(message.text, out);
    AppendShortText(server_name, out);
    AppendShortText("", out);  // the procedure: none runs here
    out.U16(message.line);
  });
}

void AppendEnvironment(Environment what, std::string_view now, std::string_view before,
                       ByteWriter& out) {
  AppendSizedToken(kEnvironmentChange, out, [&] {
    out.U8(what);
    AppendShortText(now, out);
    AppendShortText(before, out);
  });
}

void AppendCollationChange(ByteWriter& out) {
  AppendSizedToken(kEnvironmentChange, out,
                   [&] { out.U8(kCollationKind).U8(kCollation.size()).Raw(kCollation).U8(0); });
}

void AppendLoginAcknowledge(ByteWriter& out) {
  AppendSizedToken(kLoginAcknowledge, out, [&] {
    out.U8(1).U32(0x01000071);  // the dialect: Transact-SQL; the version of the protocol
    AppendShortText("Microsoft SQL Server", out);
    out.U32(0xF7070008);  // 8.0.2039
  });
}

void AppendColumns(const std::vector<ResultColumn>& columns, ByteWriter& out) {
  out.U8(kColumnsToken).U16(columns.size());
  for (const ResultColumn& column : columns) {
    out.U16(column.type.id == TypeId::kTimestamp ? kTimestampUserType : 0);
    out.U16((column.type.nullable ? kNullable : 0) | (column.updatable ? kUpdatable : 0) |
            (column.identity ? kIdentity : 0));
    AppendTypeInfo(column.type, out);
    if (IsLargeObject(column.type.id)) AppendLongText(column.base_table, out);
    AppendShortText(column.name, out);
  }
}

void AppendRow(const std::vector<ResultColumn>& columns, const RowView& row, ByteWriter& out) {
  out.U8(kRowToken);
  for (std::size_t i = 0; i < columns.size(); ++i) {
    AppendValue(columns[i].type, row, i, out);
  }
}

void AppendRowStatus(RowStatus status, ByteWriter& out) { out.U8(4).U32(status); }

void AppendReturnStatus(int status, ByteWriter& out) { out.U8(kReturnStatus).U32(status); }

void AppendReturnedInteger(std::string_view name, std::int64_t value, ByteWriter& out) {
  AppendSizedToken(kReturnValue, out, [&] {
    AppendShortText(name, out);
    out.U8(1).U16(0).U16(0);  // an output parameter; its user type and flags
    AppendTypeInfo(SqlType{TypeId::kInt}, out);
    out.U8(4).U32(value);
  });
}

}  // namespace dbkeeper::server

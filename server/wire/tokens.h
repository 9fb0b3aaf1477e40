// The tokens of an answer, appended to a buffer one by one.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "server/engine/result_sink.h"
#include "server/wire/bytes.h"
#include "server/wire/code_page.h"

namespace dbkeeper::server {

// Which of the three DONE tokens: after a statement of a batch, after one inside a procedure, at
// the end of a procedure.
enum class DoneToken : std::uint8_t { kBatch = 0xFD, kProcedure = 0xFE, kInProcedure = 0xFF };

struct DoneStatus {
  static constexpr std::uint16_t kMore = 0x01;
  static constexpr std::uint16_t kError = 0x02;
  static constexpr std::uint16_t kCount = 0x10;
  static constexpr std::uint16_t kAttention = 0x20;
};

enum class Environment : std::uint8_t { kDatabase = 1, kLanguage = 2, kPacketSize = 4 };

// A UTF-8 text as UTF-16 behind its length in characters; what is too long is cut.
void AppendShortText(std::string_view text, ByteWriter& out);
void AppendLongText(std::string_view text, ByteWriter& out);

void AppendDone(DoneToken token, std::uint16_t status, std::uint16_t command, std::int64_t rows,
                ByteWriter& out);
void AppendMessage(const ServerMessage& message, std::string_view server_name, ByteWriter& out);
void AppendEnvironment(Environment what, std::string_view now, std::string_view before,
                       ByteWriter& out);
void AppendCollationChange(ByteWriter& out);
void AppendLoginAcknowledge(ByteWriter& out);
void AppendColumns(const std::vector<ResultColumn>& columns, ByteWriter& out);
void AppendRow(const std::vector<ResultColumn>& columns, const RowView& row,
               const CodePage932& code_page, ByteWriter& out);
// The value of a cursor's status column.
enum class RowStatus : std::uint32_t { kFetched = 1, kMissing = 2 };
void AppendRowStatus(RowStatus status, ByteWriter& out);
void AppendReturnStatus(int status, ByteWriter& out);
// An output parameter of type int.
void AppendReturnedInteger(std::string_view name, std::int32_t value, ByteWriter& out);

}  // namespace dbkeeper::server

// The tokens of an answer, appended to a buffer one by one.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "server/types/result_sink.h"
#include "server/wire/bytes.h"

namespace dbkeeper::server {

// What rows stand under, in answers and in bulk loads.
constexpr std::uint8_t kColumnsToken = 0x81;
constexpr std::uint8_t kRowToken = 0xD1;

// Which of the three DONE tokens: after a statement of a batch, after one inside a procedure, at
// the end of a procedure.
enum class DoneToken : std::uint8_t { kBatch = 0xFD, kProcedure = 0xFE, kInProcedure = 0xFF };

// Bits of a DONE's status.
enum DoneStatus : std::uint8_t {
  kDoneMore = 0x01,
  kDoneError = 0x02,
  kDoneCount = 0x10,
  kDoneAttention = 0x20
};

enum class Environment : std::uint8_t { kDatabase = 1, kLanguage = 2, kPacketSize = 4 };

// How a statement ended; the command is 0 for all but selects.
struct Done {
  int status = 0;
  std::uint16_t command = 0;
  std::int64_t rows = 0;
};

// Texts that are too long for their place are cut.
void AppendDone(DoneToken token, const Done& done, ByteWriter& out);
void AppendMessage(const ServerMessage& message, std::string_view server_name, ByteWriter& out);
void AppendEnvironment(Environment what, std::string_view now, std::string_view before,
                       ByteWriter& out);
void AppendCollationChange(ByteWriter& out);
void AppendLoginAcknowledge(ByteWriter& out);
void AppendColumns(const std::vector<ResultColumn>& columns, ByteWriter& out);
void AppendRow(const std::vector<ResultColumn>& columns, const RowView& row, ByteWriter& out);
// The value of a cursor's status column.
enum class RowStatus : std::uint32_t { kFetched = 1, kMissing = 2 };
void AppendRowStatus(RowStatus status, ByteWriter& out);
void AppendReturnStatus(int status, ByteWriter& out);
// An output parameter of type int.
void AppendReturnedInteger(std::string_view name, std::int64_t value, ByteWriter& out);

}  // namespace dbkeeper::server

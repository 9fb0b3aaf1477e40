#include "server/wire/rpc.h"

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <utility>

#include "server/sql/parser.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/wire/code_page.h"
#include "server/wire/value_codec.h"

namespace dbkeeper::server {
namespace {

constexpr std::uint16_t kByNumber = 0xFFFF;
constexpr std::uint8_t kNextCall = 0x80;
constexpr std::uint8_t kOutput = 0x01;
constexpr std::uint8_t kDefault = 0x02;
constexpr std::size_t kMostParameters = 2100;
// More than any program keeps open; a client that leaks them gets an error and not our memory.
constexpr std::size_t kMostHandles = 10'000;

constexpr int kOptionMask = 0x1F;  // of the scroll and concurrency options
constexpr int kConcurrencyReadOnly = 1;
constexpr int kFetchInfo = 0x100;
constexpr int kChangeMask = 0x07;
constexpr int kUpdate = 1;
constexpr int kDelete = 2;
constexpr int kInsert = 4;

constexpr std::pair<int, FetchKind> kFetches[] = {
    {0x01, FetchKind::kFirst},   {0x02, FetchKind::kNext},     {0x04, FetchKind::kPrior},
    {0x08, FetchKind::kLast},    {0x10, FetchKind::kAbsolute}, {0x20, FetchKind::kRelative},
    {0x80, FetchKind::kRefresh},
};

// The integer or text of an argument; `otherwise` when it is none.
template <typename Value>
Value At(const Parameters& arguments, std::size_t index, Value otherwise = {}) {
  const Value* const value =
      index < arguments.size() ? std::get_if<Value>(&arguments[index].value) : nullptr;
  return value != nullptr ? *value : otherwise;
}

int HandleAt(const Parameters& arguments) {
  return static_cast<int>(At<std::int64_t>(arguments, 0));
}

// The values from `first` on; those without a name have the one they are declared with.
Parameters NamedValues(const Parameters& arguments, std::size_t first, const Parameters& declared) {
  if (arguments.size() <= first) return {};
  Parameters values(arguments.begin() + static_cast<std::ptrdiff_t>(first), arguments.end());
  for (std::size_t i = 0; i < values.size() && i < declared.size(); ++i) {
    if (values[i].name.empty()) values[i].name = declared[i].name;
  }
  return values;
}

// Parameters as a call declares them. Values of output parameters would have to come back, which
// they do not here.
Parameters Declared(const Parameters& arguments, std::size_t index) {
  Parameters declared = ParseParameterDeclarations(At<std::string>(arguments, index));
  for (const Parameter& parameter : declared) {
    if (parameter.is_output) throw Unsupported("the output parameter " + parameter.name);
  }
  return declared;
}

void ReturnHandle(const Parameters& arguments, int handle, WireSink& sink) {
  sink.ReturnStatusOnce(sink.failed() ? 1 : 0);
  sink.ReturnInteger(arguments[0].name, handle);
}

// The values of the output parameters from `first` on.
void ReturnIntegers(const Parameters& arguments, std::size_t first,
                    std::initializer_list<std::int64_t> values, WireSink& sink) {
  for (const std::int64_t value : values) {
    if (first >= arguments.size()) return;
    const Parameter& argument = arguments[first++];
    if (argument.is_output) sink.ReturnInteger(argument.name, value);
  }
}

}  // namespace

const std::vector<RpcCalls::Procedure>& RpcCalls::Procedures() {
  static const std::vector<Procedure> procedures = {
      {1, "sp_cursor", 3, &RpcCalls::CursorChange},
      {2, "sp_cursoropen", 2, &RpcCalls::CursorOpen},
      {7, "sp_cursorfetch", 1, &RpcCalls::CursorFetch},
      {8, "sp_cursoroption", 2, &RpcCalls::CursorOption},
      {9, "sp_cursorclose", 1, &RpcCalls::CursorClose},
      {10, "sp_executesql", 1, &RpcCalls::ExecuteSql},
      {11, "sp_prepare", 3, &RpcCalls::Prepare},
      {12, "sp_execute", 1, &RpcCalls::Execute},
      {13, "sp_prepexec", 3, &RpcCalls::PrepareAndExecute},
      {15, "sp_unprepare", 1, &RpcCalls::Unprepare},
  };
  return procedures;
}

RpcRequest ReadRpcRequest(ByteReader& in) {
  RpcRequest request;
  const std::uint16_t length = in.U16();
  if (length == kByNumber) {
    const std::uint16_t id = in.U16();
    const auto& table = RpcCalls::Procedures();
    const auto row = std::ranges::find(table, id, &RpcCalls::Procedure::id);
    request.procedure =
        row != table.end() ? std::string(row->name) : "procedure number " + std::to_string(id);
  } else {
    request.procedure = Utf16ToUtf8(in.Raw(std::size_t{length} * 2));
  }
  in.U16();  // options: neither recompiling nor leaving out the metadata means anything here
  while (!in.AtEnd()) {
    const std::uint8_t name_length = in.U8();
    if (name_length == kNextCall) {
      request.more_follow = !in.AtEnd();
      return request;
    }
    if (request.parameters.size() == kMostParameters) throw WireError("too many parameters");
    Parameter parameter;
    parameter.name = Utf16ToUtf8(in.Raw(std::size_t{name_length} * 2));
    const std::uint8_t status = in.U8();
    const WireType type = ReadTypeInfo(in);
    ReadValue(in, type, ValuePlace::kParameter, parameter);
    if ((status & kDefault) != 0) parameter.value = {};
    parameter.is_output = (status & kOutput) != 0;
    request.parameters.push_back(std::move(parameter));
  }
  return request;
}

void RpcCalls::Run(const RpcRequest& request, WireSink& sink) {
  // The name may say where the procedure lives: "master.dbo.sp_executesql".
  const std::string lower = ToLowerAscii(request.procedure);
  const std::string_view last_part =
      std::string_view(lower).substr(std::min(lower.rfind('.') + 1, lower.size()));
  const auto& table = Procedures();
  const auto row = std::ranges::find(table, last_part, &Procedure::name);
  if (row == table.end()) {
    session_.RunProcedure(request.procedure, request.parameters, sink);
  } else if (request.parameters.size() < row->least_arguments) {
    sink.OnMessage(
        MakeMessage(201, {row->name, "@" + std::to_string(request.parameters.size() + 1)}));
  } else {
    try {
      (this->*row->handler)(request.parameters, sink);
    } catch (const SqlError& error) {
      sink.OnMessage(error.message());
    }
  }
}

// sp_executesql @stmt, @params, values ...
void RpcCalls::ExecuteSql(const Parameters& arguments, WireSink& sink) {
  session_.RunParameterized(At<std::string>(arguments, 0),
                            NamedValues(arguments, 2, Declared(arguments, 1)), sink);
}

// Keeps what stands behind the handle: @handle output, @params, @stmt.
int RpcCalls::Keep(const Parameters& arguments) {
  if (prepared_.size() >= kMostHandles) {
    Fail(701, {" There are too many prepared statements on this connection."});
  }
  prepared_[++last_handle_] = {Declared(arguments, 1), At<std::string>(arguments, 2)};
  return last_handle_;
}

void RpcCalls::RunPrepared(int handle, const Parameters& arguments, std::size_t first_value,
                           WireSink& sink) {
  const auto found = prepared_.find(handle);
  if (found == prepared_.end()) Fail(8179, {std::to_string(handle)});
  const auto& [declared, text] = found->second;
  const Parameters values = NamedValues(arguments, first_value, declared);
  if (values.size() < declared.size()) Fail(8178, {declared[values.size()].name});
  session_.RunParameterized(text, values, sink);
}

void RpcCalls::Prepare(const Parameters& arguments, WireSink& sink) {
  const int handle = Keep(arguments);
  session_.Describe(prepared_[handle].text, prepared_[handle].declared, sink);
  ReturnHandle(arguments, handle, sink);
}

// sp_prepexec @handle output, @params, @stmt, values ...
void RpcCalls::PrepareAndExecute(const Parameters& arguments, WireSink& sink) {
  const int handle = Keep(arguments);
  RunPrepared(handle, arguments, 3, sink);
  ReturnHandle(arguments, handle, sink);
}

// sp_execute @handle, values ...
void RpcCalls::Execute(const Parameters& arguments, WireSink& sink) {
  RunPrepared(HandleAt(arguments), arguments, 1, sink);
}

void RpcCalls::Unprepare(const Parameters& arguments, WireSink& /*sink*/) {
  const auto handle = HandleAt(arguments);
  if (prepared_.erase(handle) == 0) Fail(8179, {std::to_string(handle)});
}

// sp_cursoropen @cursor output, @stmt, @scrollopt output, @ccopt output, @rowcount output,
// [@params, values ...]
void RpcCalls::CursorOpen(const Parameters& arguments, WireSink& sink) {
  constexpr std::size_t kDeclaration = 5;
  const std::string text = At<std::string>(arguments, 1);
  std::unique_ptr<Cursor> cursor;
  if (arguments.size() > kDeclaration) {
    const Parameters declared = Declared(arguments, kDeclaration);
    session_.RunParameterized(text, NamedValues(arguments, kDeclaration + 1, declared), sink);
  } else if (cursors_.size() >= kMostHandles) {
    sink.OnMessage(MakeMessage(16955));
  } else {
    cursor = session_.OpenCursor(text, sink);
    // What is no single select gives its results at once; the client sees that from the handle 0.
    if (!cursor && !sink.failed()) session_.RunBatch(text, sink);
  }
  const std::int64_t scroll = At<std::int64_t>(arguments, 2, 1) & kOptionMask;
  const std::int64_t concurrency =
      At<std::int64_t>(arguments, 3, kConcurrencyReadOnly) & kOptionMask;
  const int handle = cursor ? ++last_handle_ : 0;
  const std::int64_t granted =
      cursor && cursor->updatable() ? concurrency : std::int64_t{kConcurrencyReadOnly};
  const std::int64_t rows = cursor ? cursor->row_count() : -1;
  if (cursor) {
    sink.OnColumns(cursor->columns());
    sink.OnStatementEnd({.rows = 0, .is_select = true});
    cursors_[handle] = std::move(cursor);
  }
  sink.ReturnStatusOnce(sink.failed() ? 1 : 0);
  ReturnIntegers(arguments, 0, {handle, 0, scroll, granted, rows}, sink);
}

Cursor& RpcCalls::FindCursor(const Parameters& arguments, std::string_view procedure) {
  const std::int64_t handle = At<std::int64_t>(arguments, 0);
  const auto found = cursors_.find(HandleAt(arguments));
  if (found == cursors_.end()) Fail(16909, {procedure, std::to_string(handle)});
  return *found->second;
}

// sp_cursorfetch @cursor, @fetchtype, @rownum, @nrows
void RpcCalls::CursorFetch(const Parameters& arguments, WireSink& sink) {
  Cursor& cursor = FindCursor(arguments, "sp_cursorfetch");
  constexpr int kNext = 2;
  const auto code = static_cast<int>(At<std::int64_t>(arguments, 1, kNext));
  if (code == kFetchInfo) {
    sink.ReturnStatusOnce(0);
    return ReturnIntegers(arguments, 2, {cursor.position(), cursor.row_count()}, sink);
  }
  const auto* const fetch =
      std::ranges::find(kFetches, code, [](const auto& row) { return row.first; });
  if (fetch == std::end(kFetches)) Fail(16902, {"sp_cursorfetch", "fetchtype"});
  const auto count = At<std::int64_t>(arguments, 3, 1);
  if (count < 0 || count > std::numeric_limits<int>::max()) {
    Fail(16902, {"sp_cursorfetch", "nrows"});
  }
  sink.AddRowStatus();
  sink.OnColumns(cursor.columns());
  cursor.Fetch(fetch->second, At<std::int64_t>(arguments, 2), static_cast<int>(count), sink);
}

// sp_cursoroption @cursor, @code, @value: names the cursor, or asks for text pointers, which are
// always sent. A name has no use without WHERE CURRENT OF.
void RpcCalls::CursorOption(const Parameters& arguments, WireSink& /*sink*/) {
  FindCursor(arguments, "sp_cursoroption");
}

void RpcCalls::CursorClose(const Parameters& arguments, WireSink& /*sink*/) {
  FindCursor(arguments, "sp_cursorclose");
  cursors_.erase(HandleAt(arguments));
}

// sp_cursor @cursor, @optype, @rownum, @table, values ...
void RpcCalls::CursorChange(const Parameters& arguments, WireSink& sink) {
  Cursor& cursor = FindCursor(arguments, "sp_cursor");
  constexpr std::size_t kFirstValue = 4;
  Parameters columns;
  for (const ResultColumn& column : cursor.columns()) columns.push_back({column.name, column.type});
  Parameters values = NamedValues(arguments, kFirstValue, columns);
  for (Parameter& value : values) {
    if (value.name.starts_with('@')) value.name.erase(0, 1);
  }
  const auto row = static_cast<int>(At<std::int64_t>(arguments, 2));
  const std::int64_t change = At<std::int64_t>(arguments, 1) & kChangeMask;
  if (change == kUpdate) {
    cursor.Update(row, values, sink);
  } else if (change == kDelete) {
    cursor.Delete(row, sink);
  } else if (change == kInsert) {
    cursor.Insert(values, sink);
  } else if (change != 0) {
    Fail(16902, {"sp_cursor", "optype"});
  }
}

}  // namespace dbkeeper::server

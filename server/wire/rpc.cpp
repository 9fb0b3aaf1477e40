#include "server/wire/rpc.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>

#include "server/wire/value_reader.h"

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

struct FetchRow {
  int code;
  FetchKind kind;
};
constexpr std::array kFetches = {
    FetchRow{0x01, FetchKind::kFirst},    FetchRow{0x02, FetchKind::kNext},
    FetchRow{0x04, FetchKind::kPrior},    FetchRow{0x08, FetchKind::kLast},
    FetchRow{0x10, FetchKind::kAbsolute}, FetchRow{0x20, FetchKind::kRelative},
    FetchRow{0x80, FetchKind::kRefresh},
};

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

ServerMessage Error(int number, std::string text) {
  ServerMessage message;
  message.number = number;
  message.text = std::move(text);
  return message;
}

std::int64_t IntegerAt(const std::vector<RpcParameter>& arguments, std::size_t index,
                       std::int64_t otherwise) {
  const bool there = index < arguments.size() && !arguments[index].is_null;
  return there ? arguments[index].integer : otherwise;
}

// The values from `first` on, each under the name it was declared with.
std::vector<RpcParameter> NamedValues(const std::vector<RpcParameter>& arguments, std::size_t first,
                                      const std::vector<std::string>& names) {
  if (arguments.size() <= first) return {};
  std::vector<RpcParameter> values(arguments.begin() + static_cast<std::ptrdiff_t>(first),
                                   arguments.end());
  for (std::size_t i = 0; i < values.size() && i < names.size(); ++i) {
    if (values[i].name.empty()) values[i].name = names[i];
  }
  return values;
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

RpcRequest ReadRpcRequest(ByteReader& in, const CodePage932& code_page) {
  RpcRequest request;
  const std::uint16_t length = in.U16();
  if (length == kByNumber) {
    const std::uint16_t id = in.U16();
    const auto& table = RpcCalls::Procedures();
    const auto row =
        std::find_if(table.begin(), table.end(), [id](const auto& each) { return each.id == id; });
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
    RpcParameter parameter;
    parameter.name = Utf16ToUtf8(in.Raw(std::size_t{name_length} * 2));
    const std::uint8_t status = in.U8();
    const WireType type = ReadTypeInfo(in);
    ReadValue(in, type, ValuePlace::kParameter, code_page, parameter);
    if ((status & kDefault) != 0) parameter.is_null = true;
    parameter.is_output = (status & kOutput) != 0;
    request.parameters.push_back(std::move(parameter));
  }
  return request;
}

std::vector<std::string> DeclaredNames(std::string_view declaration) {
  std::vector<std::string> names;
  int depth = 0;
  bool expect_name = true;
  for (std::size_t i = 0; i < declaration.size(); ++i) {
    const char c = declaration[i];
    if (c == '(') ++depth;
    if (c == ')') --depth;
    if (c == ',' && depth == 0) expect_name = true;
    if (c != '@' || !expect_name) continue;
    const std::size_t end = std::min(declaration.find_first_of(" \t\r\n,", i), declaration.size());
    names.emplace_back(declaration.substr(i, end - i));
    expect_name = false;
    i = end - 1;
  }
  return names;
}

RpcCalls::RpcCalls(Session& session) : session_(session) {}

void RpcCalls::Run(const RpcRequest& request, WireSink& sink) {
  // The name may say where the procedure lives: "master.dbo.sp_executesql".
  const std::string lower = LowerCase(request.procedure);
  const std::string_view last_part =
      std::string_view(lower).substr(std::min(lower.rfind('.') + 1, lower.size()));
  const auto& table = Procedures();
  const auto row = std::find_if(table.begin(), table.end(),
                                [&](const Procedure& each) { return each.name == last_part; });
  if (row == table.end()) {
    session_.RunProcedure(request.procedure, request.parameters, sink);
  } else if (request.parameters.size() < row->least_arguments) {
    sink.OnMessage(Error(201, "Procedure '" + std::string(row->name) +
                                  "' expects a parameter, which was not supplied."));
  } else {
    (this->*row->handler)(request.parameters, sink);
  }
}

// sp_executesql @stmt, @params, values ...
void RpcCalls::ExecuteSql(const Arguments& arguments, WireSink& sink) {
  const std::string declaration = arguments.size() > 1 ? arguments[1].bytes : "";
  session_.RunParameterized(arguments[0].bytes,
                            NamedValues(arguments, 2, DeclaredNames(declaration)), sink);
}

// Keeps what stands behind the handle: @handle output, @params, @stmt.
int RpcCalls::Keep(const Arguments& arguments) {
  prepared_[++last_handle_] = Prepared{DeclaredNames(arguments[1].bytes), arguments[2].bytes};
  return last_handle_;
}

void RpcCalls::RunPrepared(const Prepared& prepared, const Arguments& arguments,
                           std::size_t first_value, WireSink& sink) {
  const Arguments values = NamedValues(arguments, first_value, prepared.names);
  if (values.size() < prepared.names.size()) {
    sink.OnMessage(Error(8178, "Prepared statement expects parameter " +
                                   prepared.names[values.size()] + ", which was not supplied."));
    return;
  }
  session_.RunParameterized(prepared.text, values, sink);
}

void RpcCalls::Prepare(const Arguments& arguments, WireSink& sink) {
  if (prepared_.size() >= kMostHandles) {
    sink.OnMessage(Error(701, "There are too many prepared statements on this connection."));
    return;
  }
  const int handle = Keep(arguments);
  sink.ReturnStatusOnce(0);
  sink.ReturnInteger(arguments[0].name, handle);
}

// sp_prepexec @handle output, @params, @stmt, values ...
void RpcCalls::PrepareAndExecute(const Arguments& arguments, WireSink& sink) {
  if (prepared_.size() >= kMostHandles) {
    sink.OnMessage(Error(701, "There are too many prepared statements on this connection."));
    return;
  }
  const int handle = Keep(arguments);
  RunPrepared(prepared_[handle], arguments, 3, sink);
  sink.ReturnStatusOnce(sink.failed() ? 1 : 0);
  sink.ReturnInteger(arguments[0].name, handle);
}

// sp_execute @handle, values ...
void RpcCalls::Execute(const Arguments& arguments, WireSink& sink) {
  const std::int64_t handle = IntegerAt(arguments, 0, 0);
  const auto found = prepared_.find(static_cast<int>(handle));
  if (found == prepared_.end()) {
    sink.OnMessage(Error(
        8179, "Could not find prepared statement with handle " + std::to_string(handle) + "."));
    return;
  }
  RunPrepared(found->second, arguments, 1, sink);
}

void RpcCalls::Unprepare(const Arguments& arguments, WireSink& sink) {
  const std::int64_t handle = IntegerAt(arguments, 0, 0);
  if (prepared_.erase(static_cast<int>(handle)) == 0) {
    sink.OnMessage(Error(
        8179, "Could not find prepared statement with handle " + std::to_string(handle) + "."));
  }
}

// sp_cursoropen @cursor output, @stmt, @scrollopt output, @ccopt output, @rowcount output,
// [@params, values ...]
void RpcCalls::CursorOpen(const Arguments& arguments, WireSink& sink) {
  constexpr std::size_t kDeclaration = 5;
  const std::string& text = arguments[1].bytes;
  std::unique_ptr<Cursor> cursor;
  if (arguments.size() > kDeclaration) {
    const auto names = DeclaredNames(arguments[kDeclaration].bytes);
    session_.RunParameterized(text, NamedValues(arguments, kDeclaration + 1, names), sink);
  } else if (cursors_.size() >= kMostHandles) {
    sink.OnMessage(Error(16955, "Could not create an acceptable cursor."));
  } else {
    cursor = session_.OpenCursor(text, sink);
    // What is no single select gives its results at once; the client sees that from the handle 0.
    if (!cursor && !sink.failed()) session_.RunBatch(text, sink);
  }
  const std::int64_t scroll = IntegerAt(arguments, 2, 1) & kOptionMask;
  const std::int64_t concurrency = IntegerAt(arguments, 3, kConcurrencyReadOnly) & kOptionMask;
  const std::array<std::int64_t, 5> returned = {
      cursor ? ++last_handle_ : 0,
      0,
      scroll,
      cursor && cursor->updatable() ? concurrency : kConcurrencyReadOnly,
      cursor ? cursor->row_count() : -1,
  };
  if (cursor) {
    sink.OnColumns(cursor->columns());
    StatementEnd end;
    end.rows = 0;
    end.is_select = true;
    sink.OnStatementEnd(end);
    cursors_[last_handle_] = std::move(cursor);
  }
  sink.ReturnStatusOnce(sink.failed() ? 1 : 0);
  for (std::size_t i = 0; i < std::min(arguments.size(), returned.size()); ++i) {
    if (arguments[i].is_output) sink.ReturnInteger(arguments[i].name, returned[i]);
  }
}

Cursor* RpcCalls::FindCursor(const Arguments& arguments, std::string_view procedure,
                             WireSink& sink) {
  const std::int64_t handle = IntegerAt(arguments, 0, 0);
  const auto found = cursors_.find(static_cast<int>(handle));
  if (found != cursors_.end()) return found->second.get();
  sink.OnMessage(Error(16909, std::string(procedure) + ": The cursor identifier value provided (" +
                                  std::to_string(handle) + ") is not valid."));
  return nullptr;
}

// sp_cursorfetch @cursor, @fetchtype, @rownum, @nrows
void RpcCalls::CursorFetch(const Arguments& arguments, WireSink& sink) {
  Cursor* const cursor = FindCursor(arguments, "sp_cursorfetch", sink);
  if (!cursor) return;
  constexpr int kNext = 2;
  const auto code = static_cast<int>(IntegerAt(arguments, 1, kNext));
  if (code == kFetchInfo) {
    sink.ReturnStatusOnce(0);
    const std::array<std::int64_t, 4> returned = {0, 0, cursor->position(), cursor->row_count()};
    for (std::size_t i = 2; i < std::min(arguments.size(), returned.size()); ++i) {
      if (arguments[i].is_output) sink.ReturnInteger(arguments[i].name, returned[i]);
    }
    return;
  }
  const auto fetch = std::find_if(kFetches.begin(), kFetches.end(),
                                  [code](const FetchRow& row) { return row.code == code; });
  if (fetch == kFetches.end()) {
    sink.OnMessage(Error(16931, "sp_cursorfetch: The fetch type is not supported."));
    return;
  }
  sink.AddRowStatus();
  sink.OnColumns(cursor->columns());
  cursor->Fetch(fetch->kind, IntegerAt(arguments, 2, 0),
                static_cast<int>(IntegerAt(arguments, 3, 1)), sink);
}

// sp_cursoroption @cursor, @code, @value: names the cursor, or asks for text pointers, which are
// always sent. A name has no use without WHERE CURRENT OF.
void RpcCalls::CursorOption(const Arguments& arguments, WireSink& sink) {
  FindCursor(arguments, "sp_cursoroption", sink);
}

void RpcCalls::CursorClose(const Arguments& arguments, WireSink& sink) {
  if (FindCursor(arguments, "sp_cursorclose", sink)) {
    cursors_.erase(static_cast<int>(arguments[0].integer));
  }
}

// sp_cursor @cursor, @optype, @rownum, @table, values ...
void RpcCalls::CursorChange(const Arguments& arguments, WireSink& sink) {
  Cursor* const cursor = FindCursor(arguments, "sp_cursor", sink);
  if (!cursor) return;
  constexpr std::size_t kFirstValue = 4;
  std::vector<std::string> names;
  for (const ResultColumn& column : cursor->columns()) names.push_back(column.name);
  Arguments values = NamedValues(arguments, kFirstValue, names);
  for (RpcParameter& value : values) {
    if (value.name.starts_with('@')) value.name.erase(0, 1);
  }
  const auto row = static_cast<int>(IntegerAt(arguments, 2, 0));
  const std::int64_t change = IntegerAt(arguments, 1, 0) & kChangeMask;
  if (change == kUpdate) {
    cursor->Update(row, values, sink);
  } else if (change == kDelete) {
    cursor->Delete(row, sink);
  } else if (change == kInsert) {
    cursor->Insert(values, sink);
  } else if (change != 0) {
    sink.OnMessage(Error(16902, "sp_cursor: The value of the parameter 'optype' is invalid."));
  }
}

}  // namespace dbkeeper::server

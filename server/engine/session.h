// One client's conversation with the instance: its login, current database, temp tables,
// transaction and options. Used by one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "server/types/parameter.h"
#include "server/types/result_sink.h"

namespace dbkeeper::server {

struct ClientInfo {
  std::string host_name;
  std::string program_name;
  std::int64_t process_id = 0;
};

// Which way a cursor moves for a fetch; rows count from 1.
enum class FetchKind { kFirst, kNext, kPrior, kLast, kAbsolute, kRelative, kRefresh };

// An open server-side cursor over one select. Rows are fetched in pages; a changed or deleted row
// is noticed when its page is fetched again.
class Cursor {
 public:
  virtual ~Cursor() = default;
  virtual const std::vector<ResultColumn>& columns() const = 0;
  virtual std::int64_t row_count() const = 0;
  // The row that the present page begins with; 0 before the first fetch.
  virtual std::int64_t position() const = 0;
  virtual bool updatable() const = 0;
  // Sends up to `count` rows to `sink` (rows and one statement end, no columns) and remembers them
  // as the present page.
  virtual void Fetch(FetchKind kind, std::int64_t row, int count, ResultSink& sink) = 0;
  // Changes, deletes or adds a row; `page_row` counts from 1 in the present page. Errors are told
  // to `sink` like those of a statement.
  virtual void Update(int page_row, const Parameters& values, ResultSink& sink) = 0;
  virtual void Delete(int page_row, ResultSink& sink) = 0;
  virtual void Insert(const Parameters& values, ResultSink& sink) = 0;
};

// Runs batches and procedures for one client.
class Session {
 public:
  virtual ~Session() = default;

  virtual int spid() const = 0;
  virtual const std::string& current_database() const = 0;

  // Runs a batch of statements (UTF-8). Everything that happens is told to `sink`; an error of a
  // statement is a message and a failed statement end, never an exception.
  virtual void RunBatch(std::string_view text, ResultSink& sink) = 0;

  // Runs a batch with values for its parameters (sp_executesql and the prepared forms).
  virtual void RunParameterized(std::string_view text, const Parameters& parameters,
                                ResultSink& sink) = 0;

  // Tells the columns that the batch would give, and runs nothing of it.
  virtual void Describe(std::string_view text, const Parameters& parameters, ResultSink& sink) = 0;

  // Runs a system procedure by name.
  virtual void RunProcedure(std::string_view name, const Parameters& parameters,
                            ResultSink& sink) = 0;

  // Opens a cursor over a select; null when `text` is no single select (the caller then runs it as
  // a plain batch). Errors are told to `sink`, and give null too.
  virtual std::unique_ptr<Cursor> OpenCursor(std::string_view text, ResultSink& sink) = 0;

  // Tells the running statement to stop soon; the one call that may come from another thread.
  virtual void Interrupt() = 0;
};

// Why a login was refused, as the message for the client.
struct LoginRefused {
  ServerMessage message;
};

struct LoginRequest {
  std::string user;
  std::string password;
  std::string database;  // empty: the login's default
  ClientInfo client;
};

// Lets clients in. Called from many threads at once.
class SessionFactory {
 public:
  virtual ~SessionFactory() = default;
  virtual std::string server_name() const = 0;
  // Throws LoginRefused.
  virtual std::unique_ptr<Session> Login(const LoginRequest& request) = 0;
};

}  // namespace dbkeeper::server

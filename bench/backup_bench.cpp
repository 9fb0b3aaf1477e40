// Backup and restore of a database of 500 MB on the local server, beside a plain copy of its file.
// The copy is written to the disk before its time is taken (fsync), as the server's own files are.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/odbc/OdbcConnection.h"
#include "tests/support/LocalServer.h"

namespace dbkeeper {
namespace {

constexpr std::uintmax_t kBytes = 500'000'000;
constexpr double kMegabyte = 1'000'000;
constexpr std::int64_t kRowsAtOnce = 16'384;

// A local server with a database "work" of that size, and its backup.
class Server {
 public:
  Server() {
    connection_.Open(server_.ConnectionString());
    connection_.Execute("create database work on (name = d, filename = '" + Data().string() +
                        "') log on (name = l, filename = '" + File("work.ldf").string() + "')");
    connection_.Execute(
        "create table work.dbo.t (id int not null primary key, text varchar(2000))");
    connection_.Execute("insert work.dbo.t values (1, replicate('0123456789abcdef', 120))");
    std::int64_t rows = 1;
    while (std::filesystem::file_size(Data()) < kBytes) {
      const std::int64_t added = std::min(rows, kRowsAtOnce);
      connection_.Execute("insert work.dbo.t select id + " + std::to_string(rows) +
                          ", text from work.dbo.t where id <= " + std::to_string(added));
      rows += added;
    }
    BackUp();
  }

  void BackUp() {
    connection_.Execute("backup database work to disk = '" + Medium().string() + "' with format");
  }
  void Restore() {
    connection_.Execute("restore database work from disk = '" + Medium().string() + "'");
  }
  std::filesystem::path Data() const { return File("work.mdf"); }
  std::filesystem::path Medium() const { return File("work.bak"); }
  std::filesystem::path File(const std::string& name) const { return server_.DataFolder() / name; }

 private:
  LocalServer server_;
  OdbcConnection connection_{OdbcOptions{}, server_.Endpoint()};
};

Server& TheServer() {
  static Server server;
  return server;
}

class Descriptor {
 public:
  Descriptor(const std::filesystem::path& path, int flags)
      : file_(open(path.c_str(), flags, 0600)) {
    if (file_ < 0) throw std::runtime_error("cannot open " + path.string());
  }
  ~Descriptor() { close(file_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return file_; }

 private:
  const int file_;
};

void CopyFile(const std::filesystem::path& from, const std::filesystem::path& to) {
  const Descriptor source(from, O_RDONLY);
  const Descriptor target(to, O_WRONLY | O_CREAT | O_EXCL);
  std::vector<char> block(1 << 20);
  for (;;) {
    const ssize_t count = read(source.get(), block.data(), block.size());
    if (count == 0) break;
    if (count < 0 || write(target.get(), block.data(), static_cast<std::size_t>(count)) != count) {
      throw std::runtime_error("the copy failed");
    }
  }
  if (fsync(target.get()) != 0) throw std::runtime_error("the copy is not on the disk");
}

double SecondsOf(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// The times are those of the best round, as other programs' rounds disturb them.
void Measure(benchmark::State& state, const std::function<void(Server&)>& work) {
  Server& server = TheServer();
  const std::filesystem::path copy = server.File("copy");
  double work_seconds = std::numeric_limits<double>::max();
  double copy_seconds = work_seconds;
  for ([[maybe_unused]] auto step : state) {
    work_seconds = std::min(work_seconds, SecondsOf([&] { work(server); }));
    state.PauseTiming();
    copy_seconds = std::min(copy_seconds, SecondsOf([&] { CopyFile(server.Data(), copy); }));
    std::filesystem::remove(copy);
    state.ResumeTiming();
  }
  const auto bytes = static_cast<double>(std::filesystem::file_size(server.Data()));
  state.counters["MB"] = bytes / kMegabyte;
  state.counters["work_s"] = work_seconds;
  state.counters["copy_s"] = copy_seconds;
  state.counters["ratio"] = work_seconds / copy_seconds;
}

void Backup(benchmark::State& state) {
  Measure(state, [](Server& server) { server.BackUp(); });
}
BENCHMARK(Backup)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

void Restore(benchmark::State& state) {
  Measure(state, [](Server& server) { server.Restore(); });
}
BENCHMARK(Restore)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

}  // namespace
}  // namespace dbkeeper

BENCHMARK_MAIN();

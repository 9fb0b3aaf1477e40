#include "tests/server/wire/fuzz_one.h"

#include "server/wire/connection.h"
#include "tests/server/wire/fake_engine.h"
#include "tests/server/wire/memory_channel.h"

namespace dbkeeper::server {

void FuzzOne(const std::uint8_t* data, std::size_t size) {
  FakeEngine engine;
  engine.cursor.columns = {Column("a", {TypeId::kInt})};
  engine.cursor.rows = {{Cell(std::int64_t{1})}, {Cell()}};
  AttentionWatcher watcher;
  const ConnectionServices services{engine, watcher, std::chrono::seconds(1)};
  MemoryChannel channel({reinterpret_cast<const char*>(data), size});
  Connection(channel, services, [](int) {}).Serve();
}

}  // namespace dbkeeper::server

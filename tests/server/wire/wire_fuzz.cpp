// The entry for a coverage-guided fuzzer: clang++ -fsanitize=fuzzer.
#include "tests/server/wire/fuzz_one.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  dbkeeper::server::FuzzOne(data, size);
  return 0;
}

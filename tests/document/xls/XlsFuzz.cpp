// The entry for a coverage-guided fuzzer: clang++ -fsanitize=fuzzer.
#include "tests/document/xls/FuzzOne.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  dbkeeper::xls::FuzzOne(data, size);
  return 0;
}

// Texts that are kept in files of tests/golden/ and compared as a whole.
#pragma once

#include <string>
#include <string_view>

namespace dbkeeper::testing {

// Fails where the text is another than the file's. With DBKEEPER_REWRITE_GOLDEN set in the
// environment the file is written instead; the difference is then read by a person.
void ExpectGolden(const std::string& file_name, std::string_view text);

}  // namespace dbkeeper::testing

// The script that gives the users of every user database their access, their roles and their rights
// again: on another server, or after a restore.
#pragma once

#include <filesystem>

#include "app/session/Query.h"
#include "app/support/Host.h"

namespace dbkeeper {

// Reads the catalogs and writes the script, one batch for each "go", in the ANSI code page with
// lines ended by CR LF; the file is made, or written anew. Changes nothing on the server but the
// session's current database. Throws ServerError, or FileError when the file cannot be written or
// the code page lacks a character; the file then keeps what was written so far.
//
// Names are deliberately written without quotes doubled and without brackets.
void WritePermissionScript(Query& query, const Host& host, const std::filesystem::path& file);

}  // namespace dbkeeper
